// The plain-text lists of names KorvaneCMD's apply reads. Each name is one whole line of the
// input, its bytes kept, trimmed of spaces and tabs, never empty and never a comment.

#include "FuzzCheck.h"

#include "cli/NameList.h"
#include "os/PathBytes.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace korvane;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const QStringList names = parseNameList(bytes);
    FUZZ_CHECK(names.size() <= bytes.count('\n') + 1);
    qsizetype from = 0;
    for (const QString &name : names) {
        const QByteArray raw = pathBytes(name);
        FUZZ_CHECK(!raw.isEmpty() && !raw.contains('\n') && !raw.startsWith('#'));
        for (const char edge : {raw.front(), raw.back()})
            FUZZ_CHECK(edge != ' ' && edge != '\t');
        FUZZ_CHECK(raw.back() != '\r');
        // In the order of the lines, each as it was written.
        const qsizetype at = bytes.indexOf(raw, from);
        FUZZ_CHECK(at >= 0);
        from = at + raw.size();
    }
    return 0;
}
