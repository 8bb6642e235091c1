#pragma once

#include "os/PathBytes.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace korvane {

// A name as KorvaneCMD shows it (displayName), on one line: a line break, a tab, any other
// control character and the backslash itself escaped ("\n", "\t", "\x1b", "\\"), so one plug-in is
// always one line of output.
inline QString shownLine(const QString &text)
{
    QString name = displayName(text);
    const auto escaped = [](QChar c) { return c.unicode() < 0x20 || c == u'\\' || c == u'\x7f'; };
    if (std::none_of(name.cbegin(), name.cend(), escaped))
        return name;
    QString shown;
    shown.reserve(name.size());
    for (const QChar c : std::as_const(name)) {
        switch (c.unicode()) {
        case u'\\':
            shown += QLatin1String("\\\\");
            break;
        case u'\n':
            shown += QLatin1String("\\n");
            break;
        case u'\t':
            shown += QLatin1String("\\t");
            break;
        case u'\r':
            shown += QLatin1String("\\r");
            break;
        default:
            if (c.unicode() < 0x20 || c.unicode() == 0x7f)
                shown += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
            else
                shown += c;
        }
    }
    return shown;
}

} // namespace korvane
