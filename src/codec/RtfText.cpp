#include "codec/RtfText.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace korvane {

namespace {

// Deeper groups still show their text but their formatting is ignored, so however deep a file
// nests, the reader keeps no more than this many saved states.
constexpr int maxTrackedDepth = 64;
constexpr int defaultHalfPoints = 24;
constexpr qsizetype maxWordLength = 32;
constexpr int maxParameter = 1'000'000'000;

struct Format {
    bool bold = false;
    bool italic = false;
    int halfPoints = defaultHalfPoints;
    bool operator==(const Format &) const = default;
};

struct GroupState {
    Format format;
    int unicodeSkip = 1; // fallback characters after each \u
};

// Windows-1252 at 0x80-0x9F; 0 marks the five unassigned bytes.
constexpr char16_t windows1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// Destinations whose content is not text to show.
constexpr const char *skippedDestinations[] = {
    "fonttbl",  "colortbl",  "stylesheet",  "info",      "pict",    "object",
    "header",   "headerl",   "headerr",     "headerf",   "footer",  "footerl",
    "footerr",  "footerf",   "footnote",    "listtable", "rsidtbl", "listoverridetable",
    "revtbl",   "filetbl",   "generator",   "themedata", "fldinst", "colorschememapping",
    "xmlnstbl", "datastore", "latentstyles"};

struct NamedCharacter {
    const char *word;
    char16_t character;
};
constexpr NamedCharacter namedCharacters[] = {
    {"tab", u'\t'},      {"emdash", 0x2014},    {"endash", 0x2013},    {"lquote", 0x2018},
    {"rquote", 0x2019},  {"ldblquote", 0x201C}, {"rdblquote", 0x201D}, {"bullet", 0x2022},
    {"emspace", 0x2003}, {"enspace", 0x2002}};

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Collects paragraphs; each run of equally formatted text is opened and closed in full, so the
// tags nest properly whatever order the RTF changed its formatting in.
class HtmlWriter {
public:
    void text(char16_t unit, const Format &format)
    {
        if (QChar::isHighSurrogate(unit)) {
            flushHighSurrogate(format);
            m_highSurrogate = unit;
            return;
        }
        if (QChar::isLowSurrogate(unit)) {
            if (m_highSurrogate) {
                put(QChar::surrogateToUcs4(m_highSurrogate, unit), format);
                m_highSurrogate = 0;
            } else {
                put(QChar::ReplacementCharacter, format);
            }
            return;
        }
        flushHighSurrogate(format);
        put(unit, format);
    }

    void lineBreak()
    {
        m_paragraph += QLatin1String("<br>");
        m_visible = true;
        m_lastWasSpace = false;
    }

    void endParagraph()
    {
        flushHighSurrogate(m_open.value_or(Format{}));
        closeFormat();
        // Blank RTF lines only space paragraphs apart, which HTML paragraphs do by themselves.
        if (m_visible)
            m_html += QLatin1String("<p>") + m_paragraph + QLatin1String("</p>");
        m_paragraph.clear();
        m_visible = false;
        m_lastWasSpace = false;
    }

    QString finish()
    {
        endParagraph();
        return m_html;
    }

private:
    void flushHighSurrogate(const Format &format)
    {
        if (m_highSurrogate) {
            m_highSurrogate = 0;
            put(QChar::ReplacementCharacter, format);
        }
    }

    void put(char32_t c, const Format &format)
    {
        if (c == u'\t')
            c = 0x2003;
        if (c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xFFFE || c == 0xFFFF)
            return;
        switchFormat(format);
        switch (c) {
        case '&':
            m_paragraph += QLatin1String("&amp;");
            break;
        case '<':
            m_paragraph += QLatin1String("&lt;");
            break;
        case '>':
            m_paragraph += QLatin1String("&gt;");
            break;
        case '"':
            m_paragraph += QLatin1String("&quot;");
            break;
        case ' ':
            // RTF keeps every space; HTML would fold a run of them into one.
            m_paragraph += m_lastWasSpace ? QLatin1String("&nbsp;") : QLatin1String(" ");
            break;
        default:
            m_paragraph += QString::fromUcs4(&c, 1);
        }
        m_lastWasSpace = c == ' ';
        m_visible = m_visible || c != ' ';
    }

