#pragma once

#include "platform/DataFile.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <optional>

namespace korvane {

class AppServices;
class FileOperations;

// The application's defaults domain, kept in one plist file. The file is parsed again only when
// it changed on disk, so the command-line tool and the program still share one store; every write
// rewrites it atomically. A write that fails stays in memory for as long as the file is unchanged.
class UserDefaults {
public:
    // path expanded; log, when given, also hears of a damaged file being kept aside.
    UserDefaults(const QString &path, FileOperations &files, AppServices *log = nullptr);
    QString path() const { return m_path; }

    bool contains(const QString &key) const;
    QVariant object(const QString &key) const;
    bool boolForKey(const QString &key) const;                 // missing: NO
    qint64 integerForKey(const QString &key) const;            // missing: 0
    QString stringForKey(const QString &key) const;            // missing: null string
    void setObject(const QString &key, const QVariant &value); // an invalid value removes the key
    void setObjects(const QList<QPair<QString, QVariant>> &values); // one write for many keys
    QVariantMap dictionary() const; // empty when the file is missing or unreadable
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
    AppServices *m_log;
    mutable QVariantMap m_values;
    mutable DataFile::Identity m_identity;
    mutable bool m_damaged = false;
    mutable bool m_loaded = false;
    std::optional<DataFile::Identity> m_keepFailed;
};

} // namespace korvane
