#pragma once

#include <QString>

namespace korvane {

// Plug-in formats, in the order start-up and quit visit them.
enum TypeIndex { TypeAU = 0, TypeRTAS = 1, TypeMAS = 2, TypeVST = 3 };
constexpr int TypeCount = 4;
inline bool isValidType(int type) { return type >= 0 && type < TypeCount; }
// "AU", "RTAS", "MAS", "VST": the prefix of a format's preference keys and tab identifier;
// empty for a type outside 0..3.
QString typePrefix(int type);

// The four folders of a format.
enum LocationCode { LocSystemActive = 0, LocSystemDisabled = 1, LocUserActive = 2, LocUserDisabled = 3 };
inline bool isValidLocation(int loc) { return loc >= 0 && loc < 4; }

// Where "/Library" and "~" are. The system root is KORVANE_ROOT (default "/"), home is HOME;
// both are read at every call so a test or the command-line tool can point them elsewhere.
class Locations {
public:
    static QString systemRoot();
    static QString home();

    // Expands a leading "~" to home and a leading "/Library" to the system root's Library,
    // then standardises (no "." or ".." components, no trailing or doubled separators).
    static QString expand(const QString &path);

    // A format's folder as the program writes it ("~/Library/Audio/Plug-Ins/VST (Disabled)");
    // empty for a type or location outside 0..3.
    static QString folder(int type, int loc);
    // The same, expanded.
    static QString folderPath(int type, int loc);

    // "~/Library/Application Support/Korvane" and a file in it, unexpanded.
    static QString supportFolder();
    static QString dataFile(const QString &fileName);

    static QString userPreferencesFile();    // "~/Library/Preferences/com.velmora.Korvane.plist"
    static QString machinePreferencesFile(); // "/Library/Preferences/com.velmora.Korvane.plist"
};

} // namespace korvane
