// korvane-helper's request: whatever arrives on the standard input of a program running as root.
// It is read within its limits, and the moves read are written and read back the same.

#include "FuzzCheck.h"

#include "helper/HelperProtocol.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace korvane::helper;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    QString why;
    const auto moves = decodeRequest(bytes, &why);
    FUZZ_CHECK(moves.has_value() == why.isEmpty());
    if (!moves)
        return 0;
    FUZZ_CHECK(moves->size() <= MaxMoves);
    QString again;
    FUZZ_CHECK(decodeRequest(encodeRequest(*moves), &again) == moves);
    return 0;
}
