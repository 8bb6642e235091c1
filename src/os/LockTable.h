#pragma once

#include <QtGlobal>

#include <map>
#include <memory>
#include <utility>

class QLockFile;

namespace korvane {

// The folder locks one run holds, each counted. The kernel ties a flock to the open folder, not
// to the process, so a second lock on a new descriptor would wait for the first even in the same
// program: every LibraryLock of a run goes through the run's one table, and one that asks for a
// folder the table holds shares that lock instead (a tool that locks for its whole run may call
// code that locks again). Two tables exclude each other as two programs do.
// Each lock keeps a reference to its table, so the table must outlive every lock: whoever owns
// the run makes it before anything that locks and drops it after the last (AppContext declares it
// ahead of the controllers, CliSession ahead of its own lock and its controllers, the helper's run
// ahead of its lock). Nothing of it is process-wide, so a lock never ends among the statics at
// exit.
class LockTable {
public:
    // A locked folder by device and inode.
    using Folder = std::pair<quint64, quint64>;

    LockTable();
    ~LockTable(); // lets go of anything still held
    LockTable(const LockTable &) = delete;
    LockTable &operator=(const LockTable &) = delete;

    // One more holder of a folder this table holds already; false when it holds none.
    bool share(const Folder &folder);
    // A folder's lock just taken, through the open folder fd (or -1) or the lock file that stands
    // in for it: the table keeps both until the last holder leaves.
    void keep(const Folder &folder, int fd, std::unique_ptr<QLockFile> file);
    // One holder fewer; the last lets go of the folder's lock.
    void leave(const Folder &folder);

    // How many folders it holds.
    qsizetype size() const { return qsizetype(m_holds.size()); }

private:
    struct Hold;
    std::map<Folder, std::unique_ptr<Hold>> m_holds;
};

} // namespace korvane
