// The about text's RTF reader. Only its own tags may become markup, properly nested; every other
// character of the text arrives escaped.

#include "FuzzCheck.h"

#include "codec/RtfText.h"

#include <QList>
#include <QRegularExpression>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QRegularExpression tag(
        QStringLiteral(R"(<(/?)(p|b|i|br|span)( style="font-size:[0-9]+(\.5)?pt")?>)"));
    const QString html = korvane::RtfText::toHtml(
        QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));

    QList<QString> open;
    for (qsizetype i = 0; i < html.size(); ++i) {
        FUZZ_CHECK(html.at(i) != QLatin1Char('>'));
        if (html.at(i) != QLatin1Char('<'))
            continue;
        const QRegularExpressionMatch match =
            tag.match(html, i, QRegularExpression::NormalMatch,
                      QRegularExpression::AnchorAtOffsetMatchOption);
        FUZZ_CHECK(match.hasMatch());
        const QString name = match.captured(2);
        const bool closing = !match.captured(1).isEmpty();
        const bool styled = !match.captured(3).isEmpty();
        FUZZ_CHECK(styled == (name == QLatin1String("span") && !closing));
        if (closing) {
            FUZZ_CHECK(!open.isEmpty() && open.takeLast() == name);
        } else if (name != QLatin1String("br")) {
            open.append(name);
        }
        i += match.capturedLength() - 1;
    }
    FUZZ_CHECK(open.isEmpty());
    return 0;
}
