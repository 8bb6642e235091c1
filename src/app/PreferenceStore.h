#pragma once

#include "core/DataFile.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <optional>

namespace korvane {

class DataFiles;
class FileOperations;

// The program's preferences, kept in one property list file. The file is parsed again only when
// it changed on disk, so the command-line tool and the program still share one store; every write
// rewrites it atomically. A write that fails stays in memory for as long as the file is unchanged.
class PreferenceStore {
public:
    // path expanded; dataFiles, when given, writes the file (saying a failure) and logs a damaged
    // file being kept aside.
    PreferenceStore(const QString &path, FileOperations &files, DataFiles *dataFiles = nullptr);
    QString path() const { return m_path; }

    bool contains(const QString &key) const;
    QVariant value(const QString &key) const;
    bool boolValue(const QString &key) const;                 // missing: false
    qint64 intValue(const QString &key) const;                // missing: 0
    QString stringValue(const QString &key) const;            // missing: null string
    void setValue(const QString &key, const QVariant &value); // an invalid value removes the key
    void setValues(const QList<QPair<QString, QVariant>> &values); // one write for many keys
    QVariantMap values() const; // empty when the file is missing or unreadable
    // The file is there but holds no dictionary.
    bool isDamaged() const;
    // Moves a damaged file aside and says so in the logs; true when the path is now free of one.
    bool keepIfDamaged();

    // Creates folder and its missing parents through the file operations.
    bool createFolders(const QString &folder);

private:
    const QVariantMap &cached() const;

    QString m_path;
    FileOperations &m_files;
    DataFiles *m_dataFiles;
    mutable QVariantMap m_values;
    mutable DataFile::Identity m_identity;
    mutable bool m_damaged = false;
    mutable bool m_loaded = false;
    std::optional<DataFile::Identity> m_keepFailed;
};

} // namespace korvane
