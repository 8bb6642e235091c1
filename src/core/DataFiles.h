#pragma once

#include "core/DataFileSaver.h"

#include <QString>
#include <QVariant>
#include <functional>

namespace korvane {

class ActivityLog;
class FileOperations;
class Locations;
class UserInterface;

// Writes the program's own data files (registries, groups, set lists; the preferences through
// saver()) into "~/Library/Application Support/Korvane", keeping a damaged file aside first.
class DataFiles {
public:
    DataFiles(const Locations &locations, FileOperations &files, UserInterface &ui,
              ActivityLog &log);

    // Writes one data file atomically; a file there that readable rejects is first kept aside,
    // and the log window says so. False when nothing was written.
    bool write(const QString &path, const QVariant &root,
               const std::function<bool(const QString &path)> &readable);
    // "~/Library/Application Support/Korvane" and any of its missing parents, before a data file
    // is written into it.
    void createSupportFolder();
    // Says what happened to a data file (one kept aside) in the log window.
    void log(const QString &report);
    // Every data file is written through here, so each failed write is said with its remedies.
    DataFileSaver &saver() { return m_saver; }

private:
    const Locations &m_locations;
    FileOperations &m_files;
    ActivityLog &m_log;
    DataFileSaver m_saver;
};

// Makes the folders on the way to path (its last step aside) that are missing. A path with a
// ".." step makes nothing; a failure is left to the move or write that follows.
void createFolders(FileOperations &files, const QString &path);

} // namespace korvane
