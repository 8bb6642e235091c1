#include "FormatManagerFixture.h"

#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"

namespace korvane {

using ScanTest = FormatManagerFixture;

TEST_F(ScanTest, AudioUnitItemsMirrorTheFourFolders)
{
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Zeta.component", MachO::ppc());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "alpha.component", MachO::universal2());
    for (const char *name :
         {"notacomponent", "Foo.COMPONENT", "Foo.component.zip", ".DS_Store", "._Zeta.component"})
        PluginLibraryBuilder::makeFile(folder(TypeAU, 0), name);
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 1), "Off.component", MachO::universal3());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 2), "Zeta.component", MachO::intel());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 3), "Mine.component", MachO::x86_64());
    au->reloadData();

    // name, location code, ID, architecture, global and active flags. Rows sort by name
    // case-insensitively; IDs keep the scan's order.
    QStringList rows;
    for (const AUItemPtr &it : au->items()) {
        int loc = 0;
        while (loc < 4 && it->getAULocation() != folder(TypeAU, loc))
            ++loc;
        rows << QString("%1 %2 #%3 %4 %5")
                        .arg(it->getAUName(), QString::number(loc),
                             QString::number(it->getItemID()), it->getAUType(),
                             it->getAUGlobal() ? "1" : "0")
                    + (it->getAUActive() ? "1" : "0");
    }
    EXPECT_EQ(rows, QStringList({"alpha.component 0 #1 Universal Binary 11",
                                 "Mine.component 3 #5 Unknown 00", "notacomponent 0 #2 PPC 11",
                                 "Off.component 1 #3 Unknown 10", "Zeta.component 0 #0 PPC 11",
                                 "Zeta.component 2 #4 Intel 01"}));
    EXPECT_EQ(au->plugins().records().size(), 6);
    EXPECT_FALSE(au->isApplyEnabled());
}

TEST_F(ScanTest, ProgressNamesEachFolderAsWrittenAndStepsToTwentyFive)
{
    addAU(LocSystemActive, "A.component");
    addAU(LocSystemActive, "B.component");
    addAU(LocUserActive, "C.component");
    au->reloadData();
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
    ScriptedUi &vstUi = ui;
    vstUi = ScriptedUi();
    setPref("VSTScanSubfolders", false);
    context->vst.reloadData();
    EXPECT_EQ(vstUi.progressTitles, QStringList({"scan VST-Plugins:"}));
    EXPECT_EQ(vstUi.progressTexts,
              QStringList({"scan for VST-Plugins:~/Library/Audio/Plug-Ins/VST (Disabled)"}));
    EXPECT_EQ(vstUi.progressValues, QList<double>({0, 5, 10, 15, 20}));
    EXPECT_EQ(context->vst.numberOfRowsInTableView(), 4);
}

TEST_F(ScanTest, MissingFoldersAreCreatedPerFormat)
{
    au->reloadData();
    context->vst.reloadData();
    context->mas.reloadData();
    context->rtas.reloadData();
    for (int type : {TypeAU, TypeVST, TypeMAS, TypeRTAS})
        for (int loc = 0; loc < 4; ++loc) // Audio Units make only their disabled folders
            EXPECT_EQ(QFileInfo(folder(type, loc)).isDir(), type != TypeAU || loc % 2 == 1)
                << type << " " << loc;

    // A failed creation only means the folder gives nothing.
    QDir(rootPath("Library/Audio/Plug-Ins")).removeRecursively();
    au->reloadData();
    EXPECT_FALSE(exists(folder(TypeAU, 1)));
    EXPECT_TRUE(au->items().isEmpty());
}

TEST_F(ScanTest, SubfoldersAreScannedInAllFourFolders)
{
    PluginLibraryBuilder::makeVST(folder(TypeVST, 2) + "/Sub", "Foo.vst", MachO::intel());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 2), "Top.vst", MachO::ppc());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 3) + "/Sub", "Off.vst", MachO::intel());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 3), "Off.vst", MachO::intel());
    PluginLibraryBuilder::makeVST(folder(TypeVST, 1) + "/Deep/Er", "Sys.vst", MachO::intel());
    // Siblings whose names merely begin like a bundle's are plug-ins of their own.
    for (const char *name : {"Echo.vst", "Echo.vst copy.vst", "Echo.vst2.vst"})
        PluginLibraryBuilder::makeVST(folder(TypeVST, 0) + "/Fx", name, MachO::intel());

    MyVSTObj *vst = &context->vst;
    setPref("VSTScanSubfolders", true);
    vst->reloadData();
    // Bundles are collapsed: nothing inside a .vst is listed on its own.
    EXPECT_EQ(names(vst), QStringList({"Deep/Er/Sys.vst", "Fx/Echo.vst", "Fx/Echo.vst copy.vst",
                                       "Fx/Echo.vst2.vst", "Off.vst", "Sub/Foo.vst", "Sub/Off.vst",
                                       "Top.vst"}));
    const AUItemPtr foo = item(vst, "Sub/Foo.vst");
    EXPECT_EQ(foo->getAULocation(), folder(TypeVST, 2));
    EXPECT_EQ(foo->getPlattformIdent(), "Intel");
    const AUItemPtr off = item(vst, "Sub/Off.vst");
    ASSERT_TRUE(off);
    EXPECT_EQ(off->getAULocation(), folder(TypeVST, 3));

    setPref("VSTScanSubfolders", false);
    vst->reloadData();
    EXPECT_EQ(names(vst), QStringList({"Off.vst", "Top.vst"}));
}

} // namespace korvane
