// Set documents: the sequential-archive reader, and the set decoder on top of it. A set that
// opens must survive being saved: its items encoded and decoded again are the same items, and so
// must an item of any name.

#include "FuzzCheck.h"

#include "codec/TypedStream.h"
#include "library/SetDocument.h"

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
    auto named = std::make_shared<korvane::Plugin>();
    named->setName(toText.decode(bytes));
    const QList<korvane::PluginPtr> saved =
        korvane::SetDocument::decode(korvane::SetDocument::encode({named}));
    FUZZ_CHECK(saved.size() == 1 && saved[0]->name() == named->name());

    const QList<korvane::PluginPtr> items = korvane::SetDocument::decode(bytes);
    if (items.isEmpty())
        return 0;
    const QList<korvane::PluginPtr> again =
        korvane::SetDocument::decode(korvane::SetDocument::encode(items));
    FUZZ_CHECK(again.size() == items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        FUZZ_CHECK(again[i]->name() == items[i]->name());
        FUZZ_CHECK(again[i]->location() == items[i]->location());
        FUZZ_CHECK(again[i]->isGlobal() == items[i]->isGlobal());
        FUZZ_CHECK(again[i]->isActive() == items[i]->isActive());
    }
    return 0;
}
