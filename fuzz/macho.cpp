// The architecture test on an executable's first bytes (thin PowerPC, thin Intel, universal):
// only the first eight bytes count, and only an exact match is an architecture.

#include "FuzzCheck.h"

#include "codec/MachOHeader.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::MachOHeader;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const MachOHeader::Architecture architecture = MachOHeader::classify(bytes);
    FUZZ_CHECK(architecture == MachOHeader::classify(bytes.left(8)));
    if (architecture != MachOHeader::Unknown)
        FUZZ_CHECK(bytes.startsWith("\xfe\xed\xfa\xce") || bytes.startsWith("\xce\xfa\xed\xfe")
                   || bytes.startsWith("\xca\xfe\xba\xbe"));
    return 0;
}
