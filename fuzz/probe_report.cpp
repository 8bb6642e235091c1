// The probe's report: the output of a process that ran foreign code. Whatever it printed is read
// within the limits, and what was read is written and read back the same.

#include "FuzzCheck.h"

#include "probe/ProbeReport.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::ProbeReport;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    QString error;
    const auto report = ProbeReport::parse(bytes, &error);
    FUZZ_CHECK(report.has_value() == error.isEmpty());
    if (!report)
        return 0;
    FUZZ_CHECK(report->plugins.size() <= ProbeReport::maxPlugins);
    const auto again = ProbeReport::fromJson(report->toJson());
    FUZZ_CHECK(again && again->plugins.size() == report->plugins.size());
    for (qsizetype i = 0; i < report->plugins.size(); ++i) {
        FUZZ_CHECK(report->plugins[i].name == again->plugins[i].name);
        FUZZ_CHECK(report->plugins[i].features.size() <= 256);
    }
    return 0;
}
