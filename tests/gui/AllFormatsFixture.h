#pragma once

#include "GuiFixture.h"
#include "LinuxPluginFixtures.h"
#include "app/Preferences.h"
#include "core/LinuxFormats.h"
#include "gui/main/MainWindow.h"

#include <QCoreApplication>
#include <QDir>

namespace korvane {

// The window over the first four formats and Linux's LV2 and VST 3, holding one product in three
// formats ("Echo Chamber": a VST bundle with no vendor, an LV2 bundle and a VST 3 module of
// Korvane Tests), one in LV2 only, and an LV2 bundle of two plug-ins.
class AllFormatsTest : public GuiTest {
protected:
    static constexpr int TypeLV2 = 4;
    static constexpr int TypeVST3 = 5;

    void SetUp() override
    {
        GuiTest::SetUp();
        PluginLibraryBuilder::makeVST(folder(TypeVST, LocUserActive), "Echo Chamber",
                                      MachO::intel());
        writeLv2(homePath(".lv2/echo.lv2"), {{"urn:korvane:echo", "Echo Chamber"}},
                 "Korvane Tests");
        writeLv2(homePath(".lv2/solo.lv2"), {{"urn:korvane:solo", "Solo Synth"}}, "Elsewhere");
        writeLv2(homePath(".lv2/duo.lv2"),
                 {{"urn:korvane:duo:a", "<b>Duo</b> A"}, {"urn:korvane:duo:b", "Duo B"}},
                 "Korvane Tests");
        writeVst3(homePath(".vst3"), "Echo Chamber", "Korvane Tests");
    }
    void TearDown() override
    {
        window.reset();
        GuiTest::TearDown();
    }

    static FormatTable allFormats()
    {
        const QList<Format> rows = linuxFormats();
        return firstFour().with(rows.at(0)).with(rows.at(1));
    }

    void openWindow()
    {
        makeContext(allFormats());
        context->pref()->setDefaultType(TypeVST);
        context->prepareWindow();
        window = std::make_unique<MainWindow>(*context);
        window->show();
        window->startWhenRunning();
        QCoreApplication::processEvents();
    }

    // An LV2 bundle as hosts read it: a manifest naming each plug-in and a file describing it.
    static void writeLv2(const QString &bundle, const QList<QPair<QString, QString>> &plugins,
                         const QString &vendor)
    {
        const QByteArray prefixes = "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                                    "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
                                    "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
                                    "@prefix foaf: <http://xmlns.com/foaf/0.1/> .\n";
        QByteArray manifest = prefixes;
        QByteArray described = prefixes;
        for (const auto &[uri, name] : plugins) {
            manifest += "<" + uri.toUtf8()
                        + "> a lv2:Plugin ; lv2:binary <plugin.so> ; rdfs:seeAlso <plugin.ttl> .\n";
            described += "<" + uri.toUtf8() + "> doap:name \"" + name.toUtf8()
                         + "\" ; lv2:minorVersion 4 ; lv2:microVersion 2 ; doap:maintainer [ "
                           "foaf:name \""
                         + vendor.toUtf8() + "\" ] .\n";
        }
        QDir().mkpath(bundle);
        writeText(bundle + "/manifest.ttl", manifest);
        writeText(bundle + "/plugin.ttl", described);
    }

    // A VST 3 module: its architecture folder and the moduleinfo.json the SDK writes.
    static void writeVst3(const QString &folder, const QString &name, const QString &vendor)
    {
        const QString bundle = folder + "/" + name + ".vst3";
        QDir().mkpath(bundle + "/Contents/x86_64-linux");
        writeText(bundle + "/Contents/x86_64-linux/" + name + ".so", "not loaded");
        writeText(bundle + "/Contents/Resources/moduleinfo.json",
                  LinuxPluginFixtures::moduleInfo(
                      name, vendor, LinuxPluginFixtures::vst2Cid("EchV", name.toUtf8()), "Echo"));
    }

    std::unique_ptr<MainWindow> window;
};

} // namespace korvane
