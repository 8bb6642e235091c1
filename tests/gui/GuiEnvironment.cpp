// test_gui takes its main() from gtest_main, so the application object the windows need is made
// by a global environment registered at load time, on Qt's offscreen platform.

#include <QApplication>
#include <gtest/gtest.h>
#include <memory>

namespace {

class GuiEnvironment : public ::testing::Environment {
    void SetUp() override
    {
        static int argc = 1;
        static char name[] = "test_gui";
        static char *argv[] = {name, nullptr};
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_app = std::make_unique<QApplication>(argc, argv);
    }
    void TearDown() override { m_app.reset(); }
    std::unique_ptr<QApplication> m_app;
};

[[maybe_unused]] ::testing::Environment *const g_environment =
    ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

} // namespace
