#pragma once

#include "os/Roots.h"

#include <QString>

namespace korvane {

// What a run takes from its environment besides the roots, each read once at a program's entry
// and handed to the part that uses it.
struct RunSettings {
    int lockWaitMs = -1;    // KORVANE_LOCK_WAIT_MS; negative: the lock's own ten seconds
    bool systemLog = false; // KORVANE_SYSLOG set: diagnostics go to syslog too
    QString bundle;         // KORVANE_BUNDLE: the application bundle the launch script names
    QString resources;      // KORVANE_RESOURCES: the folder of the about text
    QString updateUrl;      // KORVANE_UPDATE_URL: the version list, over the build's own
    QString downloadUrl;    // KORVANE_DOWNLOAD_URL: the download page, over the build's own
    int columns = 0;        // COLUMNS: the text listing's width; 0 where unset or not a width
    bool operator==(const RunSettings &) const = default;
};

// The environment as one value: the programs read it at their entry (before any option) and
// nothing below them asks the process's environment.
struct Environment {
    Roots roots;
    RunSettings settings;

    static Environment read();
};

} // namespace korvane
