#include "os/PathBytes.h"

namespace korvane {

namespace {

constexpr char16_t kEscapeBase = 0xDC00;
constexpr char16_t kReplacement = 0xFFFD;

bool isEscape(char16_t unit)
{
    return unit >= 0xDC80 && unit <= 0xDCFF;
}

bool isSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

bool isHigh(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLow(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void appendUtf8(QByteArray &out, char32_t c)
{
    if (c < 0x80) {
        out.append(char(c));
    } else if (c < 0x800) {
        out.append(char(0xC0 | (c >> 6)));
        out.append(char(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.append(char(0xE0 | (c >> 12)));
        out.append(char(0x80 | ((c >> 6) & 0x3F)));
        out.append(char(0x80 | (c & 0x3F)));
    } else {
        out.append(char(0xF0 | (c >> 18)));
        out.append(char(0x80 | ((c >> 12) & 0x3F)));
        out.append(char(0x80 | ((c >> 6) & 0x3F)));
        out.append(char(0x80 | (c & 0x3F)));
    }
}

// The length of the well-formed UTF-8 sequence at b (at most size bytes), and its code point;
// 0 when the first byte does not start one (overlong forms, surrogates and values past U+10FFFF
// included).
int sequenceAt(const unsigned char *b, qsizetype size, char32_t *code)
{
    const unsigned char first = b[0];
    int length = 0;
    char32_t value = 0, least = 0;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2, value = first & 0x1F, least = 0x80;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3, value = first & 0x0F, least = 0x800;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4, value = first & 0x07, least = 0x10000;
    } else {
        return 0;
    }
    if (size < length)
        return 0;
    for (int k = 1; k < length; ++k) {
        if ((b[k] & 0xC0) != 0x80)
            return 0;
        value = (value << 6) | (b[k] & 0x3F);
    }
    if (value < least || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        return 0;
    *code = value;
    return length;
}

} // namespace

QString pathFromBytes(const char *bytes, qsizetype size)
{
    const auto *b = reinterpret_cast<const unsigned char *>(bytes);
    qsizetype ascii = 0;
    while (ascii < size && b[ascii] < 0x80)
        ++ascii;
    if (ascii == size)
        return QString::fromLatin1(bytes, size);
    QString result;
    result.reserve(size);
    result.append(QLatin1StringView(bytes, ascii));
    for (qsizetype i = ascii; i < size;) {
        if (b[i] < 0x80) {
            result.append(QChar(char16_t(b[i++])));
            continue;
        }
        char32_t code = 0;
        if (const int length = sequenceAt(b + i, size - i, &code)) {
            if (QChar::requiresSurrogates(code)) {
                const QChar pair[2] = {QChar(QChar::highSurrogate(code)),
                                       QChar(QChar::lowSurrogate(code))};
                result.append(pair, 2);
            } else
                result.append(QChar(char16_t(code)));
            i += length;
        } else {
            result.append(QChar(char16_t(kEscapeBase + b[i++])));
        }
    }
    return result;
}

QByteArray pathBytes(const QString &path)
{
    const char16_t *u = reinterpret_cast<const char16_t *>(path.utf16());
    const qsizetype n = path.size();
    qsizetype plain = 0;
    while (plain < n && !isSurrogate(u[plain]))
        ++plain;
    if (plain == n)
        return path.toUtf8();
    QByteArray out = QStringView(u, plain).toUtf8();
    out.reserve(n * 3);
    for (qsizetype i = plain; i < n; ++i) {
        const char16_t c = u[i];
        if (!isSurrogate(c)) {
            appendUtf8(out, c);
        } else if (isHigh(c) && i + 1 < n && isLow(u[i + 1])) {
            appendUtf8(out, QChar::surrogateToUcs4(c, u[i + 1]));
            ++i;
        } else if (isEscape(c)) {
            out.append(char(c - kEscapeBase));
        } else {
            // Never the result of a decoding: a lone surrogate typed in gets a character that
            // stands for what cannot be said.
            appendUtf8(out, kReplacement);
        }
    }
    return out;
}

QString displayName(const QString &path)
{
    const char16_t *given = reinterpret_cast<const char16_t *>(path.utf16());
    const qsizetype n = path.size();
    qsizetype first = 0;
    while (first < n && !isSurrogate(given[first]))
        ++first;
    if (first == n)
        return path;
    QString shown = path;
    char16_t *u = reinterpret_cast<char16_t *>(shown.data());
    for (qsizetype i = first; i < n; ++i) {
        if (!isSurrogate(u[i]))
            continue;
        if (isHigh(u[i]) && i + 1 < n && isLow(u[i + 1]))
            ++i;
        else
            u[i] = kReplacement;
    }
    return shown;
}

} // namespace korvane