    void switchFormat(const Format &format)
    {
        if (m_open == format)
            return;
        closeFormat();
        if (format.bold)
            m_paragraph += QLatin1String("<b>");
        if (format.italic)
            m_paragraph += QLatin1String("<i>");
        if (format.halfPoints != defaultHalfPoints)
            m_paragraph +=
                QStringLiteral("<span style=\"font-size:%1pt\">").arg(format.halfPoints / 2.0);
        m_open = format;
    }

    void closeFormat()
    {
        if (!m_open)
            return;
        if (m_open->halfPoints != defaultHalfPoints)
            m_paragraph += QLatin1String("</span>");
        if (m_open->italic)
            m_paragraph += QLatin1String("</i>");
        if (m_open->bold)
            m_paragraph += QLatin1String("</b>");
        m_open.reset();
    }

    QString m_html;
    QString m_paragraph;
    std::optional<Format> m_open;
    char16_t m_highSurrogate = 0;
    bool m_visible = false;
    bool m_lastWasSpace = false;
};

// One pass over the bytes with an explicit group stack: no recursion, every index checked.
class RtfReader {
public:
    explicit RtfReader(QByteArrayView in) : m_in(in) {}

    QString read()
    {
        while (m_pos < m_in.size()) {
            const char c = m_in[m_pos++];
            switch (c) {
            case '{':
                openGroup();
                break;
            case '}':
                closeGroup();
                if (m_depth == 0) // the document's own group closed; what follows is not RTF
                    return m_out.finish();
                break;
            case '\\':
                controlSequence();
                break;
            case '\r':
            case '\n':
                break;
            default:
                if (m_pendingSkip > 0)
                    --m_pendingSkip;
                else
                    character(decode(static_cast<uchar>(c)));
            }
        }
        return m_out.finish();
    }

private:
    bool skipping() const { return m_skipFrom != 0 && m_depth >= m_skipFrom; }
    bool formattable() const { return m_depth <= maxTrackedDepth; }

    void openGroup()
    {
        if (m_depth < maxTrackedDepth)
            m_stack.push_back(m_state);
        ++m_depth;
        m_pendingSkip = 0;
    }

    void closeGroup()
    {
        --m_depth;
        if (m_depth < maxTrackedDepth) {
            m_state = m_stack.back();
            m_stack.pop_back();
        }
        if (m_depth < m_skipFrom)
            m_skipFrom = 0;
        m_pendingSkip = 0;
    }

    void skipDestination()
    {
        if (m_skipFrom == 0)
            m_skipFrom = m_depth;
    }

    char16_t decode(uchar byte) const
    {
        if (byte < 0x80)
            return byte;
        if (!m_windows1252)
            return QChar::ReplacementCharacter;
        if (byte < 0xA0)
            return windows1252High[byte - 0x80];
        return byte;
    }

    void character(char16_t unit)
    {
        if (!skipping())
            m_out.text(unit, m_state.format);
    }

    void controlSequence()
    {
        if (m_pos >= m_in.size())
            return;
        if (isLetter(m_in[m_pos])) {
            controlWord();
            return;
        }
        const char symbol = m_in[m_pos++];
        if (symbol == '\'') {
            int value = 0;
            for (int i = 0; i < 2; ++i) {
                const int digit = m_pos < m_in.size() ? hexValue(m_in[m_pos]) : -1;
                if (digit < 0)
                    return; // a cut-off escape shows nothing
                value = value * 16 + digit;
                ++m_pos;
            }
            if (m_pendingSkip > 0)
                --m_pendingSkip;
            else
                character(decode(static_cast<uchar>(value)));
            return;
        }
        if (m_pendingSkip > 0) {
            --m_pendingSkip;
            return;
        }
        switch (symbol) {
        case '\\':
        case '{':
        case '}':
            character(static_cast<uchar>(symbol));
            break;
        case '~':
            character(0x00A0);
            break;
        case '_':
            character(0x2011);
            break;
        case '*':
            skipDestination();
            break;
        case '\r':
        case '\n':
            if (!skipping())
                m_out.endParagraph();
            break;
        default: // \- (optional hyphen), \| and the like show nothing
            break;
        }
    }

