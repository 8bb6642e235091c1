#pragma once

#include <QByteArrayView>
#include <QString>

namespace korvane {

// Turns the small RTF subset of the about text (groups, bold, italic, sizes, paragraphs,
// code-page and Unicode escapes) into an HTML fragment for a rich-text view. Only the reader's
// own tags become markup; every character of the text is escaped.
class RtfText {
public:
    // Bytes past this are not read: the about text is a few kilobytes.
    static constexpr qsizetype maxInputSize = 1024 * 1024;

    // One <p> per non-empty paragraph; bytes that do not start with "{\rtf" give an empty string.
    static QString toHtml(QByteArrayView rtf);
};

} // namespace korvane
