#include "AppFixture.h"

#include "PluginLibraryBuilder.h"
#include "app/AppController.h"
#include "app/Preferences.h"
#include "codec/PropertyList.h"
#include "library/FormatManager.h"
#include "os/SystemLog.h"

#include <QDir>
#include <QFileInfo>

namespace korvane {

using B = PluginLibraryBuilder;

// One plug-in of each format, switched on system-wide.
class AppControllerTest : public AppTest {
protected:
    void SetUp() override
    {
        AppTest::SetUp();
        QDir().mkpath(support = homePath("Library/Application Support/Korvane/"));
        QDir().mkpath(homePath("Documents"));
        alpha =
            B::makeAudioUnit(folder(TypeAU, LocSystemActive), "Alpha.component", MachO::intel());
        B::makeRTAS(folder(TypeRTAS, LocSystemActive), "Beta.rtas", MachO::intel());
        B::makeMAS(folder(TypeMAS, LocSystemActive), "Gamma.bundle", MachO::intel());
        B::makeVST(folder(TypeVST, LocSystemActive), "Delta.vst", MachO::intel());
    }
    void setTypeOn(int type, bool on)
    {
        context->pref()->store()->setValue(context->formats().at(type).prefix + "On", on);
    }
    // Loads the window and finishes launching; the names each manager then holds, by type.
    QStringList launch()
    {
        context->prepareWindow();
        context->main()->start();
        QStringList all;
        for (int type = 0; type < context->formats().count(); ++type)
            for (const PluginPtr &item : context->manager(type)->items())
                all << item->name();
        return all;
    }
    QString support, alpha;
};

// A group is a position in the list: deleting one used to hand its members the next group and
// shift every later member. Now they have none, the rest stay, and the question counts them.
TEST_F(AppControllerTest, DeletingAGroupLeavesItsMembersWithoutOneAndEveryOtherAsItWas)
{
    AppController *main = makeContext().main();
    launch();
    GroupRegistry &groups = main->groupRegistry();
    for (const char *name : {"Drums", "Keys", "Vocals"})
        groups.setGroupAt(groups.groupCount(), name);
    FormatManager &au = *context->manager(TypeAU);
    FormatManager &vst = *context->manager(TypeVST);
    au.groups().changeGroup(au.itemAt(0), "Keys");
    vst.groups().changeGroup(vst.itemAt(0), "Vocals");
    ui.alertAnswers << AlertAnswer::Alternate; // Cancel
    groups.removeGroup(1);                     // "Keys"
    EXPECT_EQ(groups.groupCount(), 3);
    EXPECT_EQ(ui.alerts.last().messageText, "Delete the group “Keys”?");
    EXPECT_EQ(ui.alerts.last().informativeText, "1 plug-in is in it and will have no group.");
    groups.removeGroup(1); // Delete
    EXPECT_EQ(au.groupName(*au.itemAt(0)), "");
    EXPECT_EQ(vst.groupName(*vst.itemAt(0)), "Vocals");
    const qsizetype asked = ui.alerts.size();
    groups.removeGroup(0); // "Drums" has no member: nothing to ask
    EXPECT_EQ(ui.alerts.size(), asked);
    EXPECT_EQ(vst.groupName(*vst.itemAt(0)), "Vocals");
    EXPECT_EQ(groups.names(), QStringList({"", "Vocals"}));
}

TEST_F(AppControllerTest, EveryTypeOnScansAllFourAndOpensTheDefaultSetsThatExist)
{
    const QString auSet = homePath("Documents/Mix.aukorv");
    makeContext().manager(TypeAU)->rescan(); // an earlier session saved AU with Alpha off
    context->manager(TypeAU)->itemAt(0)->setActive(false);
    ASSERT_TRUE(context->manager(TypeAU)->sets().writeSet(auSet));
    AppContext &ctx = makeContext();
    ctx.pref()->setDefaultSet(TypeAU, auSet);
    ctx.pref()->setDefaultSet(TypeRTAS, homePath("Documents/Gone.rtaskorv"));
    EXPECT_EQ(launch(), QStringList({"Alpha.component", "Beta.rtas", "Gamma.bundle", "Delta.vst"}));
    // The AU set was merged (Alpha marked off) but not applied: the file has not moved.
    EXPECT_EQ(ctx.manager(TypeAU)->sets().selectedSet(), auSet);
    EXPECT_FALSE(ctx.manager(TypeAU)->itemAt(0)->isActive());
    EXPECT_TRUE(QFileInfo::exists(alpha));
    // A missing file and an empty default both become "no set", silently.
    EXPECT_EQ(ctx.pref()->defaultSet(TypeRTAS), QString("no set"));
    EXPECT_EQ(ctx.pref()->defaultSet(TypeMAS), QString("no set"));
    EXPECT_TRUE(ui.alerts.isEmpty() && ui.missingItemsLists.isEmpty());
}

TEST_F(AppControllerTest, SwitchedOffTypesAreNotScannedAndKeepTheirGroupsAtQuit)
{
    const QVariantList rtasGroups{"Beta.rtas", "Reverbs"};
    ASSERT_TRUE(writePlist(support + "rtasgroups.plist", rtasGroups));
    AppContext &ctx = makeContext();
    setTypeOn(TypeRTAS, false);
    setTypeOn(TypeMAS, false);
    const QString gone = homePath("Documents/Gone.rtaskorv");
    ctx.pref()->setDefaultSet(TypeRTAS, gone);
    EXPECT_EQ(launch(), QStringList({"Alpha.component", "Delta.vst"}));
    EXPECT_EQ(ctx.pref()->defaultSet(TypeRTAS), gone); // a switched-off type gets no set
    ctx.main()->saveState();
    // A format that was never scanned knows no plug-ins: its groups stay as they were.
    EXPECT_EQ(PropertyList::readArray(support + "rtasgroups.plist"), rtasGroups);
    EXPECT_FALSE(QFileInfo::exists(support + "masgroups.plist"));
    EXPECT_EQ(PropertyList::readArray(support + "augroups.plist"),
              QVariantList({"Alpha.component", ""}));
}

// A made-up format of ".clap" bundles does everything a built-in one does from its one row of
// the table and its recognition rule.
TEST_F(AppControllerTest, AFifthFormatIsOneRowOfTheTable)
{
    // The first four rows and the made-up one: the built-in table has CLAP rows of its own.
    const FormatTable formats = firstFour().with(
        Format::derived("CLAP", "CLAP", "/Library/Audio/Plug-Ins/CLAP",
                        [](const QString &path, ScanCache *) { return path.endsWith(".clap"); }));
    B::makeBundle(rootPath("Library/Audio/Plug-Ins/CLAP"), "Aria.clap", MachO::intel());
    B::makeBundle(homePath("Library/Audio/Plug-Ins/CLAP (Disabled)"), "Bolt.clap", MachO::ppc());
    makeContext(formats);
    EXPECT_EQ(launch().mid(4), QStringList({"Aria.clap", "Bolt.clap"}));
    EXPECT_EQ(context->main()->tabIdentifiers().last(), "tabCLAP");
    FormatManager *clap = context->manager(4);
    EXPECT_FALSE(clap->itemAt(1)->isActive());

    clap->marking().setAllActive();
    clap->marking().changeItem(clap->itemAt(1), "AUGlobal", true);
    EXPECT_EQ(context->main()->undoHistory().stack()->undoActionName(), "Bolt.clap \"setGlobal\"");
    for (const MoveOutcome &outcome : clap->applyPending())
        EXPECT_TRUE(outcome.ok) << outcome.error.reason.toStdString();
    EXPECT_TRUE(QFileInfo::exists(rootPath("Library/Audio/Plug-Ins/CLAP/Bolt.clap")));
    clap->sets().saveSetAs(); // cancelled, but the panel offers the format's own documents
    EXPECT_EQ(ui.savePanels.value(0).fileName, "untitled.clapkorv");
    context->main()->saveState();
    EXPECT_TRUE(QFileInfo::exists(support + "clapgroups.plist"));
}

// Whatever the data files hold, each is kept beside itself before quitting replaces it, and the
// log says so; a garbage preferences file switches nothing off.
TEST_F(AppControllerTest, DamagedDataFilesAreKeptBeforeAnythingReplacesThem)
{
    const QList<QPair<QString, QByteArray>> damaged = {
        {homePath("Library/Preferences/com.velmora.Korvane.plist"), "<plist><dict><key>AUOn"},
        {support + "content.plist", PropertyList::toXml(QVariantMap{{"Echo.vst", "/Presets"}})},
        {support + "groups.plist", PropertyList::toXml(QVariantList{"", "Drums", qint64(7)})},
        {support + "ausets.plist", QByteArray("bplist00\0\x01", 10)},
        {support + "rtassets.plist", PropertyList::toXml(QVariantList{"no set", QVariantList{}})},
        {support + "massets.plist", ""},
        {support + "vstsets.plist", "<?xml version=\"1.0\"?><plist><array><string>/a"},
        {support + "augroups.plist",
         PropertyList::toXml(QVariantMap{{"Alpha.component", "Drums"}})},
        {support + "rtasgroups.plist", "\xff\xfe<"},
        {support + "masgroups.plist", "<plist><array>"},
        {support + "vstgroups.plist", "{}"},
    };
    for (const auto &[path, bytes] : damaged)
        writeText(path, bytes);

    SystemLogCapture log;
    makeContext();
    EXPECT_EQ(launch(), QStringList({"Alpha.component", "Beta.rtas", "Gamma.bundle", "Delta.vst"}));
    context->main()->saveState();
    for (const auto &[path, bytes] : damaged) {
        const QFileInfo info(path);
        const QStringList kept =
            QDir(info.absolutePath()).entryList({info.fileName() + ".damaged-*"});
        ASSERT_EQ(kept.size(), 1) << path.toStdString();
        const QString keptPath = info.absolutePath() + "/" + kept.first();
        QFile file(keptPath);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly) && file.readAll() == bytes)
            << path.toStdString();
        EXPECT_TRUE(PropertyList::read(path)) << path.toStdString(); // replaced by a good one
        const QString line = "Could not read " + path + "; kept it as " + keptPath;
        EXPECT_TRUE(log.contains(line)) << line.toStdString();
        EXPECT_TRUE(context->main()->log().text().contains(line + "\n")) << line.toStdString();
    }
    EXPECT_EQ(log.lines().size(), damaged.size());
}

