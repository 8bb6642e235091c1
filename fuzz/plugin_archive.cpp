// The backup archive reader: whatever the bytes, verify and extract agree, and nothing extracted
// lies or points outside the folder it was extracted into.

#include "FuzzCheck.h"

#include "codec/PluginArchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::PluginArchive;
    static QTemporaryDir scratch;
    const QString file = scratch.path() + "/input.tar.xz";
    const QString out = scratch.path() + "/out";
    {
        QFile input(file);
        if (!input.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        input.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    korvane::ArchiveLimits limits;
    limits.maxBytes = 1 << 20;
    limits.maxEntries = 1000;
    limits.linkScopeDepth = 3;
    const korvane::ArchiveResult verified = PluginArchive::verify(file, limits);
    FUZZ_CHECK(verified.ok != !verified.error.isEmpty() || verified.cancelled);

    QDir(out).removeRecursively();
    QDir().mkpath(out);
    const korvane::ArchiveResult extracted = PluginArchive::extract(file, out, limits);
    if (!verified.ok)
        FUZZ_CHECK(!extracted.ok);
    const QString real = QFileInfo(out).canonicalFilePath();
    QDirIterator it(out, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        const QString target = info.canonicalFilePath();
        // A dangling link is harmless; one that resolves must resolve inside.
        FUZZ_CHECK(target.isEmpty() || target == real || target.startsWith(real + '/'));
    }
    PluginArchive::readDocument(file, "korvane-backup/manifest.json", limits);
    return 0;
}
