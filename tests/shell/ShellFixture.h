#pragma once

#include "support/ContextTest.h"

#include <QCoreApplication>
#include <memory>

namespace korvane {

// The network fetch and Qt's event loops need an application object; test_shell brings its main()
// from gtest_main, so the object is made by a global environment registered at load time.
class ShellEnvironment : public ::testing::Environment {
    void SetUp() override { m_app = std::make_unique<QCoreApplication>(m_argc, m_argv); }
    void TearDown() override { m_app.reset(); }

    int m_argc = 1;
    char m_name[11] = "test_shell";
    char *m_argv[2] = {m_name, nullptr};
    std::unique_ptr<QCoreApplication> m_app;
};
inline ::testing::Environment *const g_shellEnvironment =
    ::testing::AddGlobalTestEnvironment(new ShellEnvironment);

// The controllers on fresh roots.
using ShellTest = ContextTest;

} // namespace korvane
