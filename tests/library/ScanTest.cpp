#include "FormatManagerFixture.h"

#include "core/Recognition.h"
#include "library/FormatTraits.h"

namespace korvane {

using ScanTest = FormatManagerFixture;

TEST_F(ScanTest, AudioUnitItemsMirrorTheFourFolders)
{
    B::makeAudioUnit(folder(TypeAU, 0), "Zeta.component", MachO::ppc());
    B::makeAudioUnit(folder(TypeAU, 0), "alpha.component", MachO::universal2());
    for (const char *name :
         {"notacomponent", "Foo.COMPONENT", "Foo.component.zip", ".DS_Store", "._Zeta.component"})
        B::makeFile(folder(TypeAU, 0), name);
    B::makeAudioUnit(folder(TypeAU, 1), "Off.component", MachO::universal3());
    B::makeAudioUnit(folder(TypeAU, 2), "Zeta.component", MachO::intel());
    B::makeAudioUnit(folder(TypeAU, 3), "Mine.component", MachO::x86_64());
    au->rescan();

    // name, location code, ID, architecture, global and active flags. Rows sort by name
    // case-insensitively; IDs keep the scan's order.
    QStringList rows;
    for (const PluginPtr &it : au->items()) {
        int loc = 0;
        while (loc < 4 && it->location() != folder(TypeAU, loc))
            ++loc;
        rows << QString("%1 %2 #%3 ").arg(it->name()).arg(loc).arg(it->id())
                    + it->architectureName() + (it->isGlobal() ? " 1" : " 0")
                    + (it->isActive() ? "1" : "0");
    }
    EXPECT_EQ(rows, QStringList({"alpha.component 0 #1 Universal Binary 11",
                                 "Mine.component 3 #5 Unknown 00", "notacomponent 0 #2 PPC 11",
                                 "Off.component 1 #3 Unknown 10", "Zeta.component 0 #0 PPC 11",
                                 "Zeta.component 2 #4 Intel 01"}));
    EXPECT_FALSE(au->isApplyEnabled());

    // A name held twice is reported once; the architecture switch marks only its builds.
    au->reportDuplicates();
    EXPECT_EQ(logText().section('\n', 1), "Plugin Zeta.component is found 2 times\n");
    au->setArchitectureActive(3, false);
    EXPECT_FALSE(item(au, "alpha.component")->isActive());
    EXPECT_TRUE(item(au, "Zeta.component")->isActive() && au->isApplyEnabled());
}

// Each folder is named as written, empty ones show nothing, the bar keeps its last value. A scan
// makes a format's missing folders, Audio Units only their disabled ones.
TEST_F(ScanTest, ProgressStepsToTwentyFiveAndMissingFoldersAreMade)
{
    addAU(LocSystemActive, "A.component");
    addAU(LocSystemActive, "B.component");
    addAU(LocUserDisabled, "C.component");
    au->rescan();
    EXPECT_EQ(ui.progressTexts,
              QStringList({"scan for AudioUnits:/Library/Audio/Plug-Ins/Components",
                           "scan for AudioUnits:~/Library/Audio/Plug-Ins/Components (Disabled)"}));
    EXPECT_EQ(ui.progressValues, QList<double>({12, 25, 25}));

    vst->rescan();
    context->mas.rescan();
    context->rtas.rescan();
    for (int type : {TypeAU, TypeVST, TypeMAS, TypeRTAS})
        for (int loc = 0; loc < 4; ++loc)
            EXPECT_EQ(QFileInfo(folder(type, loc)).isDir(), type != TypeAU || loc != LocUserActive)
                << type << " " << loc;

    // A failed creation only means the folder gives nothing.
    QDir(rootPath("Library/Audio/Plug-Ins")).removeRecursively();
    au->rescan();
    EXPECT_FALSE(exists(folder(TypeAU, 1)));
    EXPECT_EQ(names(au), QStringList{"C.component"});
}

TEST_F(ScanTest, SubfoldersAreScannedInAllFourFolders)
{
    B::makeVST(folder(TypeVST, 2) + "/Sub", "Foo.vst", MachO::intel());
    B::makeVST(folder(TypeVST, 2), "Top.vst", MachO::ppc());
    B::makeVST(folder(TypeVST, 1) + "/Deep/Er", "Sys.vst", MachO::intel());
    // Siblings whose names merely begin like a bundle's are plug-ins of their own.
    for (const char *name : {"Echo.vst", "Echo.vst copy.vst", "Echo.vst2.vst"})
        B::makeVST(folder(TypeVST, 0) + "/Fx", name, MachO::intel());

    setPref("VSTScanSubfolders", true);
    vst->rescan();
    // Bundles are collapsed: nothing inside a .vst is listed on its own.
    EXPECT_EQ(names(vst), QStringList({"Deep/Er/Sys.vst", "Fx/Echo.vst", "Fx/Echo.vst copy.vst",
                                       "Fx/Echo.vst2.vst", "Sub/Foo.vst", "Top.vst"}));
    EXPECT_EQ(item(vst, "Sub/Foo.vst")->location(), folder(TypeVST, 2));

    setPref("VSTScanSubfolders", false);
    vst->rescan();
    EXPECT_EQ(names(vst), QStringList({"Top.vst"}));
}

TEST_F(ScanTest, FilesNeedTheirFinderTypeFoldersArePackagesOfTheFormatsKind)
{
    const QString dir = rootPath("plugins");
    const auto file = [&](const QString &name, const QString &type = {}) {
        return B::makeFile(dir, name, type);
    };
    const auto bundle = [&](const QString &name, const QVariantMap &info = {},
                            B::PlistFormat format = B::Xml) {
        return B::makeBundle(dir, name, MachO::intel(), info, format);
    };
    const auto package = [&](const QString &name) { return B::makeFolder(dir + "/" + name); };
    const auto broken = [&](const QString &name, const QByteArray &info) { // damaged Info.plist
        writeText(package(name + "/Contents") + "/Info.plist", info);
        return dir + "/" + name;
    };
    const struct {
        Recognition test;
        const char *type;
    } formats[] = {
        {&isVSTPlugInPath, "aPcs"}, {&isRTASPlugInPath, "TDMw"}, {&isMASPlugInPath, "Mas!"}};
    for (const auto &f : formats) {
        SCOPED_TRACE(f.type);
        const auto test = [&f](const QString &path) { return f.test(path, nullptr); };
        EXPECT_TRUE(test(file(QString("Plug") + f.type, f.type)));
        EXPECT_FALSE(test(file(QString(".Hidden") + f.type, f.type)));
        EXPECT_FALSE(test(file("Other", "TEXT")));
        EXPECT_FALSE(test(file("Untyped")));
        EXPECT_FALSE(test(dir + "/Missing"));
    }
    const QVariantMap tdmw{{"CFBundlePackageType", "TDMw"}};
    const struct {
        Recognition test;
        QString path;
        bool expected;
    } cases[] = {
        {&isVSTPlugInPath, B::makeVST(dir, "Foo.vst", MachO::ppc()), true},
        {&isVSTPlugInPath, package("Bare.vst"), true},
        {&isVSTPlugInPath, bundle("Foo.vst3"), false},
        {&isVSTPlugInPath, file("Loose.vst"), false},    // a file needs the Finder type
        {&isVSTPlugInPath, file("Rtas", "TDMw"), false}, // each format wants its own type
        {&isRTASPlugInPath, B::makeRTAS(dir, "Eq.rtas", MachO::ppc()), true},
        {&isRTASPlugInPath, bundle("Bin.dpm", tdmw, B::Binary), true},
        {&isRTASPlugInPath, bundle("Bndl.dpm", {{"CFBundlePackageType", "BNDL"}}), false},
        {&isRTASPlugInPath, package("NoInfo.dpm"), false},
        {&isRTASPlugInPath, file("Fake.rtas"), false}, // named like a package, but a file
        {&isRTASPlugInPath, file("Typed.rtas", "TDMw"), true},
        {&isRTASPlugInPath, broken("Broken.dpm", QByteArray("bplist00\xff\xff\x01garbage", 18)),
         false},
        {&isMASPlugInPath, B::makeMAS(dir, "Comp.bundle", MachO::ppc()), true},
        {&isMASPlugInPath, B::makeMAS(dir, "Comp", MachO::ppc(), B::Binary), true},
        {&isMASPlugInPath, bundle("Empty.bundle", {{"MotuPluginTypeUUID", ""}}), false},
        {&isMASPlugInPath, package("Folder"), false},
        {&isMASPlugInPath, broken("Broken.bundle", "<?xml version=\"1.0\"?><plist><dict><key>Mo"),
         false},
        // AppleDouble sidecars carry their owner's name but are never plug-ins.
        {&isMASPlugInPath, B::makeMAS(dir, "._Comp.bundle", MachO::ppc()), false},
        // Nor is what a move cut short leaves beside its source and its target, whole as it is.
        {&isAudioUnitName, ".Foo.component.korvane-partial.component", true},
        {&isMASPlugInPath, B::makeMAS(dir, ".Comp.bundle.korvane-removing.2", MachO::ppc()), false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.test(c.path, nullptr), c.expected) << c.path.section('/', -1).toStdString();
}

} // namespace korvane
