#include "platform/ProcessList.h"

#include <cstdio>

namespace korvane {

QByteArray readCommandOutput(const QString &command, bool *ok) {
    if (ok)
        *ok = false;
    FILE *pipe = popen(command.toLocal8Bit().constData(), "r");
    if (!pipe)
        return {};
    QByteArray output;
    char buffer[512];
    for (;;) {
        // fread waits for a full buffer, so a short read means the end of the output.
        const size_t count = std::fread(buffer, 1, sizeof buffer, pipe);
        output.append(buffer, qsizetype(count));
        if (count < sizeof buffer)
            break;
    }
    pclose(pipe);
    if (ok)
        *ok = true;
    return output;
}

} // namespace korvane
