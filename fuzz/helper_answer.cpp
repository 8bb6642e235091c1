// A line of korvane-helper's answer, as the program reads it: only the lines the helper writes
// are taken, and each taken line is written and read back the same.

#include "FuzzCheck.h"

#include "helper/HelperProtocol.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace korvane::helper;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const AnswerLine line = decodeAnswerLine(bytes);
    FUZZ_CHECK(!(line.result && line.ending));
    if (line.result) {
        FUZZ_CHECK(line.result->code >= 0);
        const AnswerLine again = decodeAnswerLine(encodeResult(*line.result).chopped(1));
        FUZZ_CHECK(again.result && again.result->move == line.result->move
                   && again.result->ok == line.result->ok
                   && again.result->error == line.result->error
                   && again.result->code == line.result->code);
    }
    if (line.ending) {
        FUZZ_CHECK(line.ending->moved >= 0 && line.ending->failed >= 0);
        const AnswerLine again = decodeAnswerLine(encodeEnding(*line.ending).chopped(1));
        FUZZ_CHECK(again.ending && again.ending->kind == line.ending->kind
                   && again.ending->moved == line.ending->moved
                   && again.ending->error == line.ending->error
                   && again.ending->path == line.ending->path);
    }
    return 0;
}
