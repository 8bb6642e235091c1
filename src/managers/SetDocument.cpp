#include "managers/SetDocument.h"

#include "platform/FileOperations.h"
#include "platform/TypedStream.h"

#include <QFile>

#include <optional>

namespace korvane {

namespace {

// A document of ten thousand plug-ins is about a megabyte; a file far beyond that is not one.
constexpr qint64 kMaxDocumentSize = 64 * 1024 * 1024;

// nullopt: not a set document. An empty list: a document of no items.
std::optional<QList<AUItemPtr>> decodeItems(const QByteArray &bytes)
{
    const std::optional<ArchivedObjectPtr> root = TypedStreamReader::read(bytes);
    if (!root || !*root || !(*root)->isArray())
        return std::nullopt;
    QList<AUItemPtr> items;
    for (const ArchivedObjectPtr &element : (*root)->elements) {
        if (!element || element->className != QLatin1String("AUItem"))
            return std::nullopt;
        AUItemPtr item = AUItem::initWithCoder(element->elements);
        if (!item)
            return std::nullopt;
        items.append(item);
    }
    return items;
}

std::optional<QList<AUItemPtr>> readItems(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kMaxDocumentSize)
        return std::nullopt;
    // The size it has, not the limit: a buffer of the limit would cost far more than a set. What
    // is no plain file has no size to go by and is read up to the limit.
    return decodeItems(file.read(file.isSequential() ? kMaxDocumentSize : file.size()));
}

} // namespace

QByteArray SetDocument::encode(const QList<AUItemPtr> &items)
{
    // The original program archives its flags as two constant strings, one instance each, so
    // every flag after the first of its kind is a reference; documents match it byte for byte.
    const ArchivedObjectPtr yes = TypedStreamWriter::makeString(QStringLiteral("YES"));
    const ArchivedObjectPtr no = TypedStreamWriter::makeString(QStringLiteral("NO"));
    QList<ArchivedObjectPtr> elements;
    elements.reserve(items.size());
    for (const AUItemPtr &item : items) {
        if (!item)
            continue;
        const QStringList coded = item->encodeWithCoder();
        elements.append(TypedStreamWriter::makeObject(
            QStringLiteral("AUItem"),
            {TypedStreamWriter::makeString(coded.value(0)),
             TypedStreamWriter::makeString(coded.value(1)),
             coded.value(2) == QLatin1String("YES") ? yes : no,
             coded.value(3) == QLatin1String("YES") ? yes : no}));
    }
    return TypedStreamWriter::write(TypedStreamWriter::makeArray(elements));
}

QList<AUItemPtr> SetDocument::decode(const QByteArray &bytes)
{
    return decodeItems(bytes).value_or(QList<AUItemPtr>());
}

bool SetDocument::write(const QString &path, const QList<AUItemPtr> &items)
{
    // Written beside the target and renamed over it, so a failed save keeps the old document.
    return FileOperations::current().writeFileAtomically(path, encode(items));
}

QList<AUItemPtr> SetDocument::read(const QString &path)
{
    return readItems(path).value_or(QList<AUItemPtr>());
}

bool SetDocument::isReadable(const QString &path)
{
    return readItems(path).has_value();
}

} // namespace korvane
