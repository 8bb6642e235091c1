// The version where a person looks for it: the about panel and korvane --version, and the about
// text found beside the program as built.

#include "GuiFixture.h"

#include "app/AboutText.h"
#include "gui/windows/AboutPanel.h"

#include <QFileInfo>
#include <QLabel>
#include <QProcess>
#include <QTextBrowser>

namespace korvane {
namespace {

TEST(AboutPanelTest, TheVersionShowsInThePanelAndOnTheCommandLine)
{
    AboutText about;
    AboutPanel panel(about);
    const QLabel *version = panel.findChild<QLabel *>("stVersion");
    ASSERT_TRUE(version);
    EXPECT_EQ(version->text(), "Korvane " KORVANE_VERSION);

    QProcess program;
    program.start(KORVANE_GUI, {"--version"});
    ASSERT_TRUE(program.waitForFinished(10000));
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(program.readAllStandardOutput(), "korvane " KORVANE_VERSION "\n");

    // A run from the build tree finds the about text beside the program.
    AboutText besideProgram(QFileInfo(KORVANE_GUI).path());
    besideProgram.open();
    EXPECT_TRUE(besideProgram.html().contains("Korvane"));
}

} // namespace
} // namespace korvane
