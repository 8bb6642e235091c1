#pragma once

#include "PluginLibraryBuilder.h"
#include "panels/MyPrefObj.h"
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
class ShellTest : public ContextTest {
protected:
    void setTypeOn(int type, bool on)
    {
        context->pref()->defaults()->setObject(context->formats().at(type).prefix + "On", on);
    }

    // One plug-in of the format in its system-wide active folder.
    QString placePlugin(int type, const QString &name) const
    {
        using B = PluginLibraryBuilder;
        using Make =
            QString (*)(const QString &, const QString &, const QByteArray &, B::PlistFormat);
        const Make make[] = {&B::makeAudioUnit, &B::makeRTAS, &B::makeMAS, &B::makeVST};
        return make[type](folder(type, LocSystemActive), name, MachO::intel(), B::Xml);
    }
};

} // namespace korvane