// Where the window tests do not reach.
TEST_F(AppControllerTest, CommandsGoToTheTabInFrontOrToAudioUnitsAndSomeTabStaysInFront)
{
    AppController *main = makeContext().main();
    launch();
    const auto active = [](FormatManager *manager) { return manager->itemAt(0)->isActive(); };
    main->setActiveType(TypeVST);
    main->setAllInactive();
    EXPECT_FALSE(active(context->manager(TypeVST)));
    EXPECT_TRUE(active(context->manager(TypeAU)));
    main->setIntelActive(); // Delta's executable is Intel
    EXPECT_TRUE(active(context->manager(TypeVST)));
    // The architecture column goes by the type given; the preferences window asks through here.
    main->showArchitectureColumn(TypeAU, true);
    EXPECT_TRUE(context->manager(TypeAU)->table().columns().contains("AUType"));
    EXPECT_FALSE(context->manager(TypeVST)->table().columns().contains("AUType"));
    context->pref()->store()->setValue("MASType", true);
    context->pref()->prepareWindow();
    EXPECT_EQ(context->manager(TypeMAS)->table().columns().count("AUType"), 1);

    // The On box of a format's preferences tab, clicked.
    const auto click = [&](int type, bool on) {
        context->pref()->form.selectedTab = type + 1;
        context->pref()->form.pages[type].on = on;
        main->showSelectedFormatTab(on);
        return main->tabIdentifiers();
    };
    EXPECT_EQ(click(TypeVST, false), QStringList({"tabAU", "tabRTAS", "tabMAS"}));
    EXPECT_NE(main->activeType(), TypeVST);
    main->setActiveType(TypeRTAS);
    EXPECT_EQ(click(TypeVST, true), QStringList({"tabAU", "tabRTAS", "tabMAS", "tabVST"}));
    EXPECT_EQ(main->activeType(), TypeRTAS); // an insertion leaves the front alone
    main->setActiveType(7);
    EXPECT_EQ(main->activeType(), TypeRTAS);
    context->pref()->form.selectedTab = 0; // outside the format tabs "off" removes the first
    main->showSelectedFormatTab(false);
    EXPECT_EQ(main->tabIdentifiers(), QStringList({"tabRTAS", "tabMAS", "tabVST"}));

    for (int type = 0; type < 4; ++type)
        setTypeOn(type, false);
    main->initTabs();
    ASSERT_EQ(main->tabCount(), 0);
    main->saveSet(); // the untitled name opens the save panel
    main->setAllInactive();
    EXPECT_FALSE(active(context->manager(TypeAU)));
    EXPECT_EQ(ui.savePanels.value(0).fileName, "untitled.aukorv");
}

} // namespace korvane
