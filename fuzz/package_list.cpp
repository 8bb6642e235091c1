// One dpkg list file: every path it names (a line starting with '/') is then owned by the
// package, however the lines are written.

#include "FuzzCheck.h"

#include "codec/PackageDatabase.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    korvane::PackageDatabase database;
    database.addList(QStringLiteral("fuzz:amd64"), bytes);
    database.addList(QStringLiteral("other"), bytes.left(bytes.size() / 2));
    for (QByteArray line : bytes.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        // Only lines whose text survives the trip through UTF-8 can be asked for by name.
        if (!line.startsWith('/') || line.contains('\0') || !QUtf8StringView(line).isValidUtf8())
            continue;
        const QString path = QString::fromUtf8(line);
        if (path.contains(QLatin1String("/.")) || path.contains(QLatin1String("//")))
            continue; // asked for in its clean form
        FUZZ_CHECK(database.owners(path).contains(QStringLiteral("fuzz:amd64")));
    }
    return 0;
}
