#pragma once

#include <QString>
#include <QStringView>

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

} // namespace korvane
