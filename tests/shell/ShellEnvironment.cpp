// The network fetch and Qt's event loops need an application object; test_shell brings its main()
// from gtest_main, so the object is made by a global environment registered at load time.

#include <QCoreApplication>
#include <gtest/gtest.h>
#include <memory>

namespace {

int g_argc = 1;
char g_name[] = "test_shell";
char *g_argv[] = {g_name, nullptr};

class ShellEnvironment : public ::testing::Environment {
public:
    void SetUp() override { m_app = std::make_unique<QCoreApplication>(g_argc, g_argv); }
    void TearDown() override { m_app.reset(); }

private:
    std::unique_ptr<QCoreApplication> m_app;
};

[[maybe_unused]] ::testing::Environment *const g_environment =
    ::testing::AddGlobalTestEnvironment(new ShellEnvironment);

} // namespace
