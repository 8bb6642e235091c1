// Set documents: the sequential-archive reader, and the set decoder on top of it. A set that
// opens must survive being saved: its items encoded and decoded again are the same items, and so
// must an item of any name.

#include "FuzzCheck.h"

#include "managers/SetDocument.h"
#include "platform/TypedStream.h"

#include <QStringDecoder>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    korvane::TypedStreamReader::read(bytes);

    // Whatever a plug-in's file is called survives a save: here the input, as text, is the name.
    QStringDecoder toText(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless
                                                    | QStringDecoder::Flag::ConvertInitialBom);
    auto named = std::make_shared<korvane::AUItem>();
    named->setAUName(toText.decode(bytes));
    const QList<korvane::AUItemPtr> saved =
        korvane::SetDocument::decode(korvane::SetDocument::encode({named}));
    FUZZ_CHECK(saved.size() == 1 && saved[0]->getAUName() == named->getAUName());

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
