#pragma once

#include "PluginLibraryBuilder.h"
#include "panels/MyPrefObj.h"
#include "platform/Locations.h"
#include "shell/AppContext.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <memory>
#include <ostream>

// Readable failure messages for Qt strings.
inline void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace korvane {

// Fresh roots, a scripted interface and a context built on request over those roots.
class ShellTest : public TestRoots {
protected:
    void TearDown() override
    {
        context.reset();
        TestRoots::TearDown();
    }

    // The controllers as the program makes them, before its windows load.
    AppContext &makeContext()
    {
        context.reset();
        context = std::make_unique<AppContext>(AppContext::Options{false});
        return *context;
    }

    void setTypeOn(int type, bool on)
    {
        context->pref()->defaults()->setObject(MyPrefObj::keyPrefix(type) + QStringLiteral("On"), on);
    }

    // One plug-in of the format in its system-wide active folder.
    static QString placePlugin(int type, const QString &name)
    {
        const QString folder = Locations::folderPath(type, LocSystemActive);
        switch (type) {
        case TypeAU:
            return PluginLibraryBuilder::makeAudioUnit(folder, name, MachO::intel());
        case TypeRTAS:
            return PluginLibraryBuilder::makeRTAS(folder, name, MachO::intel());
        case TypeMAS:
            return PluginLibraryBuilder::makeMAS(folder, name, MachO::intel());
        default:
            return PluginLibraryBuilder::makeVST(folder, name, MachO::intel());
        }
    }

    ScriptedUi ui;
    std::unique_ptr<AppContext> context;
};

} // namespace korvane
