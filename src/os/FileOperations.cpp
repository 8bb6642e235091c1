#include "os/FileOperations.h"

#include <QFileInfo>

namespace korvane {

bool makePath(FileOperations &files, const QString &folder, FileError *error)
{
    if (folder.isEmpty() || files.isDirectory(folder))
        return true;
    const QString parent = QFileInfo(folder).absolutePath();
    if (parent != folder && !makePath(files, parent, error))
        return false;
    return files.createDirectory(folder, error) || files.isDirectory(folder);
}

} // namespace korvane
