#pragma once

#include <QString>

#include <algorithm>

namespace korvane {

// A name as KorvaneCMD shows it. The bytes of a file name that are no UTF-8 are kept in the name
// as lone surrogates U+DC80..U+DCFF, so it can be compared and moved as the file system gave it;
// shown, each is U+FFFD.
inline QString shownName(const QString &name)
{
    // Most names hold no surrogate at all: they are shared, not copied.
    const auto surrogate = [](QChar c) { return c.isSurrogate(); };
    if (std::none_of(name.cbegin(), name.cend(), surrogate))
        return name;
    QString shown = name;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        const char16_t c = shown.at(i).unicode();
        const bool paired = i > 0 && shown.at(i - 1).isHighSurrogate();
        if (c >= 0xDC80 && c <= 0xDCFF && !paired)
            shown[i] = QChar(QChar::ReplacementCharacter);
    }
    return shown;
}

// shownName on one line: a line break, a tab, any other control character and the backslash
// itself escaped ("\n", "\t", "\x1b", "\\"), so one plug-in is always one line of output.
inline QString shownLine(const QString &text)
{
    const QString name = shownName(text);
    const auto escaped = [](QChar c) { return c.unicode() < 0x20 || c == u'\\' || c == u'\x7f'; };
    if (std::none_of(name.cbegin(), name.cend(), escaped))
        return name;
    QString shown;
    shown.reserve(name.size());
    for (const QChar c : name) {
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
