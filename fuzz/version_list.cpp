// The update check's version list as the server sends it, and the version the newer-version
// panel shows from it: never longer than the panel allows, never half a character.

#include "FuzzCheck.h"

#include "app/UpdateCheck.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::UpdateCheck;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QVariantMap> list = UpdateCheck::parseVersionList(bytes);
    if (!list)
        return 0;
    const QString listed = list->value(QLatin1String(UpdateCheck::VersionKey)).toString();
    const QString shown = UpdateCheck::shownVersion(listed);
    if (shown == listed)
        return 0;
    FUZZ_CHECK(shown.size() <= 65 && shown.endsWith(QChar(0x2026)));
    FUZZ_CHECK(listed.startsWith(shown.chopped(1)));
    FUZZ_CHECK(shown.size() < 2 || !shown.at(shown.size() - 2).isHighSurrogate());
    return 0;
}
