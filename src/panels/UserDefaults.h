#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

namespace korvane {

// The application's defaults domain, kept in one plist file. Reads see the file as it is now;
// every write rewrites it atomically, so the command-line tool and the program share one store.
class UserDefaults {
public:
    explicit UserDefaults(const QString &path); // expanded path
    QString path() const { return m_path; }

    bool contains(const QString &key) const;
    QVariant object(const QString &key) const;
    bool boolForKey(const QString &key) const;     // missing: NO
    qint64 integerForKey(const QString &key) const; // missing: 0
    QString stringForKey(const QString &key) const; // missing: null string
    void setObject(const QString &key, const QVariant &value); // an invalid value removes the key
    void setObjects(const QList<QPair<QString, QVariant>> &values); // one write for many keys
    QVariantMap dictionary() const; // empty when the file is missing or unreadable

    // Creates folder and its missing parents through the file operations.
    static bool createFolders(const QString &folder);

private:
    QString m_path;
};

} // namespace korvane
