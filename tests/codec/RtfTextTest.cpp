#include "codec/RtfText.h"

#include "support/TestRoots.h"

namespace korvane {
namespace {

TEST(RtfTextTest, ConvertsTheSubsetAndSurvivesMalformedBytes)
{
    const QByteArray deep(10000, '{');
    const QByteArray shut(10000, '}');
    const QList<std::pair<QByteArray, QString>> cases{
        // Formatting lives in groups; blank lines between paragraphs vanish.
        {R"({\rtf1 a{\b b\b0 c}{\i\fs13 d}{\b x\plain y}\line z\par\par\par f})",
         R"(<p>a<b>b</b>c<i><span style="font-size:6.5pt">d</span></i><b>x</b>y<br>z</p><p>f</p>)"},
        {R"({\rtf1 <b onclick="x">&amp;</b>})",
         "<p>&lt;b onclick=&quot;x&quot;&gt;&amp;amp;&lt;/b&gt;</p>"},
        {R"({\rtf1\ansi\ansicpg1252 caf\'e9 \'80\'3c\{\}\\ \~x  y\tab z})",
         "<p>café €&lt;{}\\ \u00a0x &nbsp;y\u2003z</p>"},
        {R"({\rtf1\ansicpg1250 \'e9})", "<p>\ufffd</p>"},
        {R"({\rtf1{\fonttbl{\f0\fswiss Helvetica;}}{\colortbl;\red0;}{\*\x {y}z}\f0 Hi})",
         "<p>Hi</p>"},
        // \u with its fallback characters, surrogate pairs, lone halves.
        {R"({\rtf1 \u8364?\uc2\u8212--\uc0\u-10179\u-8704 \u-10179 x})",
         "<p>€—\U0001F600\ufffdx</p>"},
        {R"({\rtf1 \u233\'e9!\uc3 {\u233}ab})", "<p>é!éab</p>"},
        // Cut off, out of range, unbalanced.
        {R"({\rtf1 a\'4)", "<p>a</p>"},
        {R"({\rtf1 a\')", "<p>a</p>"},
        {R"({\rtf1 a\'zz})", "<p>azz</p>"},
        {R"({\rtf1 a\)", "<p>a</p>"},
        {R"({\rtf1 a\u)", "<p>a</p>"},
        {R"({\rtf1 a\u8364)", "<p>a€</p>"},
        {R"({\rtf1 a\u99999999999999999 b})", "<p>a</p>"},
        {R"({\rtf1 \fs-5\fs99999 a\bin3 {\}b\bin99999 c})", "<p>ab</p>"},
        {R"({\rtf1 a}<b>x</b>)", "<p>a</p>"},
        {"{\\rtf1 " + deep + "\\b deep" + shut + " tail}", "<p>deep tail</p>"},
        {"{\\rtf1 {\\b " + deep.left(100) + "x" + shut.left(100) + "y}z}", "<p><b>xy</b>z</p>"},
        {"{\\rtf1 " + deep + "x", "<p>x</p>"},
        {"{\\rtf1 " + QByteArray(RtfText::maxInputSize, 'x') + "TAIL}", // read up to the limit
         "<p>" + QString(RtfText::maxInputSize - 7, 'x') + "</p>"},
        {"<p>not rtf</p>", ""},
        {"", ""},
    };
    for (const auto &[rtf, html] : cases)
        EXPECT_EQ(RtfText::toHtml(rtf), html) << rtf.left(80).toStdString();
}

} // namespace
} // namespace korvane
