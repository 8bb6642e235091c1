#pragma once

#include "PluginLibraryBuilder.h"
#include "managers/MyAdminObj.h"
#include "panels/MyPrefObj.h"
#include "platform/Bundle.h"
#include "platform/Locations.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QFileInfo>

namespace korvane {

// Plug-in trees under the test roots, a scripted interface, and items looked up by name.
class FormatManagerFixture : public TestRoots {
protected:
    ScriptedUi ui;
    MyAdminObj *au = nullptr;

    void SetUp() override
    {
        TestRoots::SetUp();
        // The parents of the format folders; a scan creates one level only.
        for (const QString &base : {root(), home()}) {
            QDir().mkpath(base + "/Library/Audio/Plug-Ins");
            QDir().mkpath(base + "/Library/Application Support");
        }
        au = MyAdminObj::getAUObj();
    }

    static QString folder(int type, int loc) { return Locations::folderPath(type, loc); }
    static QString auPath(int loc, const QString &name) { return folder(TypeAU, loc) + "/" + name; }
    static QString addAU(int loc, const QString &name)
    {
        return PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, loc), name, MachO::intel());
    }
    static bool exists(const QString &path) { return QFileInfo::exists(path); }
    // The bundle is there with the executable it was made with.
    static bool whole(const QString &bundle, const QByteArray &header)
    {
        return MachOHeader::firstBytes(Bundle::executablePath(bundle)) == header;
    }
    static void setPref(const QString &key, bool value)
    {
        MyPrefObj::getPref()->defaults()->setObject(key, value);
    }
    static QStringList names(const TypeManager *manager)
    {
        QStringList result;
        for (const AUItemPtr &plugin : manager->plugins)
            result << plugin->getAUName();
        return result;
    }
    static int rowOf(const TypeManager *manager, const QString &name)
    {
        return int(names(manager).indexOf(name));
    }
    static AUItemPtr item(const TypeManager *manager, const QString &name)
    {
        const int row = rowOf(manager, name);
        return row < 0 ? AUItemPtr() : manager->plugins.at(row);
    }
};

} // namespace korvane
