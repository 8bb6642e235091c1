#pragma once

#include <QString>

namespace korvane {

class FileOperations;
class Locations;

// The lock of one plug-in library, held while plug-ins move: two programs moving the same
// plug-ins at once can leave one in neither folder. It is a lock file in the support folder; one
// left by a process that is gone is taken over. Holders within one process share it, so a tool
// that locks for a whole run may call code that locks again.
class LibraryLock {
public:
    // Waits up to waitMs for another process to let go; negative: defaultWaitMs(). The lock
    // file's folder is created through files when missing.
    LibraryLock(FileOperations &files, const QString &lockFile, int waitMs = -1);
    ~LibraryLock();
    LibraryLock(const LibraryLock &) = delete;
    LibraryLock &operator=(const LibraryLock &) = delete;

    bool isLocked() const { return m_locked; }
    // When not locked: the program holding the lock, as "KorvaneCMD (process 4242)"; empty when
    // the lock failed for another reason.
    QString holder() const { return m_holder; }
    // When not locked: why, in one sentence without a final full stop.
    QString failure() const { return m_failure; }

    // The lock file of the library under these roots.
    static QString lockFilePath(const Locations &locations);
    // KORVANE_LOCK_WAIT_MS when it holds a number of milliseconds, else ten seconds.
    static int defaultWaitMs();

private:
    QString m_path;
    QString m_holder;
    QString m_failure;
    bool m_locked = false;
};

} // namespace korvane
