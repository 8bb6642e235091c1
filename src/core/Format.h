#pragma once

#include "core/LocationCode.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <array>

namespace korvane {

class ScanCache;

// Whether an entry is a plug-in of a format, asking the scan's cache rather than the disk where a
// scan hands one.
using Recognition = bool (*)(const QString &nameOrPath, ScanCache *cache);

// Which files say what a plug-in of the format is (see PluginMetadataReader).
enum class FormatReading {
    BundleArchitecture, // the first four: the Mach-O test of a bundle's executable alone
    Lv2,                // the bundle's Turtle files
    Vst3,               // moduleinfo.json and the Contents/ folder names
    SharedObject,       // the ELF header
    MachOBundle,        // the bundle executable's Mach-O architectures
};

// An active folder as written ("/usr/local/lib/lv2", "~/.lv2") and its " (Disabled)" sibling, which
// hosts do not search.
struct FolderPair {
    QString active;
    bool system = true;
    // Under /usr outside /usr/local: the distribution's package manager owns what lies there, and
    // nothing is moved, created or deleted in it.
    bool distributionOwned = false;
    QString disabled() const;
    // Whether a folder as written lies where the distribution owns it.
    static bool isDistributionFolder(const QString &written);
};

// What the window says of one format. Each is a whole sentence in the row's own words, marked
// with QT_TRANSLATE_NOOP where the row is written and looked up with tr where it is shown, so a
// translator sees every sentence as it stands; a row that gives none shows nothing.
struct FormatTexts {
    const char *panelTitle = "";           // the scan's progress title: "scan AudioUnits:"
    const char *folderTextPrefix = "";     // before each folder scanned: "scan for AudioUnits:"
    const char *installFirstButton = "";   // a drop's question: "AudioUnits only"
    const char *installInformative = "";   // "Install AudioUnits only?"
    const char *installProgressTitle = ""; // "install AudioUnits:"
    const char *infoMessage = "";          // Info with nothing selected: "AudioUnits Plug-In Info"
    const char *infoText = "";             // "Please select a AudioUnit Plug-In"
    const char *noSetMessage = "";         // the launch script: "There is no set selected for VST"
};

// Everything in which one plug-in format differs from another: one row of the format table.
// Adding a format is adding a row (Format::derived fills in the folders and files, the row its
// texts) with its recognition rule.
struct Format {
    int type = -1;    // the row's index: 0 AU, 1 RTAS, 2 MAS, 3 VST, then added formats
    QString prefix;   // "AU": preference keys, tab identifiers, command-line flag and format name
    QString tabLabel; // "AudioUnits"
    QString activeFolder; // the system-wide active folder as written: "/Library/Audio/Plug-Ins/VST"
    // Pair 0 is the first system pair (where "move to system" goes), pair 1 the first user pair;
    // derived() makes those two from activeFolder.
    QList<FolderPair> pairs;
    QString cliName;  // "lv2", "vst3-mac"; empty: the prefix in lower case
    QString helpText; // what --help says of the row: "LV2 bundles (~/.lv2, /usr/lib/lv2, ...)"
    // Seeded off unless one of its folders exists (formats of another system's layout).
    bool onOnlyWhereFoldersExist = false;
    QStringList pathVariables; // the hosts' variables that add folders: "LV2_PATH"
    QString multiarchFolder;   // "lv2": each /usr/lib/<triplet>/lv2 is a folder of the row
    FormatReading reading = FormatReading::BundleArchitecture;

    // Recognition: given the bare entry name, or its full path, and the cache of the scan that
    // asks (none elsewhere).
    Recognition recognise = nullptr;
    bool recognitionTakesFullPath = true;
    bool scansSubfolders = true; // the preference is offered; Audio Units never recurse

    // Scanning.
    // Pairs past the first two are never created by a scan.
    std::array<bool, LocationCount> createdFolders{true, true, true, true};
    QString parentFolder; // created before the active folders ("/Library/.../Digidesign")
    bool createsParentOnScan = false;
    int progressOffset = 1; // the k-th of n entries shows 25*(k - offset) div n
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

    // Undo action names of a table toggle, marked for translation.
    const char *activeOnWord = "";  // "enable" or "setActive"
    const char *activeOffWord = ""; // "disable" or "setInactive"
    bool wordFirst = false;         // AU: word first, name quoted

    QString installFolder; // where a drop installs: "~/Library/Audio/Plug-Ins/Components"

    FormatTexts texts;

    // A folder of the format as written, by location code ("~/Library/... (Disabled)"); empty
    // for a code outside the pairs.
    QString folder(int loc) const;
    int locationCount() const { return int(pairs.size()) * 2; }
    bool hasLocation(int loc) const { return loc >= 0 && loc < locationCount(); }
    bool isSystem(int loc) const { return hasLocation(loc) && pairs.at(loc / 2).system; }
    bool isDistributionOwned(int loc) const
    {
        return hasLocation(loc) && pairs.at(loc / 2).distributionOwned;
    }
    static int locationOf(int pair, bool active) { return pair * 2 + (active ? 0 : 1); }
    // The pair a plug-in of that scope moves to: the first of the scope the distribution does not
    // own (pair 0 or 1 for every row).
    int firstPair(bool system) const;
    // Where a plug-in switched off in an active folder goes: the sibling folder of that name.
    static QString disabledFolderOf(const QString &activeFolder)
    {
        return activeFolder + QStringLiteral(" (Disabled)");
    }
    QString tabIdentifier() const { return QStringLiteral("tab") + prefix; }
    QString preferencesTabIdentifier() const { return QStringLiteral("Pref") + prefix; }
    QString commandLineFlag() const { return QLatin1Char('-') + prefix; } // "-AU"
    QString commandLineName() const { return cliName.isEmpty() ? prefix.toLower() : cliName; }

    // A new format's row: a drop installs into the user's active folder, and the set documents
    // are "<prefix in lower case>korv"; the row gives its texts.
    static Format derived(const QString &prefix, const QString &label, const QString &activeFolder,
                          Recognition recognise);
};

} // namespace korvane
