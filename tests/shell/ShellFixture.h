#pragma once

#include "PluginLibraryBuilder.h"
#include "panels/MyPrefObj.h"
#include "platform/Locations.h"
#include "support/ContextTest.h"

#include <memory>
#include <ostream>

namespace korvane {

// An alert as its title, message, informative text and buttons ("|"-joined).
inline QStringList texts(const Alert &alert)
{
    return {alert.title, alert.messageText, alert.informativeText, alert.buttons.join('|')};
}

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
        using Make = QString (*)(const QString &, const QString &, const QByteArray &,
                                 PluginLibraryBuilder::PlistFormat);
        const Make make[] = {&PluginLibraryBuilder::makeAudioUnit, &PluginLibraryBuilder::makeRTAS,
                             &PluginLibraryBuilder::makeMAS, &PluginLibraryBuilder::makeVST};
        return make[type](folder(type, LocSystemActive), name, MachO::intel(),
                          PluginLibraryBuilder::Xml);
    }
};

} // namespace korvane
