#include "codec/Json5.h"

#include <QJsonArray>
#include <QJsonObject>

#include <cmath>
#include <limits>

// Qt reads only strict JSON, and Debian has no JSON5 library for C++: this is a small recursive
// descent reader over UTF-8 that builds Qt's JSON values directly.

namespace korvane {

namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

class Reader {
public:
    Reader(QByteArrayView text, const Json5::Limits &limits) : m_text(text), m_limits(limits) {}

    QJsonValue document()
    {
        skipSpace();
        QJsonValue value = parseValue(0);
        if (failed())
            return QJsonValue(QJsonValue::Undefined);
        skipSpace();
        if (!failed() && m_pos < m_text.size())
            fail(QStringLiteral("unexpected text after the value"));
        return failed() ? QJsonValue(QJsonValue::Undefined) : value;
    }

    bool failed() const { return !m_message.isEmpty(); }
    Json5::Error error() const
    {
        Json5::Error error;
        if (!failed())
            return error;
        error.message = m_message;
        locate(m_errorPos, &error.line, &error.column);
        return error;
    }

private:
    QByteArrayView m_text;
    Json5::Limits m_limits;
    qsizetype m_pos = 0;
    qsizetype m_errorPos = 0;
    QString m_message;

    void fail(const QString &message) { failAt(m_pos, message); }
    void failAt(qsizetype pos, const QString &message)
    {
        if (failed())
            return;
        m_message = message;
        m_errorPos = pos;
    }

    // The code point at pos and its length in bytes; kInvalid for malformed UTF-8.
    char32_t peekCode(qsizetype pos, int *length) const
    {
        const qsizetype size = m_text.size();
        const unsigned char lead = static_cast<unsigned char>(m_text[pos]);
        if (lead < 0x80) {
            *length = 1;
            return lead;
        }
        int extra;
        char32_t code;
        char32_t minimum;
        if ((lead & 0xE0) == 0xC0) {
            extra = 1, code = lead & 0x1F, minimum = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2, code = lead & 0x0F, minimum = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            extra = 3, code = lead & 0x07, minimum = 0x10000;
        } else {
            *length = 1;
            return kInvalid;
        }
        if (pos + extra >= size) {
            *length = 1;
            return kInvalid;
        }
        for (int i = 1; i <= extra; ++i) {
            const unsigned char next = static_cast<unsigned char>(m_text[pos + i]);
            if ((next & 0xC0) != 0x80) {
                *length = 1;
                return kInvalid;
            }
            code = (code << 6) | (next & 0x3F);
        }
        *length = extra + 1;
        if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return kInvalid;
        return code;
    }

    static bool isLineTerminator(char32_t c)
    {
        return c == '\n' || c == '\r' || c == 0x2028 || c == 0x2029;
    }

    static bool isSpace(char32_t c)
    {
        switch (c) {
        case '\t':
        case '\n':
        case '\v':
        case '\f':
        case '\r':
        case ' ':
        case 0xA0:
        case 0x2028:
        case 0x2029:
        case 0xFEFF:
            return true;
        default:
            return c > 0x7F && QChar::category(c) == QChar::Separator_Space;
        }
    }

    static bool isIdentifierStart(char32_t c)
    {
        if (c < 0x80)
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '$' || c == '_';
        switch (QChar::category(c)) {
        case QChar::Letter_Uppercase:
        case QChar::Letter_Lowercase:
        case QChar::Letter_Titlecase:
        case QChar::Letter_Modifier:
        case QChar::Letter_Other:
        case QChar::Number_Letter:
            return true;
        default:
            return false;
        }
    }

    static bool isIdentifierPart(char32_t c)
    {
        if (isIdentifierStart(c))
            return true;
        if (c < 0x80)
            return c >= '0' && c <= '9';
        if (c == 0x200C || c == 0x200D)
            return true;
        switch (QChar::category(c)) {
        case QChar::Mark_NonSpacing:
        case QChar::Mark_SpacingCombining:
        case QChar::Number_DecimalDigit:
        case QChar::Punctuation_Connector:
            return true;
        default:
            return false;
        }
    }

    bool atEnd() const { return m_pos >= m_text.size(); }
    char peek(qsizetype ahead = 0) const
    {
        return m_pos + ahead < m_text.size() ? m_text[m_pos + ahead] : '\0';
    }

