#pragma once

#include "core/Plugin.h"
#include "library/DistributionGuard.h"
#include "os/FileOperations.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <optional>

namespace korvane {

class Locations;
class PluginList;
struct FormatTraits;

// What an apply does with one pending change, decided from what lies at both ends.
enum class MoveVerdict {
    Move,           // the target's place is free
    TrashInTheWay,  // a file that is no installed plug-in lies at the target: trash it, then move
    TrashIdentical, // an identical copy is installed at the target: the source goes to the trash
    OnePlace,       // the source and the target are one item, or lie in one folder
    StepOffTheWay,  // a link or no folder on the way below the format's folder
    OtherCopy,      // another installed copy of the plug-in lies at the target: both stay
    SourceGone,     // nothing at the source any more
    Unwritable,     // a folder the move has to change cannot be changed
    NoItem,         // no plug-in matches the pending record
    Distribution, // a folder the distribution's package manager owns: the reason names the package
};

// One pending change of a manager's list: where it moves, and what the plan made of it.
struct PlannedMove {
    int record = -1;
    PluginPtr item; // null for NoItem
    QString name;
    QString from; // full source path
    QString to;   // full target path; empty for NoItem
    bool enabled = false;
    MoveVerdict verdict = MoveVerdict::Move;
    FileError error; // why it is not moved, for the verdicts that refuse or fail
    bool moves() const
    {
        return verdict == MoveVerdict::Move || verdict == MoveVerdict::TrashInTheWay
               || verdict == MoveVerdict::TrashIdentical;
    }
};

// The one place where an apply's moves are decided: the applier asks it before each move, and
// KorvaneCMD's check asks it for every pending change on read-only file operations, so the two
// cannot tell different stories. It keeps where installed copies lie (as the scan found them,
// then as each move leaves them) and the folders' identities, each looked up once.
class MovePlanner {
public:
    MovePlanner(FileOperations &files, const FormatTraits &traits, const PluginList &list,
                const Locations &locations);

    // The pending change of the record at index, as the list has it, undecided.
    PlannedMove pending(int recordIndex) const;
    // What must hold before anything at the target is looked at: the item is known, neither
    // folder is the distribution's, the two folders are not one, and the way to the source passes
    // only real folders. False with the verdict set when one does not.
    bool passesTheWay(PlannedMove &move);
    // What lies at the target decides: the source itself (OnePlace), an identical installed copy
    // (TrashIdentical), another installed copy (OtherCopy), nothing at the source (SourceGone),
    // a stranger's file (TrashInTheWay), or nothing (Move).
    void judgeTarget(PlannedMove &move);
    // A move was made (or forecast): the plug-in lies at its target now, no longer at its source.
    void moved(const PlannedMove &move);
    bool isInstalledAt(const QString &path) const { return m_installed.contains(path); }

    // One change judged whole, as the forecast judges each: the way, the target, and the folders
    // it has to change. A preview of marks not made yet hands in its own PlannedMove.
    void judge(PlannedMove &move);

    // Every pending change in the apply's order, each judged as if the ones before it were made.
    // A forecast also names a folder that cannot be changed (access(2) sees an immutable folder
    // and a read-only file system, for root too), which an apply learns by trying; only what a
    // move alone finds out (a full disk, a stale sidecar in the way) is not foreseen.
    QList<PlannedMove> forecast();

    // The English reason given for a verdict that refuses a move (marked for translation where
    // the window can show it).
    static const char *reasonOf(MoveVerdict verdict);

private:
    std::optional<FileIdentity> folderIdentity(const QString &folder);
    void refuse(PlannedMove &move, MoveVerdict verdict, const QString &at);
    // The folder a move would have to change and cannot: the source's, or the target's (its
    // nearest existing ancestor while it is still to be made); empty when both can be changed.
    QString unwritableFolder(const QString &from, const QString &to) const;

    FileOperations &m_files;
    const FormatTraits &m_traits;
    const PluginList &m_list;
    DistributionGuard m_guard;
    QSet<QString> m_installed;
    QHash<QString, FileIdentity> m_identities;
};

} // namespace korvane
