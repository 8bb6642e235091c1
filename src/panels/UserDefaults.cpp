#include "panels/UserDefaults.h"

#include "app/AppServices.h"
#include "platform/FileOperations.h"
#include "platform/PropertyList.h"

#include <QFileInfo>

namespace korvane {

namespace {
// NSString's boolValue: after white space and an optional sign, "Y", "y", "T", "t" or a digit
// other than zero (leading zeros skipped) reads as YES.
bool stringBool(const QString &text)
{
    int i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    if (i < text.size() && (text.at(i) == u'+' || text.at(i) == u'-'))
        ++i;
    while (i < text.size() && text.at(i) == u'0')
        ++i;
    if (i >= text.size())
        return false;
    const QChar c = text.at(i);
    return c == u'Y' || c == u'y' || c == u'T' || c == u't' || (c >= u'1' && c <= u'9');
}

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}
} // namespace

UserDefaults::UserDefaults(const QString &path, FileOperations &files, AppServices *log)
    : m_path(path), m_files(files), m_log(log)
{
}

const QVariantMap &UserDefaults::cached() const
{
    // The identity is taken before reading: a change in between only costs another read.
    const DataFile::Identity now = DataFile::identity(m_path);
    if (m_loaded && now == m_identity)
        return m_values;
    const std::optional<QVariantMap> read = PropertyList::readDictionary(m_path);
    m_values = read.value_or(QVariantMap());
    m_damaged = now.exists && !read;
    m_identity = now;
    m_loaded = true;
    return m_values;
}

QVariantMap UserDefaults::dictionary() const
{
    return cached();
}

bool UserDefaults::isDamaged() const
{
    cached();
    return m_damaged;
}

bool UserDefaults::keepIfDamaged()
{
    if (!isDamaged())
        return true;
    // Told once per version of the file: every setter would otherwise say it again.
    if (m_keepFailed && *m_keepFailed == m_identity)
        return false;
    QString report;
    const bool kept = DataFile::keep(m_files, m_path, &report);
    if (m_log)
        m_log->addLogEntry(this, report);
    if (!kept)
        m_keepFailed = m_identity;
    return kept;
}

bool UserDefaults::contains(const QString &key) const
{
    return cached().contains(key);
}

QVariant UserDefaults::object(const QString &key) const
{
    return cached().value(key);
}

bool UserDefaults::boolForKey(const QString &key) const
{
    const QVariant value = object(key);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (isNumber(value))
        return value.toDouble() != 0;
    if (value.typeId() == QMetaType::QString)
        return stringBool(value.toString());
    return false;
}

qint64 UserDefaults::integerForKey(const QString &key) const
{
    const QVariant value = object(key);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? 1 : 0;
    if (isNumber(value))
        return value.toLongLong();
    if (value.typeId() == QMetaType::QString) {
        // Like integerValue: the leading number, 0 when there is none.
        const QString text = value.toString().trimmed();
        int end = 0;
        if (end < text.size() && (text.at(end) == u'+' || text.at(end) == u'-'))
            ++end;
        while (end < text.size() && text.at(end).isDigit())
            ++end;
        return text.left(end).toLongLong();
    }
    return 0;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QVariant value = object(key);
    if (value.typeId() == QMetaType::QString)
        return value.toString();
    if (isNumber(value))
        return value.toString();
    return QString();
}

void UserDefaults::setObject(const QString &key, const QVariant &value)
{
    setObjects({{key, value}});
}

void UserDefaults::setObjects(const QList<QPair<QString, QVariant>> &values)
{
    QVariantMap map = cached();
    for (const auto &[key, value] : values) {
        if (value.isValid())
            map.insert(key, value);
        else
            map.remove(key);
    }
    const bool free = keepIfDamaged();
    if (free) {
        createFolders(QFileInfo(m_path).absolutePath());
        PropertyList::writeXml(m_files, m_path, map);
    }
    // Written or not, the values hold until the file changes on disk.
    m_values = map;
    m_identity = DataFile::identity(m_path);
    m_damaged = !free;
    m_loaded = true;
}

bool UserDefaults::createFolders(const QString &folder)
{
    FileOperations &files = m_files;
    if (folder.isEmpty() || files.isDirectory(folder))
        return true;
    const QString parent = QFileInfo(folder).absolutePath();
    if (parent != folder && !createFolders(parent))
        return false;
    return files.createDirectory(folder);
}

} // namespace korvane
