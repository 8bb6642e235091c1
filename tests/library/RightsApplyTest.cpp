#include "FormatManagerFixture.h"

#include "app/Preferences.h"
#include "core/FormatTable.h"
#include "core/LinuxFormats.h"
#include "library/RightsApply.h"
#include "library/RightsMover.h"

#include <functional>

namespace korvane {
namespace {

// Stands in for korvane-helper through pkexec: records each run, answers as told.
class RightsStandIn : public RightsMover {
public:
    QList<QList<QPair<QString, QString>>> runs;
    std::function<Outcome(const QList<QPair<QString, QString>> &)> answer;
    Outcome move(const QList<QPair<QString, QString>> &moves) override
    {
        runs << moves;
        return answer(moves);
    }
};

// The system Components folder made unwritable, as it is for a person who is not root; the
// window's manager hands what needs rights to the stand-in.
class RightsApplyTest : public FormatManagerFixture {
protected:
    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        addAU(LocSystemActive, "Foo.component");
        addAU(LocSystemDisabled, "Bar.component");
        addAU(LocUserActive, "Mine.component");
        ManagerParts parts = context->parts;
        parts.rights = &mover;
        window = std::make_unique<FormatManager>(ManagersOfOneRun::formats().at(TypeAU), parts);
        window->rescan();
        for (const auto &[name, active] : {std::pair{"Foo.component", false},
                                           {"Bar.component", true},
                                           {"Mine.component", false}})
            window->marking().changeItem(item(window.get(), name), "AUActive", active);
        guard = std::make_unique<ImmutableGuard>(folder(TypeAU, LocSystemActive));
    }
    void TearDown() override { guard.reset(); }

    RightsStandIn mover;
    std::unique_ptr<FormatManager> window;
    std::unique_ptr<ImmutableGuard> guard;
};

TEST_F(RightsApplyTest, WithoutRightsTheWindowSaysSoOnceAndCopiesWhatWasToBeSwitchedOn)
{
    if (!guard->ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    EXPECT_TRUE(RightsApply::needsRights(window->traits(), window->locations(), window->files(),
                                         *item(window.get(), "Foo.component")));
    EXPECT_FALSE(RightsApply::needsRights(window->traits(), window->locations(), window->files(),
                                          *item(window.get(), "Mine.component")));
    mover.answer = [](const QList<QPair<QString, QString>> &) {
        return RightsMover::Outcome{RightsMover::State::NotGranted, {}, "No polkit here."};
    };
    window->apply(); // Copy to My Folder, the default
    ASSERT_EQ(mover.runs.size(), 1);
    EXPECT_EQ(mover.runs.first(),
              (QList<QPair<QString, QString>>{{auPath(LocSystemActive, "Foo.component"),
                                               auPath(LocSystemDisabled, "Foo.component")},
                                              {auPath(LocSystemDisabled, "Bar.component"),
                                               auPath(LocSystemActive, "Bar.component")}}));
    // One question for the apply, not a "Permission denied" per plug-in.
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().messageText,
              "Administrator rights are needed to switch 2 system plug-ins");
    EXPECT_TRUE(ui.alerts.first().informativeText.startsWith("No polkit here."));
    EXPECT_EQ(ui.alerts.first().buttons, QStringList({"Copy to My Folder", "Leave Them"}));
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Foo.component")));
    EXPECT_TRUE(exists(auPath(LocSystemDisabled, "Bar.component")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "Bar.component")));
    // The person's own plug-in moved as ever, and nothing is left pending.
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Mine.component")));
    EXPECT_EQ(window->pendingCount(), 0);
}

TEST_F(RightsApplyTest, WithRightsTheMovesRunOnceAndEachFailureIsSaidInOneAlert)
{
    if (!guard->ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    // The helper, as root, moves the first and finds another item at the second's target.
    mover.answer = [this](const QList<QPair<QString, QString>> &moves) {
        guard.reset();
        RightsMover::Outcome outcome{RightsMover::State::Failed, {}, {}};
        outcome.results << RightsMover::Result{QDir().rename(moves[0].first, moves[0].second),
                                               {},
                                               0}
                        << RightsMover::Result{false, moves[1].second + ": File exists", EEXIST};
        return outcome;
    };
    window->apply();
    EXPECT_EQ(mover.runs.size(), 1);
    EXPECT_TRUE(exists(auPath(LocSystemDisabled, "Foo.component")));
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().messageText, "1 of 2 system plug-ins could not be moved");
    EXPECT_EQ(ui.alerts.first().informativeText,
              "Bar.component: " + auPath(LocSystemActive, "Bar.component") + ": File exists");
    EXPECT_FALSE(item(window.get(), "Foo.component")->isActive()); // rescanned where it lies
    EXPECT_FALSE(item(window.get(), "Bar.component")->isActive());
}