    void controlWord()
    {
        const qsizetype start = m_pos;
        while (m_pos < m_in.size() && isLetter(m_in[m_pos]))
            ++m_pos;
        const QByteArrayView word = m_in.sliced(start, std::min(m_pos - start, maxWordLength));

        bool negative = false;
        if (m_pos + 1 < m_in.size() && m_in[m_pos] == '-' && isDigit(m_in[m_pos + 1])) {
            negative = true;
            ++m_pos;
        }
        bool hasParameter = false;
        qint64 parameter = 0;
        while (m_pos < m_in.size() && isDigit(m_in[m_pos])) {
            hasParameter = true;
            parameter = std::min<qint64>(parameter * 10 + (m_in[m_pos] - '0'), maxParameter);
            ++m_pos;
        }
        if (negative)
            parameter = -parameter;
        if (m_pos < m_in.size() && m_in[m_pos] == ' ')
            ++m_pos;

        if (word == "bin") {
            // Raw bytes follow; they may hold braces and backslashes that mean nothing.
            if (parameter > 0)
                m_pos += std::min<qint64>(parameter, m_in.size() - m_pos);
            return;
        }
        if (m_pendingSkip > 0) {
            --m_pendingSkip;
            return;
        }
        apply(word, hasParameter, static_cast<int>(parameter));
    }

    void apply(QByteArrayView word, bool hasParameter, int parameter)
    {
        const bool on = !hasParameter || parameter != 0;
        if (word == "u") {
            if (hasParameter) {
                const int unit = parameter < 0 ? parameter + 0x10000 : parameter;
                if (unit >= 0 && unit <= 0xFFFF)
                    character(static_cast<char16_t>(unit));
                m_pendingSkip = m_state.unicodeSkip;
            }
        } else if (word == "par") {
            if (!skipping())
                m_out.endParagraph();
        } else if (word == "line") {
            if (!skipping())
                m_out.lineBreak();
        } else if (word == "ansicpg") {
            m_windows1252 = parameter == 1252;
        } else if (word == "uc") {
            if (formattable() && hasParameter)
                m_state.unicodeSkip = std::clamp(parameter, 0, 8);
        } else if (word == "b") {
            if (formattable())
                m_state.format.bold = on;
        } else if (word == "i") {
            if (formattable())
                m_state.format.italic = on;
        } else if (word == "fs") {
            if (formattable() && parameter > 0 && parameter <= 1638)
                m_state.format.halfPoints = parameter;
        } else if (word == "plain") {
            if (formattable())
                m_state.format = Format{};
        } else if (std::find(std::begin(skippedDestinations), std::end(skippedDestinations), word)
                   != std::end(skippedDestinations)) {
            skipDestination();
        } else {
            for (const NamedCharacter &named : namedCharacters) {
                if (word == named.word) {
                    character(named.character);
                    break;
                }
            }
        }
    }

    QByteArrayView m_in;
    qsizetype m_pos = 0;
    int m_depth = 0;
    int m_skipFrom = 0; // groups this deep and deeper are skipped; 0: none
    int m_pendingSkip = 0;
    bool m_windows1252 = true;
    GroupState m_state;
    std::vector<GroupState> m_stack; // the enclosing groups' states, at most maxTrackedDepth
    HtmlWriter m_out;
};

} // namespace

QString RtfText::toHtml(QByteArrayView rtf)
{
    rtf = rtf.first(std::min(rtf.size(), maxInputSize));
    if (!rtf.startsWith("{\\rtf"))
        return {};
    return RtfReader(rtf).read();
}

} // namespace korvane
