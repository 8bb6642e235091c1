// The windows need an application object and a screen; test_gui brings its main() from
// gtest_main, so both are made by a global environment registered at load time: Qt's offscreen
// platform, whatever display the shell has.

#include <QApplication>
#include <gtest/gtest.h>
#include <memory>

namespace {

int g_argc = 1;
char g_name[] = "test_gui";
char *g_argv[] = {g_name, nullptr};

class GuiEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_app = std::make_unique<QApplication>(g_argc, g_argv);
    }
    void TearDown() override { m_app.reset(); }

private:
    std::unique_ptr<QApplication> m_app;
};

[[maybe_unused]] ::testing::Environment *const g_environment =
    ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

} // namespace
