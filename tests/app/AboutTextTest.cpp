#include "app/AboutText.h"

#include "support/TestRoots.h"

namespace korvane {
namespace {

TEST(AboutTextTest, ShippedAboutTextIsAHeadingAndThreeParagraphs)
{
    AboutText about(KORVANE_TEST_DATA "/../../resources");
    about.open();
    const QString out = about.html();
    EXPECT_TRUE(out.startsWith(R"(<p><b><span style="font-size:14pt">Korvane</span></b></p><p>)"))
        << out.toStdString();
    EXPECT_EQ(out.count("<p>"), 4);
    EXPECT_TRUE(out.contains("&quot; (Disabled)&quot;"));
    for (const char *residue : {"\\", "{", "}", "Helvetica"})
        EXPECT_FALSE(out.contains(residue)) << residue;
}

} // namespace
} // namespace korvane
