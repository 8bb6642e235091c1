// The LV2 reader on a manifest and one data file from the input (split at the first NUL byte):
// whatever the Turtle, it never asks for a file outside the bundle and every plug-in has a URI.

#include "FuzzCheck.h"

#include "codec/Lv2Bundle.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::Lv2Bundle;
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const qsizetype split = bytes.indexOf('\0');
    const QByteArray manifest = split < 0 ? bytes : bytes.left(split);
    const QByteArray other = split < 0 ? QByteArray() : bytes.mid(split + 1);
    const QString bundle = QStringLiteral("/fuzz/lib/lv2/Fuzz.lv2");
    int asked = 0;
    const auto reader = [&](const QString &path, qsizetype maxBytes) {
        FUZZ_CHECK(path.startsWith(bundle + u'/'));
        FUZZ_CHECK(!path.contains(QLatin1String("/../")) && !path.endsWith(QLatin1String("/..")));
        ++asked;
        Lv2Bundle::FileRead read;
        read.bytes = path.endsWith(QLatin1String("/manifest.ttl")) ? manifest : other;
        if (read.bytes.size() > maxBytes)
            read = {QByteArray(), QStringLiteral("larger than the limit")};
        return read;
    };
    korvane::Lv2Limits limits;
    limits.maxFiles = 64;
    const korvane::Lv2BundleInfo info = Lv2Bundle::read(bundle, reader, limits);
    FUZZ_CHECK(asked <= limits.maxFiles + 1);
    for (const korvane::Lv2Plugin &plugin : info.plugins)
        FUZZ_CHECK(!plugin.uri.isEmpty());
    if (!info.error.isEmpty())
        FUZZ_CHECK(info.problems.contains(info.error));
    return 0;
}
