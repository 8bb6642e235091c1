#pragma once

#include "PluginLibraryBuilder.h"
#include "app/Preferences.h"
#include "codec/Bundle.h"
#include "codec/MachOHeader.h"
#include "core/AppServices.h"
#include "core/FormatTable.h"
#include "core/UndoStack.h"
#include "library/Authorization.h"
#include "library/FormatManager.h"
#include "library/MissingItemsPrompt.h"
#include "os/AllowAllAuthorization.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <QDir>
#include <cerrno>
#include <memory>

namespace korvane {

using B = PluginLibraryBuilder;

// What a manager is handed, from the shared parts of a run as AppContext hands them.
inline ManagerParts managerParts(AppServices &run, Preferences &pref,
                                 MissingItemsPrompt &missingItems, Authorization &authorization)
{
    return ManagerParts{
        run.parts(),     run.log(), run.undoHistory(), run.groupRegistry(), run.contentRegistry(),
        run.dataFiles(), pref,      missingItems,      authorization};
}

// The controllers the managers work with, made as the program makes them (without the
// application controller).
struct ManagersOfOneRun {
    ManagersOfOneRun(const Locations &locations, FileOperations &files, UserInterface &ui)
        : services(RunParts{locations, files, ui, FormatTable::builtIn(), locks}),
          pref(services.parts(), services.dataFiles()), missingItems(ui),
          authorization(allowAll, ui),
          parts(managerParts(services, pref, missingItems, authorization)),
          au(formats().at(TypeAU), parts), rtas(formats().at(TypeRTAS), parts),
          mas(formats().at(TypeMAS), parts), vst(formats().at(TypeVST), parts)
    {
    }

    AllowAllAuthorization allowAll;
    LockTable locks;
    AppServices services;
    Preferences pref;
    MissingItemsPrompt missingItems;
    Authorization authorization;
    ManagerParts parts;
    FormatManager au;
    FormatManager rtas;
    FormatManager mas;
    FormatManager vst;

    static const FormatTable &formats() { return FormatTable::builtIn(); }
};

// Fails a chosen move as a full disk would, and counts moves.
class FaultyOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    QString moveSource;
    int moves = 0;
    bool move(const QString &from, const QString &to, FileError *error) override
    {
        ++moves;
        if (from != moveSource)
            return LocalFileOperations::move(from, to, error);
        if (error)
            *error = {from, QStringLiteral("No space left on device"), ENOSPC};
        return false;
    }
};

// A scripted person who presses Cancel from the given look at the progress panel on (0: never).
class PersonAtTheScreen : public ScriptedUi {
public:
    int cancelAt = 0, looks = 0;
    bool progressCancelled() override { return cancelAt > 0 && ++looks >= cancelAt; }
};

// Plug-in trees under the test roots, a scripted person, and the controllers of one run over
// them; items looked up by name.
class FormatManagerFixture : public TestRoots {
protected:
    PersonAtTheScreen ui;
    std::unique_ptr<ManagersOfOneRun> context;
    FormatManager *au = nullptr;
    FormatManager *vst = nullptr;

    void SetUp() override
    {
        TestRoots::SetUp();
        // The parents of the format folders; a scan creates one level only.
        for (const QString &base : {root(), home()}) {
            QDir().mkpath(base + "/Library/Audio/Plug-Ins");
            QDir().mkpath(base + "/Library/Application Support");
        }
        relaunch();
    }

    // The controllers of a fresh run, optionally over injected file operations.
    void relaunch(FileOperations *files = nullptr)
    {
        context.reset();
        context = std::make_unique<ManagersOfOneRun>(locations(), files ? *files : disk(), ui);
        au = &context->au;
        vst = &context->vst;
    }

    AppServices &services() { return context->services; }
    // Groups named in this order, after "no group".
    void addGroups(const QStringList &names)
    {
        GroupRegistry &groups = services().groupRegistry();
        for (const QString &name : names)
            groups.setGroupAt(groups.groupCount(), name);
    }
    QString logText() { return services().log().text(); }

    QString auPath(int loc, const QString &name) const { return folder(TypeAU, loc) + "/" + name; }
    QString addAU(int loc, const QString &name) const
    {
        return B::makeAudioUnit(folder(TypeAU, loc), name, MachO::intel());
    }
    static bool exists(const QString &path) { return QFileInfo::exists(path); }
    void setPref(const QString &key, bool value) { context->pref.store()->setValue(key, value); }
    static QStringList names(const FormatManager *manager)
    {
        QStringList result;
        for (const PluginPtr &plugin : manager->items())
            result << plugin->name();
        return result;
    }
    static int rowOf(const FormatManager *manager, const QString &name)
    {
        return int(names(manager).indexOf(name));
    }
    static PluginPtr item(const FormatManager *manager, const QString &name)
    {
        return manager->itemAt(rowOf(manager, name));
    }
    static bool whole(const QString &bundle, const QByteArray &header)
    {
        return MachOHeader::firstBytes(Bundle::executablePath(bundle)) == header;
    }
};

// Foo in the system folder, bar switched off and Baz in the user's folder, scanned; what the
// manager announces is counted.
class ThreeAudioUnitsFixture : public FormatManagerFixture {
protected:
    UndoStack *undo = nullptr;
    int resets = 0;         // whole-list rebuilds
    QList<int> changedRows; // the rows of the last announcement

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        addAU(LocSystemActive, "Foo.component");
        addAU(LocUserDisabled, "bar.component");
        addAU(LocUserActive, "Baz.component");
        au->rescan();
        undo = services().undoHistory().stack();
        QObject::connect(au, &FormatManager::itemsChanged,
                         [this](const QList<int> &rows) { changedRows = rows; });
        QObject::connect(au, &FormatManager::itemsReset, [this] { ++resets; });
    }
};

} // namespace korvane
