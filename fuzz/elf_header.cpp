// The ELF header reader: only the first 64 bytes count, and a header is either whole with a
// class and byte order or refused with a reason.

#include "FuzzCheck.h"

#include "codec/ElfHeader.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::ElfHeader;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const ElfHeader header = ElfHeader::parse(bytes);
    const ElfHeader first = ElfHeader::parse(bytes.left(ElfHeader::BytesNeeded));
    FUZZ_CHECK(header.valid == first.valid && header.machine == first.machine
               && header.flags == first.flags && header.reason == first.reason);
    if (header.valid) {
        FUZZ_CHECK(header.bits == 32 || header.bits == 64);
        FUZZ_CHECK(header.reason.isEmpty());
        FUZZ_CHECK(bytes.startsWith("\x7f"
                                    "ELF"));
    } else {
        FUZZ_CHECK(!header.reason.isEmpty());
    }
    FUZZ_CHECK(!header.describe().isEmpty() && !header.typeText().isEmpty());
    return 0;
}
