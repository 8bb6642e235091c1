#pragma once

#include "os/FileOperations.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace korvane {

// What a move across file systems leaves behind when its process dies, and how a later run puts
// it right. Such a move copies into a hidden staging folder beside the target, flushes it, hides
// the source in a hidden staging folder beside it, renames the copy to the target, and removes the
// hidden source; no moment shows the item under its name twice or half-copied. A staging folder
// is named after the process that made it (".korvane-<pid>-<start>.partial" and ".removing", the
// start time telling a reused pid apart), and the item keeps its own name inside: any name that
// fits a folder fits there, and a later run knows whose it is. Older versions hid the item beside
// itself (".NAME.korvane-partial", ".NAME.korvane-removing[.n]"), without an owner.
//
// Leftovers are resolved among sibling folders, the folders an item moves between, where the item
// keeps its path relative to its folder. A staging folder whose process still runs is another
// mover's work in progress and is left alone. Nothing is removed unless another whole copy holds
// all of it; in doubt the old copy comes back under its name, and what cannot be decided stays
// hidden and is reported.
class InterruptedMoves {
public:
    // The older hidden name beside path of a copy under way.
    static QString partialPath(const QString &target);

    struct Leftover {
        QString item; // the name of the item it belongs to, in the same folder
        bool removing = false;
    };
    // The item an entry name belongs to when it is an older leftover.
    static std::optional<Leftover> parse(const QString &name);
    // Whether the last component of a path is a leftover or a staging folder; never a plug-in,
    // and never looked into as a folder of plug-ins.
    static bool isLeftoverName(const QString &path);
    // The item an AppleDouble sidecar's path belongs to, in the same folder; empty for any other.
    static QString sidecarOwner(const QString &path);

    InterruptedMoves(FileOperations &files, QStringList folders);

    // A leftover or staging folder found in folders[folder], by its path relative to that folder.
    // A staging folder's items are added one by one, unless its process still runs.
    void add(int folder, const QString &relative);
    // An AppleDouble sidecar in folders[folder] whose item is not beside it: a move cut short
    // between the item and its Finder information leaves one.
    void addLoneSidecar(int folder, const QString &relative);
    // Nothing to settle: no leftover, and no staging folder of a mover that is gone.
    bool isEmpty() const { return m_found.isEmpty() && m_staging.isEmpty(); }
    // The staging folders left alone because their processes still run, as paths.
    QStringList busy() const { return m_busy; }

    // One line for the logs: its text as marked for translation, and the paths it names.
    struct Line {
        const char *text;
        QStringList args;
        // In English for the system log, or in the user's language for the log window.
        QString in(bool translated) const;
    };
    // Finishes or undoes every move added: old copies before partial ones, so a resolution cut
    // short itself leaves states the next one still recognises; then each lone sidecar joins its
    // item where that is found in exactly one folder without a sidecar. One line per change or
    // per leftover kept.
    QList<Line> settle();

private:
    enum class Kind { Partial, Removing, Sidecar };
    struct Found {
        int folder;
        QString relativeItem; // the item's path relative to its folder
        QString path;
        Kind kind;
    };
    QString itemIn(int folder, const Found &found) const;
    bool anyPartialOf(const Found &found) const;
    bool anyRemovingOf(const Found &found) const;
    void settleRemoving(const Found &found, QList<Line> *lines);
    void settlePartial(const Found &found, QList<Line> *lines);
    void settleSidecar(const Found &found, QList<Line> *lines);

    FileOperations &m_files;
    QStringList m_folders;
    QList<Found> m_found;
    QStringList m_staging; // of processes that are gone, removed once settled and empty
    QStringList m_busy;
};

} // namespace korvane
