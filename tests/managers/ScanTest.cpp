#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyAdminObj.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "panels/MyPrefObj.h"
#include "platform/PropertyList.h"

#include <QDir>
#include <tuple>

namespace korvane {

class ScanTest : public FormatManagerFixture {
protected:
    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        // The parents of the format folders; the scan creates one level only.
        for (const QString &base : {root(), home()}) {
            QDir().mkpath(base + "/Library/Audio/Plug-Ins");
            QDir().mkpath(base + "/Library/Application Support");
        }
    }
    static void setPref(const QString &key, bool value)
    {
        MyPrefObj::getPref()->defaults()->setObject(key, value);
    }
    static QStringList names(const TypeManager *manager)
    {
        QStringList result;
        for (const AUItemPtr &item : manager->plugins)
            result << item->getAUName();
        return result;
    }
};

TEST_F(ScanTest, AudioUnitItemsMirrorTheFourFolders)
{
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Zeta.component", MachO::ppc());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "alpha.component", MachO::universal2());
    PluginLibraryBuilder::makeFile(folder(TypeAU, 0), "notacomponent");
    PluginLibraryBuilder::makeFile(folder(TypeAU, 0), "Foo.COMPONENT");
    PluginLibraryBuilder::makeFile(folder(TypeAU, 0), ".DS_Store");
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 1), "Off.component", MachO::universal3());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 2), "Zeta.component", MachO::intel());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 3), "Mine.component", MachO::x86_64());

    MyAdminObj *au = MyAdminObj::getAUObj();
    au->fileName = "Before";
    au->reloadData();

    // Sorted by name, case-insensitively; IDs stay the order in which the scan found them.
    EXPECT_EQ(names(au), QStringList({"alpha.component", "Mine.component", "notacomponent",
                                      "Off.component", "Zeta.component", "Zeta.component"}));
    // name, location code, ID (scan order), architecture text
    const QList<std::tuple<QString, int, int, QString>> expected = {
        {"Zeta.component", 0, 0, "PPC"},   {"alpha.component", 0, 1, "Universal Binary"},
        {"notacomponent", 0, 2, "PPC"},    {"Off.component", 1, 3, "Unknown"},
        {"Zeta.component", 2, 4, "Intel"}, {"Mine.component", 3, 5, "Unknown"}};
    for (const auto &[name, loc, id, type] : expected) {
        SCOPED_TRACE(name.toStdString());
        const int row = au->findAUItemIndex(name, id);
        ASSERT_GE(row, 0);
        const AUItemPtr item = au->plugins.at(row);
        EXPECT_EQ(item->getAULocation(), folder(TypeAU, loc));
        EXPECT_EQ(item->getAUGlobal(), loc < 2);
        EXPECT_EQ(item->getAUActive(), loc % 2 == 0);
        EXPECT_EQ(item->getAUType(), type);
        const AULog &record = au->log.at(id);
        EXPECT_EQ(record.getLogName() + record.getLogPath(), name + folder(TypeAU, loc));
        EXPECT_EQ(record.getLogID(), id);
        EXPECT_TRUE(record.isLogProcessed());
    }
    EXPECT_EQ(au->log.size(), 6);
    EXPECT_EQ(au->fileName, "Untitled");
    EXPECT_FALSE(au->isApplyEnabled());
}

TEST_F(ScanTest, ProgressNamesEachFolderAsWrittenAndStepsToTwentyFive)
{
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "A.component", MachO::intel());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "B.component", MachO::intel());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 2), "C.component", MachO::intel());
    MyAdminObj::getAUObj()->reloadData();

    EXPECT_EQ(ui.progressTitles, QStringList({"scan AudioUnits:"}));
    // Empty folders show nothing; the bar keeps its last value.
    EXPECT_EQ(ui.progressTexts,
              QStringList({"scan for AudioUnits:/Library/Audio/Plug-Ins/Components",
                           "scan for AudioUnits:~/Library/Audio/Plug-Ins/Components"}));
    EXPECT_EQ(ui.progressDetails, QStringList({"A.component", "B.component", "C.component"}));
    EXPECT_EQ(ui.progressValues, QList<double>({12, 25, 25}));
    EXPECT_EQ(ui.progressEnds, 1);

    // The other formats count from k less one, and the bar is only told when its value moves.
    PluginLibraryBuilder::makeVST(folder(TypeVST, 3), "A.vst", MachO::intel());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 3), "B.vst", MachO::intel());
    PluginLibraryBuilder::makeFile(folder(TypeVST, 3), ".DS_Store");
    PluginLibraryBuilder::makeFile(folder(TypeVST, 3), "C", "aPcs");
    PluginLibraryBuilder::makeFile(folder(TypeVST, 3), "D", "aPcs");
    ScriptedUi vstUi;
    setPref("VSTScanSubfolders", false);
    MyVSTObj::getVSTObj()->reloadData();
    EXPECT_EQ(vstUi.progressTitles, QStringList({"scan VST-Plugins:"}));
    EXPECT_EQ(vstUi.progressTexts,
              QStringList({"scan for VST-Plugins:~/Library/Audio/Plug-Ins/VST (Disabled)"}));
    EXPECT_EQ(vstUi.progressValues, QList<double>({0, 5, 10, 15, 20}));
    EXPECT_EQ(MyVSTObj::getVSTObj()->plugins.size(), 4);
}

