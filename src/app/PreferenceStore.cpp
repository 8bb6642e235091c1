#include "app/PreferenceStore.h"

#include "codec/PropertyList.h"
#include "core/DataFiles.h"
#include "os/FileOperations.h"

#include <QFileInfo>

namespace korvane {

namespace {
// A text stored for a flag: after white space and an optional sign, "Y", "y", "T", "t" or a digit
// other than zero (leading zeros skipped) reads as on.
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

PreferenceStore::PreferenceStore(const QString &path, FileOperations &files, DataFiles *dataFiles)
    : m_path(path), m_files(files), m_dataFiles(dataFiles)
{
}

const QVariantMap &PreferenceStore::cached() const
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

QVariantMap PreferenceStore::values() const
{
    return cached();
}

bool PreferenceStore::isDamaged() const
{
    cached();
    return m_damaged;
}

bool PreferenceStore::keepIfDamaged()
{
    if (!isDamaged())
        return true;
    // Told once per version of the file: every setter would otherwise say it again.
    if (m_keepFailed && *m_keepFailed == m_identity)
        return false;
    QString report;
    const bool kept = DataFile::keep(m_files, m_path, &report);
    if (m_dataFiles)
        m_dataFiles->log(report);
    if (!kept)
        m_keepFailed = m_identity;
    return kept;
}

bool PreferenceStore::contains(const QString &key) const
{
    return cached().contains(key);
}

QVariant PreferenceStore::value(const QString &key) const
{
    return cached().value(key);
}

bool PreferenceStore::boolValue(const QString &key) const
{
    const QVariant stored = value(key);
    if (stored.typeId() == QMetaType::Bool)
        return stored.toBool();
    if (isNumber(stored))
        return stored.toDouble() != 0;
    if (stored.typeId() == QMetaType::QString)
        return stringBool(stored.toString());
    return false;
}

qint64 PreferenceStore::intValue(const QString &key) const
{
    const QVariant stored = value(key);
    if (stored.typeId() == QMetaType::Bool)
        return stored.toBool() ? 1 : 0;
    if (isNumber(stored))
        return stored.toLongLong();
    if (stored.typeId() == QMetaType::QString) {
        // The leading number, 0 when there is none.
        const QString text = stored.toString().trimmed();
        int end = 0;
        if (end < text.size() && (text.at(end) == u'+' || text.at(end) == u'-'))
            ++end;
        while (end < text.size() && text.at(end).isDigit())
            ++end;
        return text.left(end).toLongLong();
    }
    return 0;
}

QString PreferenceStore::stringValue(const QString &key) const
{
    const QVariant stored = value(key);
    if (stored.typeId() == QMetaType::QString)
        return stored.toString();
    if (isNumber(stored))
        return stored.toString();
    return QString();
}

void PreferenceStore::setValue(const QString &key, const QVariant &value)
{
    setValues({{key, value}});
}

void PreferenceStore::setValues(const QList<QPair<QString, QVariant>> &values)
{
    QVariantMap map = cached();
    for (const auto &[key, value] : values) {
        if (value.isValid())
            map.insert(key, value);
        else
            map.remove(key);
    }
    const bool free = keepIfDamaged();
    if (free && m_dataFiles) {
        m_dataFiles->saver().write(m_path, PropertyList::toXml(map));
    } else if (free) {
        createFolders(QFileInfo(m_path).absolutePath());
        PropertyList::writeXml(m_files, m_path, map);
    }
    // Written or not, the values hold until the file changes on disk.
    m_values = map;
    m_identity = DataFile::identity(m_path);
    m_damaged = !free;
    m_loaded = true;
}

bool PreferenceStore::createFolders(const QString &folder)
{
    return makePath(m_files, folder);
}

} // namespace korvane
