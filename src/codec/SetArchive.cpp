#include "codec/SetArchive.h"

namespace korvane {

namespace {
const QString kItemClass = QStringLiteral("AUItem");
} // namespace

QByteArray SetArchive::encode(const QList<QStringList> &items)
{
    // The two flag strings are archived once each and referenced after that: the layout that
    // existing set documents have, byte for byte.
    const ArchivedObjectPtr yes = TypedStreamWriter::makeString(QStringLiteral("YES"));
    const ArchivedObjectPtr no = TypedStreamWriter::makeString(QStringLiteral("NO"));
    QList<ArchivedObjectPtr> elements;
    elements.reserve(items.size());
    for (const QStringList &coded : items) {
        elements.append(TypedStreamWriter::makeObject(
            kItemClass, {TypedStreamWriter::makeString(coded.value(0)),
                         TypedStreamWriter::makeString(coded.value(1)),
                         coded.value(2) == QLatin1String("YES") ? yes : no,
                         coded.value(3) == QLatin1String("YES") ? yes : no}));
    }
    return TypedStreamWriter::write(TypedStreamWriter::makeArray(elements));
}

std::optional<QList<QList<ArchivedObjectPtr>>> SetArchive::decode(const QByteArray &bytes)
{
    const std::optional<ArchivedObjectPtr> root = TypedStreamReader::read(bytes);
    if (!root || !*root || !(*root)->isArray())
        return std::nullopt;
    QList<QList<ArchivedObjectPtr>> items;
    items.reserve((*root)->elements.size());
    for (const ArchivedObjectPtr &element : (*root)->elements) {
        if (!element || element->className != kItemClass)
            return std::nullopt;
        items.append(element->elements);
    }
    return items;
}

} // namespace korvane
