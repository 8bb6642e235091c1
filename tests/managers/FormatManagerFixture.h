#pragma once

#include "PluginLibraryBuilder.h"
#include "managers/TypeManager.h"
#include "platform/Locations.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QFileInfo>

namespace korvane {

// Plug-in trees under the test roots, a scripted interface, and items looked up by name.
class FormatManagerFixture : public TestRoots {
protected:
    ScriptedUi ui;

    static QString folder(int type, int loc) { return Locations::folderPath(type, loc); }
    static QString addAU(int loc, const QString &name)
    {
        return PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, loc), name, MachO::intel());
    }
    static bool exists(const QString &path) { return QFileInfo::exists(path); }
    static int rowOf(const TypeManager *manager, const QString &name)
    {
        for (int i = 0; i < manager->plugins.size(); ++i)
            if (manager->plugins.at(i)->getAUName() == name)
                return i;
        return -1;
    }
    static AUItemPtr item(const TypeManager *manager, const QString &name)
    {
        const int row = rowOf(manager, name);
        return row < 0 ? AUItemPtr() : manager->plugins.at(row);
    }
};

} // namespace korvane
