#pragma once

#include "os/FileOperations.h"

#include <QString>
#include <QStringView>
#include <optional>

namespace korvane {

// Path tests for names and paths that come from outside data (content.plist, set documents):
// such a path may only ever reach into the plug-in folders, never above them.

// True when some step of the path is "..".
inline bool climbsUp(QStringView path)
{
    for (const QStringView step : path.tokenize(u'/'))
        if (step == u"..")
            return true;
    return false;
}

// True when folder is a whole leading part of path: "VST/Echo.vst" is in "VST", "VST copy/x" is
// not. A path is not inside itself.
inline bool liesInside(QStringView path, QStringView folder)
{
    if (folder.endsWith(u'/'))
        folder.chop(1);
    return path.size() > folder.size() + 1 && path.startsWith(folder)
           && path.at(folder.size()) == u'/';
}

// A name that can only stay inside the folder it is joined to: relative, without "..".
inline bool isContainedName(QStringView name)
{
    return !name.startsWith(u'/') && !climbsUp(name);
}

// The first step of path below folder (its last step aside) that is no real folder: a link, a
// file, or nothing; none when every step is a real folder, looked at with lstat. With create, a
// missing step is made and then looked at like the others. A path that passes has its real place
// inside folder's, whatever links lie about: nothing moved along it leaves through a link on the
// way. The last step may be a link itself; a move takes it as a link. path lies inside folder.
std::optional<FileError> stepOffTheWay(FileOperations &files, const QString &folder,
                                       const QString &path, bool create);

} // namespace korvane
