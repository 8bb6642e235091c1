#pragma once

#include <QString>

namespace korvane {

// The few file-system calls that differ between operating systems. Each returns 0 or an errno.
namespace PlatformFiles {

// rename(2) that never replaces an existing target.
int renameNoReplace(const QString &from, const QString &to);
// Immutable or append-only: even root can neither remove the item nor change its entries.
bool isLocked(const QString &path);
// Flushes the file system that holds folder.
int syncFileSystem(const QString &folder);
// Flushes the folder itself, so that a rename in it is on the disk.
int syncFolder(const QString &folder);
// flock(2) LOCK_EX without waiting on an open file or folder.
int lockExclusive(int fd);
// Copies every extended attribute a target accepts; a refused one is not worth failing a copy.
void copyExtendedAttributes(int fromFd, int toFd);

} // namespace PlatformFiles

} // namespace korvane
