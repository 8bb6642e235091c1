#pragma once

#include <QString>
#include <QVariant>
#include <functional>

namespace korvane {

class FileOperations;

// The program's own data files (preferences, registries, set lists, groups files). A file that
// is there but cannot be read as what it should hold is moved aside under a dated name before
// anything is written in its place, so that no rewrite destroys what a user or another program
// left there.
class DataFile {
public:
    using Check = std::function<bool(const QString &path)>;

    // Moves path to "<path>.damaged-<local date and time>" ("-2", "-3", ... added when that name
    // is taken) through the file operations, never over anything, and says so as a notice.
    // report receives the same line for the log window. False when it could not be moved, or
    // the file operations are read-only (then nothing is said).
    static bool keep(FileOperations &files, const QString &path, QString *report);

    // True when path may be written: nothing is there, readable accepts what is there, or it has
    // been kept aside. report receives a line for the log window when something was kept or
    // could not be.
    static bool prepareToReplace(FileOperations &files, const QString &path, const Check &readable,
                                 QString *report);

    // What tells one version of a file from the next without reading it: an atomic rewrite makes
    // a new inode, an in-place one a new size or modification time.
    struct Identity {
        bool exists = false;
        quint64 device = 0;
        quint64 inode = 0;
        qint64 size = 0;
        qint64 modifiedNs = 0;
        bool operator==(const Identity &) const = default;
    };
    static Identity identity(const QString &path);
};

} // namespace korvane