TEST_F(ScanTest, MissingFoldersAreCreatedPerFormat)
{
    MyAdminObj::getAUObj()->reloadData();
    EXPECT_FALSE(exists(folder(TypeAU, 0)));
    EXPECT_TRUE(exists(folder(TypeAU, 1)));
    EXPECT_FALSE(exists(folder(TypeAU, 2)));
    EXPECT_TRUE(exists(folder(TypeAU, 3)));

    MyVSTObj::getVSTObj()->reloadData();
    MyMASObj::getMASObj()->reloadData();
    MyRTASObj::getRTASObj()->reloadData();
    for (int type : {TypeVST, TypeMAS, TypeRTAS})
        for (int loc = 0; loc < 4; ++loc)
            EXPECT_TRUE(QFileInfo(folder(type, loc)).isDir()) << type << " " << loc;
    EXPECT_TRUE(exists(rootPath("Library/Application Support/Digidesign")));
    EXPECT_TRUE(exists(homePath("Library/Application Support/Digidesign")));

    // A failed creation only means the folder gives nothing.
    QDir(rootPath("Library/Audio/Plug-Ins/Components (Disabled)")).removeRecursively();
    QDir(rootPath("Library/Audio/Plug-Ins")).removeRecursively();
    MyAdminObj::getAUObj()->reloadData();
    EXPECT_FALSE(exists(folder(TypeAU, 1)));
    EXPECT_TRUE(MyAdminObj::getAUObj()->plugins.isEmpty());
}

TEST_F(ScanTest, GroupsComeFromTheFormatsGroupsFile)
{
    const QString support = homePath("Library/Application Support/Korvane");
    QDir().mkpath(support);
    PropertyList::writeXml(support + "/groups.plist", QVariantList{"", "Drums", "Keys"});
    AppServices::getMainObj()->loadGroups();
    PropertyList::writeXml(support + "/augroups.plist",
                           QVariantList{"Kick.component", "Drums", "Piano.component", "Keys",
                                        "Kick.component", "Keys", "Lone.component"});
    for (const char *name :
         {"Kick.component", "Piano.component", "Lone.component", "Other.component"})
        addAU(LocSystemActive, name);
    addAU(LocUserActive, "Kick.component");

    MyAdminObj *au = MyAdminObj::getAUObj();
    au->reloadData();
    QStringList groups;
    for (const AUItemPtr &item : au->plugins)
        groups << item->getAUName() + "=" + item->getAUGroup();
    // The first pair of a name wins, for every item of that name; a name without a partner is
    // ungrouped.
    EXPECT_EQ(groups, QStringList({"Kick.component=Drums", "Kick.component=Drums",
                                   "Lone.component=", "Other.component=", "Piano.component=Keys"}));
    EXPECT_EQ(au->plugins.at(0)->getGroupID(), 1);

    TestRoots::writeText(support + "/augroups.plist", "not a property list");
    au->reloadData();
    for (const AUItemPtr &item : au->plugins)
        EXPECT_EQ(item->getGroupID(), 0);
}

TEST_F(ScanTest, SubfoldersAreScannedExceptInTheUsersDisabledFolder)
{
    PluginLibraryBuilder::makeVST(folder(TypeVST, 2) + "/Sub", "Foo.vst", MachO::intel());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 2), "Top.vst", MachO::ppc());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 3) + "/Sub", "Hidden.vst", MachO::intel());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 3), "Off.vst", MachO::intel());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 1) + "/Deep/Er", "Sys.vst", MachO::intel());

    MyVSTObj *vst = MyVSTObj::getVSTObj();
    setPref("VSTScanSubfolders", true);
    vst->reloadData();
    // Bundles are collapsed: nothing inside a .vst is listed on its own.
    EXPECT_EQ(names(vst), QStringList({"Deep/Er/Sys.vst", "Off.vst", "Sub/Foo.vst", "Top.vst"}));
    const AUItemPtr foo = item(vst, "Sub/Foo.vst");
    EXPECT_EQ(foo->getAULocation(), folder(TypeVST, 2));
    EXPECT_EQ(foo->getPlattformIdent(), "Intel");

    setPref("VSTScanSubfolders", false);
    vst->reloadData();
    EXPECT_EQ(names(vst), QStringList({"Off.vst", "Top.vst"}));
}

} // namespace korvane
