#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

namespace korvane {

class FileOperations;
class LockTable;

// Held while plug-ins move: two programs moving the same plug-ins at once can leave one in
// neither folder. The lock belongs to the folders that change, not to a person, so movers of
// different homes (two users, root beside a user) exclude each other: it is the kernel's flock on
// the folder that holds each plug-in folder (its parent, where the folder and its " (Disabled)"
// sibling lie; the nearest existing ancestor while that is missing). Opening a folder needs only
// read access, nothing is left on disk, and a holder that dies lets go with its last descriptor.
// Several folders are taken in ascending device and inode order, each once, so two movers never
// wait on each other in a circle. Where the file system keeps no such locks, a lock file in the
// folder stands in when the folder is writable. Holders of one run share each folder's lock
// through the run's LockTable.
class LibraryLock {
public:
    // Locks the folders holding these plug-in folders, sharing what the run's locks hold already
    // and waiting up to waitMs for other holders; negative: defaultWaitMs().
    LibraryLock(LockTable &locks, FileOperations &files, const QStringList &pluginFolders,
                int waitMs = -1);
    ~LibraryLock();
    LibraryLock(const LibraryLock &) = delete;
    LibraryLock &operator=(const LibraryLock &) = delete;

    bool isLocked() const { return m_locked; }
    // When not locked: the program holding the lock, as "KorvaneCMD (process 4242)"; empty when
    // the lock failed for another reason.
    QString holder() const { return m_holder; }
    // When not locked: why, in one sentence without a final full stop.
    QString failure() const { return m_failure; }

    // The folder locked for a plug-in folder: its parent, or the nearest ancestor that exists.
    static QString lockedFolder(const QString &pluginFolder);
    // Ten seconds; a run's KORVANE_LOCK_WAIT_MS comes as waitMs (RunSettings).
    static int defaultWaitMs();

private:
    void release();

    LockTable &m_locks;
    // The folders this lock counts in, by device and inode.
    QList<std::pair<quint64, quint64>> m_keys;
    QString m_holder;
    QString m_failure;
    bool m_locked = false;
};

} // namespace korvane
