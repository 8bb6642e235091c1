#include "cli/NameList.h"

#include "codec/FileBytes.h"
#include "os/PathBytes.h"

namespace korvane {

QStringList parseNameList(const QByteArray &bytes)
{
    QStringList names;
    for (const QByteArray &text : bytes.split('\n')) {
        QByteArrayView line(text);
        // Only spaces and tabs: a name may end in any other character, even a non-breaking space.
        while (!line.isEmpty() && (line.front() == ' ' || line.front() == '\t'))
            line = line.sliced(1);
        while (!line.isEmpty()
               && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r'))
            line.chop(1);
        if (!line.isEmpty() && line.front() != '#')
            names << pathFromBytes(line.data(), line.size());
    }
    return names;
}

std::optional<QStringList> readNameList(const QString &path, QString *problem)
{
    const FileBytes file = FileBytes::read(path, kMaxNameListBytes);
    if (!file.error.isEmpty()) {
        if (problem)
            *problem = file.error;
        return std::nullopt;
    }
    return parseNameList(file.bytes);
}

} // namespace korvane
