#pragma once

#include "core/LocationCode.h"

#include <QString>
#include <array>

namespace korvane {

// Everything in which one plug-in format differs from another: one row of the format table.
// Adding a format is adding a row (Format::derived fills in the texts) with its recognition rule.
struct Format {
    int type = -1;    // the row's index: 0 AU, 1 RTAS, 2 MAS, 3 VST, then added formats
    QString prefix;   // "AU": preference keys, tab identifiers, command-line flag and format name
    QString tabLabel; // "AudioUnits"
    QString activeFolder; // the system-wide active folder as written: "/Library/Audio/Plug-Ins/VST"

    // Recognition: given the bare entry name, or its full path.
    bool (*recognise)(const QString &nameOrPath) = nullptr;
    bool recognitionTakesFullPath = true;
    bool scansSubfolders = true; // the preference is offered; Audio Units never recurse

    // Scanning.
    std::array<bool, LocationCount> createdFolders{true, true, true, true};
    QString parentFolder; // created before the active folders ("/Library/.../Digidesign")
    bool createsParentOnScan = false;
    int progressOffset = 1;   // the k-th of n entries shows 25*(k - offset) div n
    QString panelTitle;       // "scan AudioUnits:"
    QString folderTextPrefix; // "scan for AudioUnits:"
    // The roots companions are measured against; the RTAS user-disabled one lacks "Digidesign".
    std::array<QString, LocationCount> contentRoots;

    // Data files under the support folder.
    QString groupsFile; // "augroups.plist"
    QString setsFile;   // "ausets.plist"

    // Set documents.
    QString documentExtension;   // the set panels' type: "aukorv" ("MASkorv" for MAS)
    QString defaultSetExtension; // the preferences' chooser: "aukorv" ("maskorv" for MAS)
    QString windowLoadName;      // "Untitled.aukorv"
    QString untitledName;        // set by a new set, compared by save
    QString savePanelName;       // "untitled.aukorv"

    // Undo action names of a table toggle.
    QString activeOnWord, activeOffWord; // "enable"/"disable" or "setActive"/"setInactive"
    bool wordFirst = false;              // AU: word first, name quoted

    // Drop install.
    QString installFirstButton;   // "AudioUnits only"
    QString installInformative;   // "Install AudioUnits only?"
    QString installProgressTitle; // "install AudioUnits:"
    QString installTarget;        // "~/Library/Audio/Plug-Ins/Components/%@"

    // Maintenance and the launch script.
    QString backupRestoreMessage; // "AudioUnits Backup Restore"
    QString infoMessage;          // "AudioUnits Plug-In Info"
    QString infoText;             // "Please select a AudioUnit Plug-In"
    QString noSetMessage;         // "There is no set selected for AudioUnits"

    // A folder of the format as written, by location code ("~/Library/... (Disabled)").
    QString folder(int loc) const;
    // Where a plug-in switched off in an active folder goes: the sibling folder of that name.
    static QString disabledFolderOf(const QString &activeFolder)
    {
        return activeFolder + QStringLiteral(" (Disabled)");
    }
    QString tabIdentifier() const { return QStringLiteral("tab") + prefix; }
    QString preferencesTabIdentifier() const { return QStringLiteral("Pref") + prefix; }
    QString preferenceKey(const char *name) const { return prefix + QLatin1String(name); }
    QString commandLineFlag() const { return QLatin1Char('-') + prefix; } // "-AU"
    QString commandLineName() const { return prefix.toLower(); }          // "au"

    // A new format's row: the texts follow the built-in patterns, the user's install target is
    // the user's active folder, and the set documents are "<prefix in lower case>korv".
    static Format derived(const QString &prefix, const QString &label, const QString &activeFolder,
                          bool (*recognise)(const QString &path));
    // The scan and install texts, which name a format's plug-ins in their own ways.
    void setScanAndInstallTexts(const QString &scanned, const QString &installed);
};

} // namespace korvane