    void skipSpace()
    {
        while (!atEnd() && !failed()) {
            const char c = m_text[m_pos];
            if (c == '/' && peek(1) == '/') {
                m_pos += 2;
                while (!atEnd()) {
                    int length;
                    const char32_t code = peekCode(m_pos, &length);
                    if (isLineTerminator(code))
                        break;
                    m_pos += length;
                }
                continue;
            }
            if (c == '/' && peek(1) == '*') {
                const qsizetype start = m_pos;
                const qsizetype end = m_text.sliced(m_pos + 2).indexOf(QByteArrayView("*/"));
                if (end < 0) {
                    failAt(start, QStringLiteral("comment not closed"));
                    return;
                }
                m_pos += 2 + end + 2;
                continue;
            }
            int length;
            const char32_t code = peekCode(m_pos, &length);
            if (!isSpace(code))
                return;
            m_pos += length;
        }
    }

    QJsonValue parseValue(int depth)
    {
        if (atEnd()) {
            fail(QStringLiteral("unexpected end of text"));
            return {};
        }
        const char c = m_text[m_pos];
        switch (c) {
        case '{':
            return parseObject(depth + 1);
        case '[':
            return parseArray(depth + 1);
        case '"':
        case '\'':
            return parseString();
        default:
            break;
        }
        if (c == '-' || c == '+' || c == '.' || (c >= '0' && c <= '9') || c == 'I' || c == 'N')
            return parseNumber();
        if (matchWord("null"))
            return QJsonValue(QJsonValue::Null);
        if (matchWord("true"))
            return true;
        if (matchWord("false"))
            return false;
        fail(QStringLiteral("expected a value"));
        return {};
    }

    // A literal word not followed by more of an identifier.
    bool matchWord(QByteArrayView word)
    {
        if (!m_text.sliced(m_pos).startsWith(word))
            return false;
        const qsizetype after = m_pos + word.size();
        if (after < m_text.size()) {
            int length;
            if (isIdentifierPart(peekCode(after, &length)))
                return false;
        }
        m_pos = after;
        return true;
    }

    bool enter(int depth)
    {
        if (depth > m_limits.maxDepth) {
            fail(QStringLiteral("nested deeper than %1 levels").arg(m_limits.maxDepth));
            return false;
        }
        return true;
    }

    QJsonValue parseObject(int depth)
    {
        if (!enter(depth))
            return {};
        ++m_pos; // {
        QJsonObject object;
        skipSpace();
        while (!failed()) {
            if (peek() == '}' && !atEnd()) {
                ++m_pos;
                return object;
            }
            const QString key = parseKey();
            if (failed())
                break;
            skipSpace();
            if (peek() != ':' || atEnd()) {
                fail(QStringLiteral("expected ':' after the key"));
                break;
            }
            ++m_pos;
            skipSpace();
            const QJsonValue value = parseValue(depth);
            if (failed())
                break;
            object.insert(key, value);
            skipSpace();
            if (peek() == ',' && !atEnd()) {
                ++m_pos;
                skipSpace();
                continue;
            }
            if (peek() == '}' && !atEnd())
                continue;
            fail(atEnd() ? QStringLiteral("object not closed")
                         : QStringLiteral("expected ',' or '}'"));
        }
        return {};
    }

    QJsonValue parseArray(int depth)
    {
        if (!enter(depth))
            return {};
        ++m_pos; // [
        QJsonArray array;
        skipSpace();
        while (!failed()) {
            if (peek() == ']' && !atEnd()) {
                ++m_pos;
                return array;
            }
            const QJsonValue value = parseValue(depth);
            if (failed())
                break;
            array.append(value);
            skipSpace();
            if (peek() == ',' && !atEnd()) {
                ++m_pos;
                skipSpace();
                continue;
            }
            if (peek() == ']' && !atEnd())
                continue;
            fail(atEnd() ? QStringLiteral("array not closed")
                         : QStringLiteral("expected ',' or ']'"));
        }
        return {};
    }

    QString parseKey()
    {
        if (atEnd()) {
            fail(QStringLiteral("object not closed"));
            return {};
        }
        const char c = m_text[m_pos];
        if (c == '"' || c == '\'')
            return parseString().toString();
        QString key;
        bool first = true;
        while (!atEnd()) {
            char32_t code;
            const qsizetype start = m_pos;
            if (peek() == '\\') {
                if (peek(1) != 'u') {
                    fail(QStringLiteral("expected \\u in a key"));
                    return {};
                }
                m_pos += 2;
                code = hexDigits(4);
                if (failed())
                    return {};
            } else {
                int length;
                code = peekCode(m_pos, &length);
                if (code == kInvalid) {
                    fail(QStringLiteral("invalid UTF-8"));
                    return {};
                }
                if (!(first ? isIdentifierStart(code) : isIdentifierPart(code)))
                    break;
                m_pos += length;
            }
            if (!(first ? isIdentifierStart(code) : isIdentifierPart(code))) {
                failAt(start, QStringLiteral("a key cannot hold that character"));
                return {};
            }
            key += QString::fromUcs4(&code, 1);
            first = false;
        }
        if (first)
            fail(QStringLiteral("expected a key"));
        return key;
    }

