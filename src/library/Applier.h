#pragma once

#include "library/FormatManager.h"

namespace korvane {

class MovePlanner;

// Makes a format's pending changes on disk: each move as the MovePlanner decides it, then the
// plug-in's companion content after it, asking after each failure whether to go on. The caller
// holds the folders' lock and rescans afterwards.
class Applier {
public:
    Applier(const FormatTraits &traits, PluginList &list, const ManagerParts &parts);

    // Every pending record in list order; what happened to each, the ones left after a Stop
    // included.
    QList<MoveOutcome> applyPending();
    // Moves the item's companion content to where the item now lies, when the preferences say so.
    void moveContent(const PluginPtr &item);

private:
    struct Run;
    MoveOutcome applyRecord(int recordIndex, Run &run);

    const FormatTraits &m_traits;
    PluginList &m_list;
    ManagerParts m_parts;
};

} // namespace korvane
