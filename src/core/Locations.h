#pragma once

#include "core/LocationCode.h"
#include "os/Roots.h"

#include <QString>
#include <array>

namespace korvane {

class FormatTable;
struct Format;

// Resolves the paths the program writes with "/Library" and "~" against one run's roots.
class Locations {
public:
    explicit Locations(Roots roots) : m_roots(std::move(roots)) {}
    const Roots &roots() const { return m_roots; }

    // Expands a leading "~" to the home and a leading "/Library" or "/usr" to the system root's,
    // then standardises (no "." or ".." components, no trailing or doubled separators).
    QString expand(const QString &path) const;

    // A format's folder, expanded; empty for a location outside 0..3.
    QString folderPath(const Format &format, int loc) const;
    // The four of pairs 0 and 1, by location code.
    std::array<QString, LocationCount> folderPaths(const Format &format) const;
    // Every pair's two, by location code.
    QStringList allFolderPaths(const Format &format) const;
    // The folders one format's moves may change, as a lock takes them: its pairs' folders and its
    // content roots.
    QStringList pluginFolders(const Format &format) const;
    // Those of every format, for a run that may touch any of them.
    QStringList pluginFolders(const FormatTable &formats) const;

    QString supportFolderPath() const { return expand(supportFolder()); }
    QString dataFilePath(const QString &fileName) const { return expand(dataFile(fileName)); }
    QString userPreferencesPath() const { return expand(userPreferencesFile()); }
    QString machinePreferencesPath() const { return expand(machinePreferencesFile()); }
    QString documentsFolder() const { return expand(QStringLiteral("~/Documents")); }

    // As the program writes them, unexpanded.
    static QString supportFolder(); // "~/Library/Application Support/Korvane"
    static QString dataFile(const QString &fileName);
    static QString userPreferencesFile();    // "~/Library/Preferences/com.velmora.Korvane.plist"
    static QString machinePreferencesFile(); // "/Library/Preferences/com.velmora.Korvane.plist"

private:
    Roots m_roots;
};

} // namespace korvane
