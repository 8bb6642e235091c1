#pragma once

#include "core/Plugin.h"

#include <QList>

namespace korvane {

struct RunParts;
class ActivityLog;
class FileOperations;
class Locations;
class Marking;
class PluginList;
class RightsMover;
struct Format;
struct FormatTraits;

// The part of an apply that needs administrator rights: the pending changes of system plug-ins
// whose folders the person cannot write. They go to the rights mover in one run, before the rest
// of the apply takes the folders' lock (the helper takes it itself). Without rights the person
// hears it once, and may have the plug-ins to be switched on copied into their own folder.
class RightsApply {
public:
    // Whether changing this plug-in's place needs rights: a system plug-in whose folder, or the
    // format's other system folder (its nearest existing parent), the person cannot write.
    static bool needsRights(const Format &format, const Locations &locations,
                            const FileOperations &files, const Plugin &item);
    // Runs the pending changes that need rights and settles their records, so the apply that
    // follows leaves them alone; the rescan at its end shows where each plug-in really is.
    static void run(const FormatTraits &format, const PluginList &list, Marking &marking,
                    const RunParts &run, ActivityLog &log, RightsMover &mover);
};

} // namespace korvane
