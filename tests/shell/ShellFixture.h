#pragma once

#include "PluginLibraryBuilder.h"
#include "panels/MyPrefObj.h"
#include "platform/Locations.h"
#include "privileged/NullAuthorizationBackend.h"
#include "shell/AppContext.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <memory>
#include <ostream>

namespace korvane {

// An alert as its title, message, informative text and buttons ("|"-joined).
inline QStringList texts(const Alert &alert)
{
    return {alert.title, alert.messageText, alert.informativeText, alert.buttons.join('|')};
}

// Fresh roots, a scripted interface and a context built on request over those roots; the bundle
// and address overrides a test sets are cleared at tear-down.
class ShellTest : public TestRoots {
protected:
    void TearDown() override
    {
        context.reset();
        for (const char *name : {"KORVANE_BUNDLE", "KORVANE_UPDATE_URL", "KORVANE_DOWNLOAD_URL"})
            qunsetenv(name);
        TestRoots::TearDown();
    }

    // The controllers as the program makes them, before its windows load.
    AppContext &makeContext(const FormatTable &formats = FormatTable::builtIn())
    {
        context.reset();
        AppContext::Parts parts;
        parts.roots = roots();
        parts.formats = formats;
        parts.ui = &ui;
        parts.authorization = &allowAll;
        parts.awakeFromNib = false;
        context = std::make_unique<AppContext>(std::move(parts));
        return *context;
    }

    void setTypeOn(int type, bool on)
    {
        context->pref()->defaults()->setObject(context->formats().at(type).prefix + "On", on);
    }

    // One plug-in of the format in its system-wide active folder.
    QString placePlugin(int type, const QString &name) const
    {
        using Make = QString (*)(const QString &, const QString &, const QByteArray &,
                                 PluginLibraryBuilder::PlistFormat);
        const Make make[] = {&PluginLibraryBuilder::makeAudioUnit, &PluginLibraryBuilder::makeRTAS,
                             &PluginLibraryBuilder::makeMAS, &PluginLibraryBuilder::makeVST};
        return make[type](folder(type, LocSystemActive), name, MachO::intel(),
                          PluginLibraryBuilder::Xml);
    }

    ScriptedUi ui;
    NullAuthorizationBackend allowAll;
    std::unique_ptr<AppContext> context;
};

} // namespace korvane
