#include "ShellFixture.h"

#include "managers/MyVSTObj.h"
#include "platform/SharedInstances.h"
#include "shell/LumoScript.h"
#include "shell/MyMainObj.h"

namespace korvane {

using Context = ShellTest;

TEST_F(Context, InstallsEveryControllerWhileItLivesAndNothingAfter)
{
    AppContext &ctx = makeContext();
    EXPECT_EQ(AppServices::getMainObj(), ctx.main()); // one controller behind both accessors
    EXPECT_EQ(MyVSTObj::getVSTObj(), ctx.vst());
    EXPECT_EQ(LumoScript::getLumoScript(), ctx.script());
    context.reset();
    EXPECT_EQ(SharedInstance<AppServices>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<MyVSTObj>::peek(), nullptr);
    // Nothing is made on demand: asking with nothing installed is a mistake that stops the program.
    EXPECT_DEATH(MyMainObj::getMainObj(), "asked for before an AppContext installed one");
}

// A made-up format of ".clap" bundles: everything a built-in format does, it does from its one
// row of the table and its recognition rule.
bool isClapPlugIn(const QString &path)
{
    return path.endsWith(QLatin1String(".clap"));
}

TEST_F(Context, AFifthFormatIsOneRowOfTheTable)
{
    const FormatTable formats = FormatTable::builtIn().with(
        Format::derived("CLAP", "CLAP", "/Library/Audio/Plug-Ins/CLAP", &isClapPlugIn));
    PluginLibraryBuilder::makeBundle(rootPath("Library/Audio/Plug-Ins/CLAP"), "Aria.clap",
                                     MachO::intel());
    PluginLibraryBuilder::makeBundle(homePath("Library/Audio/Plug-Ins/CLAP (Disabled)"),
                                     "Bolt.clap", MachO::ppc());
    AppContext &ctx = makeContext(formats);
    ctx.awakeFromNib();
    EXPECT_EQ(ctx.main()->tabIdentifiers(),
              QStringList({"tabAU", "tabRTAS", "tabMAS", "tabVST", "tabCLAP"}));
    ctx.main()->applicationDidFinishLaunching(); // scans every format switched on
    TypeManager *clap = ctx.manager(4);
    ASSERT_EQ(clap->numberOfRowsInTableView(), 2);
    EXPECT_FALSE(clap->itemAt(1)->getAUActive()); // Bolt

    clap->setAllActive();
    clap->changeObject(clap->itemAt(1), "AUGlobal", true);
    EXPECT_EQ(ctx.main()->getUndoManager()->undoActionName(), "Bolt.clap \"setGlobal\"");
    for (const MoveOutcome &outcome : clap->applyAllPending())
        EXPECT_TRUE(outcome.ok) << outcome.error.reason.toStdString();
    EXPECT_TRUE(QFileInfo::exists(rootPath("Library/Audio/Plug-Ins/CLAP/Bolt.clap")));
    clap->saveAs(); // cancelled, but the panel offers the format's own documents
    EXPECT_EQ(ui.savePanels.value(0).fileName, "untitled.clapkorv");
    ctx.main()->applicationWillTerminate();
    EXPECT_TRUE(QFileInfo::exists(ctx.locations().dataFilePath(formats.at(4).groupsFile)));
}

} // namespace korvane
