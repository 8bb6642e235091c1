#pragma once

#include <QString>
#include <array>

namespace korvane {

// Everything in which the four format managers differ; TypeManager does the rest once.
struct FormatTraits {
    int type;                 // 0 AU, 1 RTAS, 2 MAS, 3 VST
    QString shortName;        // "AU", "RTAS", "MAS", "VST": action names, option names, prefs keys
    QString groupsFile;       // "augroups.plist"
    QString setsFile;         // "ausets.plist"

    // Scanning.
    QString panelTitle;       // "scan AudioUnits:"
    QString folderTextPrefix; // "scan for AudioUnits:"
    std::array<bool, 4> createdFolders; // by location code: created when missing before listing
    bool createsDigidesignParents;      // RTAS: the Digidesign parents before folders 0 and 2
    bool recognitionTakesFullPath;      // AU is given the bare entry name
    bool (*recognise)(const QString &nameOrPath);
    int progressOffset;       // the k-th of n entries shows 25*(k - offset) div n

    // Undo action names of a table toggle.
    QString activeOnWord, activeOffWord; // "enable"/"disable" or "setActive"/"setInactive"
    bool wordFirst;           // AU: word first, name quoted; others: name first, word quoted

    // Sets.
    QString documentExtension; // offered by the open panel
    QString windowLoadName;    // "Untitled.aukorv"
    QString untitledName;      // set by newButtonPressed and compared by save
    QString savePanelName;     // "untitled.aukorv"

    // Drop install.
    QString installFirstButton;   // "AudioUnits only"
    QString installInformative;   // "Install AudioUnits only?"
    QString installProgressTitle; // "install AudioUnits:"
    QString installTarget;        // "~/Library/Audio/Plug-Ins/Components/%@"

    // Maintenance.
    QString backupRestoreMessage; // "AudioUnits Backup Restore"
    QString infoMessage;          // "AudioUnits Plug-In Info"
    QString infoText;             // "Please select a AudioUnit Plug-In"
};

// Recognition tests, as the scan and the drop install use them.
bool isAudioUnitName(const QString &name);
bool isVSTPlugInPath(const QString &path);
bool isRTASPlugInPath(const QString &path);
bool isMASPlugInPath(const QString &path);

const FormatTraits &formatTraits(int type); // type 0..3

// The Digidesign folder that holds the RTAS folders, as written ("~/Library/Application
// Support/Digidesign" for the user's); the RTAS scan and both checkAndCreatePath create it.
QString digidesignParent(bool system);

} // namespace korvane
