#include "ShellFixture.h"

#include "managers/MyVSTObj.h"
#include "panels/MyInfoObj.h"
#include "platform/SharedInstances.h"
#include "privileged/BLAuthentication.h"
#include "shell/LumoScript.h"
#include "shell/MyMainObj.h"

namespace korvane {

using Context = ShellTest;

TEST_F(Context, InstallsEveryControllerWhileItLivesAndNothingAfter)
{
    {
        AppContext &ctx = makeContext();
        EXPECT_EQ(MyMainObj::getMainObj(), ctx.main());
        EXPECT_EQ(AppServices::getMainObj(), ctx.main());
        EXPECT_EQ(MyPrefObj::getPref(), ctx.pref());
        EXPECT_EQ(MyVSTObj::getVSTObj(), ctx.vst());
        EXPECT_EQ(BLAuthentication::sharedInstance(), ctx.authentication());
        EXPECT_EQ(LumoScript::getLumoScript(), ctx.script());
        context.reset();
    }
    EXPECT_EQ(SharedInstance<MyMainObj>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<AppServices>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<MyVSTObj>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<BLAuthentication>::peek(), nullptr);
    // Nothing is made on demand: asking with nothing installed is a mistake that stops the program.
    EXPECT_DEATH(MyMainObj::getMainObj(), "asked for before an AppContext installed one");
}

TEST_F(Context, TheInfoPanelFollowsTheTableOnlyWhileItIsShown)
{
    placePlugin(TypeVST, "Echo.vst");
    placePlugin(TypeVST, "Flanger.vst");
    AppContext &ctx = makeContext();
    TypeManager *vst = ctx.vst();
    vst->reloadData();
    vst->shouldSelectRow(0); // the panel is not shown: nothing follows
    EXPECT_FALSE(ctx.info()->item());

    vst->selectRows({0});
    vst->getInfo();
    EXPECT_TRUE(ctx.info()->isVisible());
    EXPECT_EQ(ctx.info()->item(), vst->itemAt(0));
    vst->shouldSelectRow(1);
    EXPECT_EQ(ctx.info()->item(), vst->itemAt(1));
}

// A made-up format: folders of ".clap" bundles. Everything a built-in format does, it does from
// its one row of the table and its recognition rule.
bool isClapPlugIn(const QString &path)
{
    return path.endsWith(QLatin1String(".clap"));
}

TEST_F(Context, AFifthFormatIsOneRowOfTheTable)
{
    const FormatTable formats = FormatTable::builtIn().with(
        Format::derived("CLAP", "CLAP", "/Library/Audio/Plug-Ins/CLAP", &isClapPlugIn));
    const Format &clap = formats.at(4);
    PluginLibraryBuilder::makeBundle(folder(TypeAU, 0).replace("Components", "CLAP"), "Aria.clap",
                                     MachO::intel());
    PluginLibraryBuilder::makeBundle(homePath("Library/Audio/Plug-Ins/CLAP (Disabled)"),
                                     "Bolt.clap", MachO::ppc());

    AppContext &ctx = makeContext(formats);
    ctx.awakeFromNib();
    EXPECT_EQ(ctx.main()->tabIdentifiers(),
              QStringList({"tabAU", "tabRTAS", "tabMAS", "tabVST", "tabCLAP"}));
    EXPECT_TRUE(ctx.pref()->isTypeActive(4)); // seeded like the others
    EXPECT_TRUE(ctx.pref()->scanSubpaths(4));

    TypeManager *manager = ctx.manager(4);
    ASSERT_TRUE(manager);
    ctx.main()->applicationDidFinishLaunching(); // scans every format switched on
    QStringList listed;
    for (const AUItemPtr &item : manager->items())
        listed << item->getAUName() + (item->getAUActive() ? " on" : " off");
    EXPECT_EQ(listed, QStringList({"Aria.clap on", "Bolt.clap off"}));
    EXPECT_TRUE(ui.progressTitles.contains("scan CLAP:"));

    manager->selectRows({0, 1});
    manager->setSelectedInactive();
    manager->setAllActive();
    manager->changeObject(manager->itemAt(1), "AUGlobal", true);
    EXPECT_EQ(ctx.main()->getUndoManager()->undoActionName(), "Bolt.clap \"setGlobal\"");
    for (const MoveOutcome &outcome : manager->applyAllPending())
        EXPECT_TRUE(outcome.ok) << outcome.error.reason.toStdString();
    EXPECT_TRUE(QFileInfo::exists(rootPath("Library/Audio/Plug-Ins/CLAP/Bolt.clap")));
    EXPECT_TRUE(QFileInfo::exists(rootPath("Library/Audio/Plug-Ins/CLAP/Aria.clap")));

    manager->saveAs(); // cancelled, but the panel offers the format's own documents
    EXPECT_EQ(ui.savePanels.value(0).fileName, "untitled.clapkorv");
    ctx.main()->applicationWillTerminate();
    EXPECT_TRUE(QFileInfo::exists(ctx.locations().dataFilePath(clap.groupsFile)));
}

} // namespace korvane
