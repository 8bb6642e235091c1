// Property lists, XML and binary, through the wrapper: whole conversion, and the parsed dictionary
// whose values are converted one key at a time and must match the whole conversion.

#include "FuzzCheck.h"

#include "codec/PropertyList.h"

#include <cstddef>
#include <cstdint>

namespace {

// Equal values write the same XML; unlike QVariant's ==, a NaN equals itself here.
bool same(const QVariant &a, const QVariant &b)
{
    using korvane::PropertyList;
    return a.typeId() == b.typeId() && PropertyList::toXml(a) == PropertyList::toXml(b);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::PropertyList;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    if (const std::optional<QVariant> value = PropertyList::fromBytes(bytes)) {
        // Whatever was read can be written again.
        PropertyList::toXml(*value);
        PropertyList::toBinary(*value);
    }

    const std::optional<PropertyList::Dictionary> dictionary =
        PropertyList::parsedDictionary(bytes);
    if (!dictionary)
        return 0;
    const QVariantMap map = dictionary->toMap();
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        // A key that is no UTF-8 shows with replacement characters, and no lookup can name it.
        if (!it.key().contains(QChar::ReplacementCharacter))
            FUZZ_CHECK(same(dictionary->value(it.key()), it.value()));
    }
    FUZZ_CHECK(!dictionary->value(QStringLiteral("CFBundleExecutable")).isValid()
               || map.contains(QStringLiteral("CFBundleExecutable")));
    return 0;
}
