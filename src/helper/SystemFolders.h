#pragma once

#include "helper/HelperProtocol.h"
#include "os/FileOperations.h"
#include "os/Roots.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

class FormatTable;

namespace helper {

// Folders whose contents the distribution's packages own, with the folders inside them that are
// the administrator's own: a plug-in there is the package manager's to change, and a move would
// be undone or broken by the next upgrade. Paths as written below the system root.
struct OwnedPrefixes {
    QStringList owned;
    QStringList exceptions;

    // "/usr", except "/usr/local".
    static OwnedPrefixes distribution();
    bool owns(const QString &path) const;
};

// Why a request is refused: the path, and why, in one sentence without a final full stop.
struct Refusal {
    QString path;
    QString reason;
};

// What root may be asked to move: a plug-in (or a companion) inside one of a format's system
// folders under the given roots to the same place in the other folder of its pair (active or
// " (Disabled)"), and nothing else. The roots come from the person who
// asks, so every folder the helper passes through or writes in must be one that only root can
// change: otherwise whoever could change it could swap a step for a link between the look and the
// move and send root anywhere.
class SystemFolders {
public:
    SystemFolders(const FormatTable &formats, const Roots &roots,
                  OwnedPrefixes owned = OwnedPrefixes::distribution());

    // The first move's path that may not be moved, touching nothing; none when every move may go
    // ahead. A target that is taken is no refusal: that move fails alone.
    std::optional<Refusal> check(const QList<Move> &moves) const;

    // The folders the library lock takes for these moves: every folder their formats' moves may
    // change, as every other mover locks them.
    QStringList lockFolders(const QList<Move> &moves) const;

    // Just before one checked move: the target's format folder and the folders below it are made
    // where missing (real folders, root's own), and every step on both sides is looked at again.
    // Across file systems the item is copied, so every folder inside it must be root's alone too.
    std::optional<FileError> prepare(FileOperations &files, const Move &move) const;

private:
    struct Place {
        int type = -1;
        int location = -1; // its location code: a move stays within one pair
        QString folder;    // the format folder, expanded
    };
    std::optional<Place> placeOf(const QString &path) const;
    std::optional<Refusal> checkPath(const QString &path) const;

    const FormatTable &m_formats;
    Roots m_roots;
    OwnedPrefixes m_owned;
    // Every format's system folders, active and disabled, of every pair.
    QList<Place> m_folders;
    // The format folders found to exist and be root's alone.
    mutable QSet<QString> m_trusted;
};

} // namespace helper
} // namespace korvane
