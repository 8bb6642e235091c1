// The network fetch and Qt's event loops need an application object; test_shell brings its main()
// from gtest_main, so the object is made by a global environment registered at load time.

#include <QCoreApplication>
#include <gtest/gtest.h>
#include <memory>

namespace {

class ShellEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        if (!QCoreApplication::instance())
            m_app = std::make_unique<QCoreApplication>(m_argc, m_argv);
    }
    void TearDown() override { m_app.reset(); }

private:
    int m_argc = 1;
    char m_name[11] = "test_shell";
    char *m_argv[2] = {m_name, nullptr};
    std::unique_ptr<QCoreApplication> m_app;
};

[[maybe_unused]] ::testing::Environment *const g_environment =
    ::testing::AddGlobalTestEnvironment(new ShellEnvironment);

} // namespace
