// KorvaneCMD's argument parsing; the input is the argument list with NUL bytes between the
// arguments. What parses must parse back from its own command line to the same options.

#include "FuzzCheck.h"

#include "cli/Options.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace korvane;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    QStringList arguments;
    if (!bytes.isEmpty()) {
        for (const QByteArray &argument : bytes.split('\0'))
            arguments.append(QString::fromUtf8(argument));
    }
    const ParsedCommandLine parsed = parseCommandLine(arguments);
    FUZZ_CHECK(parsed.options.has_value() != !parsed.error.isEmpty());
    if (!parsed.options)
        return 0;
    const ParsedCommandLine again = parseCommandLine(toCommandLine(*parsed.options));
    FUZZ_CHECK(again.options == parsed.options);
    return 0;
}
