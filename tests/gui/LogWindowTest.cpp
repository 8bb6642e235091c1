#include "GuiFixture.h"

#include "gui/windows/LogWindow.h"

#include <QPlainTextEdit>
#include <QSignalSpy>

namespace korvane {
namespace {

class LogWindowTest : public GuiTest {};

TEST_F(LogWindowTest, ShowLogIsDisabledExactlyWhileTheWindowIsOnScreen)
{
    makeContext();
    MyMainObj *main = context->main();
    main->addLogEntry(nullptr, "a\n");
    LogWindow window(*main);
    QSignalSpy enabled(&window, &LogWindow::showLogEnabledChanged);
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(window.isShowLogEnabled());

    main->showLog();
    EXPECT_TRUE(window.isVisible());
    EXPECT_FALSE(main->validateMenuItem(MyMainObj::MenuItem::ShowLog));
    main->addLogEntry(nullptr, "b\n");
    EXPECT_EQ(window.text()->toPlainText(), "a\nb\n");
    EXPECT_TRUE(window.text()->isReadOnly());

    window.close(); // the close box
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(main->validateMenuItem(MyMainObj::MenuItem::ShowLog));
    main->showLog();
    main->hideLog(); // the Hide Log item
    EXPECT_FALSE(window.isVisible());
    ASSERT_EQ(enabled.size(), 4);
    EXPECT_EQ(enabled.at(0).at(0), false);
    EXPECT_EQ(enabled.at(1).at(0), true);
    EXPECT_EQ(enabled.at(2).at(0), false);
    EXPECT_EQ(enabled.at(3).at(0), true);
}

} // namespace
} // namespace korvane
