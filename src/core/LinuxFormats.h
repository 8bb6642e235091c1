#pragma once

#include "core/FormatTable.h"
#include "os/Roots.h"

#include <QHash>
#include <QString>

namespace korvane {

// The rows of the formats Linux hosts load (LV2, VST 3, CLAP, LADSPA, DSSI, Linux VST 2) and of
// the formats of the macOS layout that are not among the first four (VST 3, CLAP and LV2 under
// /Library/Audio/Plug-Ins, AAX), in that order after the built-in four.
QList<Format> linuxFormats();
QList<Format> macLayoutFormats();

// The table one run uses: table's rows with the folders that depend on where the run looks:
// every /usr/lib/<triplet>/ folder under the root for the rows with a per-architecture folder,
// and the folders the hosts' variables add (LV2_PATH, VST3_PATH, CLAP_PATH, LADSPA_PATH,
// DSSI_PATH, VST_PATH, LXVST_PATH: colon-separated, "~" expanded, a user folder when under the
// home, else a system one; one that is already a folder of the row is skipped). Only the
// programs' entry points read the environment; they pass it here.
FormatTable withRunFolders(const FormatTable &table, const Roots &roots,
                           const QHash<QString, QString> &environment);

} // namespace korvane
