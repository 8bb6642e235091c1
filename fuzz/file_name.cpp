// A file name as the file system gives it: any bytes but '/' and NUL. Decoded, it encodes back to
// the same bytes, shows without an escape, and is taken for a move's leftover or staging folder
// only when it has that shape.

#include "FuzzCheck.h"

#include "core/InterruptedMoves.h"
#include "os/PathBytes.h"
#include "os/StagingFolders.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace korvane;
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString name = pathFromBytes(bytes);
    FUZZ_CHECK(pathBytes(name) == bytes);
    const QString shown = displayName(name);
    FUZZ_CHECK(shown.size() == name.size());
    for (qsizetype i = 0; i < shown.size(); ++i) {
        const QChar c = shown.at(i);
        if (c.isHighSurrogate())
            FUZZ_CHECK(i + 1 < shown.size() && shown.at(++i).isLowSurrogate());
        else
            FUZZ_CHECK(!c.isLowSurrogate());
    }
    if (const auto staging = StagingFolders::parse(name)) {
        FUZZ_CHECK(staging->pid > 0 && name.startsWith(QLatin1String(".korvane-")));
        FUZZ_CHECK(InterruptedMoves::isLeftoverName(QStringLiteral("folder/") + name));
    }
    if (const auto leftover = InterruptedMoves::parse(name))
        FUZZ_CHECK(!leftover->item.isEmpty() && name.contains(leftover->item));
    return 0;
}