// Linux VST 2: /usr/local/lib/vst is the administrator's and goes through the helper like any
// system folder; /usr/lib/vst is the distribution's, and no rights are asked for it: the apply
// refuses it by itself, naming the host's variables, and it stays.
TEST_F(RightsApplyTest, TheDistributionsFoldersNeverReachTheHelper)
{
    const Format *row = nullptr;
    for (const Format &format : FormatTable::builtIn())
        if (format.prefix == "LXVST")
            row = &format;
    ASSERT_TRUE(row);
    const QString local = locations().folderPath(*row, LocSystemActive);
    const QString packaged = locations().folderPath(*row, 6); // /usr/lib/vst
    ASSERT_TRUE(row->isDistributionOwned(6));
    for (const QString &folder : {local, packaged}) {
        QDir().mkpath(folder);
        writeText(folder + "/Echo.so", "echo");
    }
    mover.answer = [](const QList<QPair<QString, QString>> &) {
        return RightsMover::Outcome{RightsMover::State::NotGranted, {}, "No polkit here."};
    };
    ManagerParts parts = context->parts;
    parts.rights = &mover;
    FormatManager lxvst(*row, parts);
    lxvst.rescan();
    ASSERT_EQ(lxvst.items().size(), 2);
    // Marked as a set or an older list could mark it; the window's own commands do not.
    lxvst.marking().markItems(lxvst.items(), false, "Switch Off");
    const ImmutableGuard lockedLocal(local);
    const ImmutableGuard lockedPackaged(packaged);
    if (!lockedLocal.ok() || !lockedPackaged.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    for (const PluginPtr &plugin : lxvst.items())
        EXPECT_EQ(
            RightsApply::needsRights(lxvst.traits(), lxvst.locations(), lxvst.files(), *plugin),
            plugin->location().startsWith(local))
            << qPrintable(plugin->location());

    lxvst.apply(); // Leave Them: nothing is switched on, so nothing can be copied
    ASSERT_EQ(mover.runs.size(), 1);
    EXPECT_EQ(mover.runs.first(), (QList<QPair<QString, QString>>{
                                      {local + "/Echo.so", local + " (Disabled)/Echo.so"}}));
    EXPECT_TRUE(logText().contains(packaged + ": the distribution owns that folder"))
        << qPrintable(logText());
    EXPECT_TRUE(exists(packaged + "/Echo.so"));
    EXPECT_FALSE(exists(packaged + " (Disabled)"));
}

// A folder LV2_PATH adds is no folder of the helper's: a plug-in there that needs rights is
// refused before polkit is asked, in one alert that names the folder, and stays.
TEST_F(RightsApplyTest, AFolderAHostsVariableAddsIsRefusedUpFrontNamingIt)
{
    const QString added = rootPath("opt/lv2");
    const FormatTable table =
        withRunFolders(FormatTable::builtIn(), locations().roots(), {{"LV2_PATH", added}});
    const Format &lv2 = table.at(*table.typeOfName("lv2"));
    QDir().mkpath(added + "/Hall.lv2");
    writeText(added + "/Hall.lv2/manifest.ttl", "");
    QDir().mkpath(homePath(".lv2/Mine.lv2"));
    writeText(homePath(".lv2/Mine.lv2/manifest.ttl"), "");

    AllowAllAuthorization allowAll;
    AppServices run(RunParts{locations(), disk(), ui, table, locks()});
    Preferences pref(run.parts(), run.dataFiles());
    MissingItemsPrompt missingItems(ui);
    Authorization authorization(allowAll, ui);
    ManagerParts parts = managerParts(run, pref, missingItems, authorization);
    parts.rights = &mover;
    FormatManager manager(lv2, parts);
    manager.rescan();
    ASSERT_EQ(manager.items().size(), 2);
    manager.marking().markItems(manager.items(), false, "Switch Off");
    const ImmutableGuard locked(added);
    if (!locked.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    mover.answer = [](const QList<QPair<QString, QString>> &) {
        return RightsMover::Outcome{RightsMover::State::Done, {}, {}};
    };
    manager.apply();

    EXPECT_TRUE(mover.runs.isEmpty()) << "nothing is asked for a folder the helper refuses";
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().messageText,
              "1 plug-ins in folders added by LV2_PATH were not switched");
    EXPECT_TRUE(ui.alerts.first().informativeText.contains("\n" + added + "\n"))
        << qPrintable(ui.alerts.first().informativeText);
    EXPECT_TRUE(run.log().text().contains("Hall.lv2 stays in " + added
                                          + ": that folder was added by "
                                            "LV2_PATH"))
        << qPrintable(run.log().text());
    EXPECT_FALSE(run.log().text().contains("Permission denied")) << qPrintable(run.log().text());
    EXPECT_TRUE(exists(added + "/Hall.lv2"));
    // The person's own plug-in moved as ever; nothing is left pending.
    EXPECT_TRUE(exists(homePath(".lv2 (Disabled)/Mine.lv2")));
    EXPECT_EQ(manager.pendingCount(), 0);
}

} // namespace
} // namespace korvane