    // count hexadecimal digits at the current position, as a number.
    char32_t hexDigits(int count)
    {
        char32_t value = 0;
        for (int i = 0; i < count; ++i) {
            const char c = peek();
            int digit = -1; // past the end, or not a digit
            if (!atEnd()) {
                if (c >= '0' && c <= '9')
                    digit = c - '0';
                else if (c >= 'a' && c <= 'f')
                    digit = c - 'a' + 10;
                else if (c >= 'A' && c <= 'F')
                    digit = c - 'A' + 10;
            }
            if (digit < 0) {
                fail(QStringLiteral("expected a hexadecimal digit"));
                return 0;
            }
            value = value * 16 + char32_t(digit);
            ++m_pos;
        }
        return value;
    }

    QJsonValue parseString()
    {
        const char quote = m_text[m_pos];
        const qsizetype start = m_pos;
        ++m_pos;
        QString result;
        qsizetype run = m_pos; // start of the bytes not yet added
        auto flush = [&]() {
            if (m_pos > run)
                result += QString::fromUtf8(m_text.sliced(run, m_pos - run));
        };
        while (true) {
            if (atEnd()) {
                failAt(start, QStringLiteral("string not closed"));
                return {};
            }
            const char c = m_text[m_pos];
            if (c == quote) {
                flush();
                ++m_pos;
                return result;
            }
            if (c == '\n' || c == '\r') {
                fail(QStringLiteral("line break inside a string"));
                return {};
            }
            if (c == '\\') {
                flush();
                ++m_pos;
                escape(result);
                if (failed())
                    return {};
                run = m_pos;
                continue;
            }
            int length;
            if (peekCode(m_pos, &length) == kInvalid) {
                fail(QStringLiteral("invalid UTF-8"));
                return {};
            }
            m_pos += length;
        }
    }

    void escape(QString &out)
    {
        if (atEnd()) {
            fail(QStringLiteral("string not closed"));
            return;
        }
        const char c = m_text[m_pos];
        switch (c) {
        case 'b':
            out += QChar(0x08);
            break;
        case 'f':
            out += QChar(0x0C);
            break;
        case 'n':
            out += QChar('\n');
            break;
        case 'r':
            out += QChar('\r');
            break;
        case 't':
            out += QChar('\t');
            break;
        case 'v':
            out += QChar(0x0B);
            break;
        case '0':
            if (peek(1) >= '0' && peek(1) <= '9') {
                fail(QStringLiteral("octal escapes are not allowed"));
                return;
            }
            out += QChar(0);
            break;
        case 'x': {
            ++m_pos;
            out += QChar(char16_t(hexDigits(2)));
            return;
        }
        case 'u': {
            ++m_pos;
            // A surrogate pair arrives as two escapes; QString keeps the UTF-16 units as they are.
            out += QChar(char16_t(hexDigits(4)));
            return;
        }
        case '\r':
            ++m_pos;
            if (peek() == '\n' && !atEnd())
                ++m_pos;
            return; // a line continuation adds nothing
        case '\n':
            break;
        default: {
            if (c >= '1' && c <= '9') {
                fail(QStringLiteral("digits cannot be escaped"));
                return;
            }
            int length;
            const char32_t code = peekCode(m_pos, &length);
            if (code == kInvalid) {
                fail(QStringLiteral("invalid UTF-8"));
                return;
            }
            if (code != 0x2028 && code != 0x2029)
                out += QString::fromUcs4(&code, 1);
            m_pos += length;
            return;
        }
        }
        ++m_pos;
    }

    QJsonValue parseNumber()
    {
        const qsizetype start = m_pos;
        double sign = 1;
        if (peek() == '+' || peek() == '-') {
            sign = peek() == '-' ? -1 : 1;
            ++m_pos;
        }
        QJsonValue value;
        if (matchWord("Infinity")) {
            value = sign * std::numeric_limits<double>::infinity();
        } else if (matchWord("NaN")) {
            value = std::numeric_limits<double>::quiet_NaN();
        } else if (peek() == '0' && (peek(1) == 'x' || peek(1) == 'X')) {
            m_pos += 2;
            double number = 0;
            int digits = 0;
            while (!atEnd() && std::isxdigit(static_cast<unsigned char>(peek()))) {
                const char c = peek();
                const int digit = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
                number = number * 16 + digit;
                ++digits;
                ++m_pos;
            }
            if (digits == 0) {
                fail(QStringLiteral("expected a hexadecimal digit"));
                return {};
            }
            value = integral(sign * number);
        } else {
            value = decimal(start, sign);
            if (failed())
                return {};
        }
        if (!atEnd()) {
            int length;
            const char32_t next = peekCode(m_pos, &length);
            if (isIdentifierPart(next) || next == '.') {
                fail(QStringLiteral("malformed number"));
                return {};
            }
        }
        return value;
    }

