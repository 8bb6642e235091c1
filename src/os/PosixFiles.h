#pragma once

#include "os/FileOperations.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <sys/stat.h>

namespace korvane {

// The system calls the local file operations share, by path. A name is bytes (PathBytes); a
// failure fills a FileError with the path and the errno's text.
namespace posix {

QString reasonFor(int errorNumber);
// Fills error from errno; false, for a caller to return.
bool fail(FileError *error, const QString &path, int errorNumber);
bool failWith(FileError *error, const QString &path, const QString &reason, int code = 0);

bool lstatPath(const QString &path, struct stat *info);
bool statPath(const QString &path, struct stat *info);

// Path pieces, without a call to the disk; a path is cleaned only when it needs it.
QString cleaned(const QString &path);
QString parentOf(const QString &path);
QString nameOf(const QString &path);
QString childOf(const QString &folder, const QString &name);
bool isInside(const QString &path, const QString &folder);

// Whether an entry of path's folder may be added, renamed or removed.
bool parentAllowsChanges(const QString &path);
// The names in a folder, sorted; a scan's cache learns each entry's kind on the way.
QStringList listNames(const QString &path, ScanCache *cache = nullptr);
bool removeTree(const QString &path, FileError *error = nullptr);
// The bytes of the plain files in a tree; links count as nothing.
qint64 treeBytes(const QString &path);
// Whether the whole of path could be removed, found out before anything is.
bool checkRemovable(const QString &path, FileError *error);
// A source that exists, a target that does not, and not a folder into itself: what move and copy
// both need before they touch anything. A target that is the source itself (a " (Disabled)"
// folder that is a link to or a bind mount of the active one) is said as such: taken for a
// target in the way, it would go to the trash, and with it the only copy.
bool canPlace(const QString &from, const QString &to, struct stat *info, FileError *error);

} // namespace posix

} // namespace korvane
