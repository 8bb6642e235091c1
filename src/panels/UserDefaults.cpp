#include "panels/UserDefaults.h"

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

UserDefaults::UserDefaults(const QString &path) : m_path(path)
{
}

QVariantMap UserDefaults::dictionary() const
{
    return PropertyList::readDictionary(m_path).value_or(QVariantMap());
}

bool UserDefaults::contains(const QString &key) const
{
    return dictionary().contains(key);
}

QVariant UserDefaults::object(const QString &key) const
{
    return dictionary().value(key);
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
    QVariantMap map = dictionary();
    for (const auto &[key, value] : values) {
        if (value.isValid())
            map.insert(key, value);
        else
            map.remove(key);
    }
    createFolders(QFileInfo(m_path).absolutePath());
    PropertyList::writeXml(m_path, map);
}

bool UserDefaults::createFolders(const QString &folder)
{
    FileOperations &files = FileOperations::current();
    if (folder.isEmpty() || files.isDirectory(folder))
        return true;
    const QString parent = QFileInfo(folder).absolutePath();
    if (parent != folder && !createFolders(parent))
        return false;
    return files.createDirectory(folder);
}

} // namespace korvane