    QJsonValue decimal(qsizetype start, double sign)
    {
        const qsizetype digitsStart = m_pos;
        auto digits = [&]() {
            qsizetype count = 0;
            while (!atEnd() && peek() >= '0' && peek() <= '9') {
                ++m_pos;
                ++count;
            }
            return count;
        };
        const bool leadingZero = peek() == '0';
        const qsizetype whole = digits();
        if (leadingZero && whole > 1) {
            failAt(digitsStart, QStringLiteral("a number cannot start with 0"));
            return {};
        }
        bool fraction = false;
        qsizetype fractionDigits = 0;
        if (peek() == '.' && !atEnd()) {
            fraction = true;
            ++m_pos;
            fractionDigits = digits();
        }
        if (whole == 0 && fractionDigits == 0) {
            failAt(start, QStringLiteral("malformed number"));
            return {};
        }
        bool exponent = false;
        if ((peek() == 'e' || peek() == 'E') && !atEnd()) {
            exponent = true;
            ++m_pos;
            if (peek() == '+' || peek() == '-')
                ++m_pos;
            if (digits() == 0) {
                fail(QStringLiteral("expected the exponent's digits"));
                return {};
            }
        }
        QByteArray literal = m_text.sliced(digitsStart, m_pos - digitsStart).toByteArray();
        if (literal.startsWith('.'))
            literal.prepend('0');
        if (literal.contains(".e") || literal.contains(".E") || literal.endsWith('.'))
            literal.replace(".", ".0");
        bool ok = false;
        const double number = literal.toDouble(&ok);
        if (!ok && !std::isinf(number)) {
            failAt(start, QStringLiteral("malformed number"));
            return {};
        }
        if (!fraction && !exponent)
            return integral(sign * number);
        return sign * number;
    }

    // Whole numbers that fit stay integers, so 2147483647 reads back as one.
    static QJsonValue integral(double number)
    {
        if (std::abs(number) < 9007199254740992.0 && number == std::trunc(number)
            && !(number == 0 && std::signbit(number)))
            return QJsonValue(qint64(number));
        return number;
    }

    void locate(qsizetype pos, int *line, int *column) const
    {
        *line = 1;
        *column = 1;
        qsizetype i = 0;
        while (i < pos && i < m_text.size()) {
            int length;
            const char32_t code = peekCode(i, &length);
            if (code == '\r' && i + 1 < m_text.size() && m_text[i + 1] == '\n' && i + 1 < pos) {
                i += 2;
                ++*line;
                *column = 1;
                continue;
            }
            if (isLineTerminator(code)) {
                ++*line;
                *column = 1;
            } else {
                ++*column;
            }
            i += length;
        }
    }
};

} // namespace

QString Json5::Error::toString() const
{
    if (!isError())
        return {};
    return QStringLiteral("line %1, column %2: %3").arg(line).arg(column).arg(message);
}

QJsonValue Json5::parse(QByteArrayView utf8, Error *error, const Limits &limits)
{
    if (utf8.size() > limits.maxBytes) {
        if (error) {
            *error = {};
            error->message = QStringLiteral("larger than %1 bytes").arg(limits.maxBytes);
            error->line = error->column = 1;
        }
        return QJsonValue(QJsonValue::Undefined);
    }
    Reader reader(utf8, limits);
    QJsonValue value = reader.document();
    if (error)
        *error = reader.error();
    return value;
}

QJsonDocument Json5::parseDocument(QByteArrayView utf8, Error *error, const Limits &limits)
{
    Error local;
    const QJsonValue value = parse(utf8, &local, limits);
    if (!local.isError() && !value.isObject() && !value.isArray()) {
        local.message = QStringLiteral("expected an object or an array");
        local.line = local.column = 1;
    }
    if (error)
        *error = local;
    if (local.isError())
        return {};
    return value.isObject() ? QJsonDocument(value.toObject()) : QJsonDocument(value.toArray());
}

} // namespace korvane
