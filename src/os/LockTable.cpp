#include "os/LockTable.h"

#include <QLockFile>

#include <unistd.h>

namespace korvane {

// One folder the run has locked: the open folder whose flock it is, or the lock file that stands
// in for it. Closing the folder lets go of its lock; the lock file removes itself.
struct LockTable::Hold {
    int fd = -1;
    std::unique_ptr<QLockFile> file;
    int count = 0;

    Hold(int folder, std::unique_ptr<QLockFile> lockFile) : fd(folder), file(std::move(lockFile)) {}
    ~Hold()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;
};

LockTable::LockTable() = default;

LockTable::~LockTable() = default;

bool LockTable::share(const Folder &folder)
{
    const auto held = m_holds.find(folder);
    if (held == m_holds.end())
        return false;
    ++held->second->count;
    return true;
}

void LockTable::keep(const Folder &folder, int fd, std::unique_ptr<QLockFile> file)
{
    auto hold = std::make_unique<Hold>(fd, std::move(file));
    hold->count = 1;
    m_holds[folder] = std::move(hold);
}

void LockTable::leave(const Folder &folder)
{
    const auto held = m_holds.find(folder);
    if (held != m_holds.end() && --held->second->count == 0)
        m_holds.erase(held);
}

} // namespace korvane
