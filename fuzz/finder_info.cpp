// Finder file types from the bytes of a com.apple.FinderInfo attribute and of an AppleDouble
// sidecar. Every offset and length in a sidecar comes from the file itself.

#include "FuzzCheck.h"

#include "codec/FinderInfo.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::FinderInfo;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const std::optional<quint32> type :
         {FinderInfo::typeFromAttribute(bytes), FinderInfo::typeFromAppleDouble(bytes)}) {
        if (type)
            FUZZ_CHECK(FinderInfo::typeCodeString(*type).size() == 6);
    }
    return 0;
}
