// Set documents: the sequential-archive reader, and the set decoder on top of it. A set that
// opens must survive being saved: its items encoded and decoded again are the same items.

#include "FuzzCheck.h"

#include "managers/SetDocument.h"
#include "platform/TypedStream.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    korvane::TypedStreamReader::read(bytes);

    const QList<korvane::AUItemPtr> items = korvane::SetDocument::decode(bytes);
    if (items.isEmpty())
        return 0;
    const QList<korvane::AUItemPtr> again =
        korvane::SetDocument::decode(korvane::SetDocument::encode(items));
    FUZZ_CHECK(again.size() == items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        FUZZ_CHECK(again[i]->getAUName() == items[i]->getAUName());
        FUZZ_CHECK(again[i]->getAULocation() == items[i]->getAULocation());
        FUZZ_CHECK(again[i]->getAUGlobal() == items[i]->getAUGlobal());
        FUZZ_CHECK(again[i]->getAUActive() == items[i]->getAUActive());
    }
    return 0;
}
