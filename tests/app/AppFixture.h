#pragma once

#include "support/ContextTest.h"

#include <QCoreApplication>
#include <memory>

namespace korvane {

// The network fetch and Qt's event loops need an application object; test_app brings its main()
// from gtest_main, so the object is made by a global environment registered at load time.
class AppEnvironment : public ::testing::Environment {
    void SetUp() override { m_app = std::make_unique<QCoreApplication>(m_argc, m_argv); }
    void TearDown() override { m_app.reset(); }

    int m_argc = 1;
    char m_name[9] = "test_app";
    char *m_argv[2] = {m_name, nullptr};
    std::unique_ptr<QCoreApplication> m_app;
};
inline ::testing::Environment *const g_appEnvironment =
    ::testing::AddGlobalTestEnvironment(new AppEnvironment);

// The controllers on fresh roots.
using AppTest = ContextTest;

} // namespace korvane
