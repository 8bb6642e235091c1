// The Mach-O architecture list: a thin file names one, a universal file each of its slices at
// most once, and anything else is refused with a reason.

#include "FuzzCheck.h"

#include "codec/MachOArchitectures.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::MachOArchitectures;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const MachOArchitectures result = MachOArchitectures::parse(bytes);
    FUZZ_CHECK(result.architectures.isEmpty() != result.reason.isEmpty());
    FUZZ_CHECK(result.architectures.size() <= 32);
    QStringList distinct = result.architectures;
    FUZZ_CHECK(distinct.removeDuplicates() == 0);
    // Only the header and the slice table count.
    const MachOArchitectures first =
        MachOArchitectures::parse(bytes.left(MachOArchitectures::BytesNeeded + 32 * 12));
    FUZZ_CHECK(first.architectures == result.architectures);
    return 0;
}
