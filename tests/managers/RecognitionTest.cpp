#include "PluginLibraryBuilder.h"
#include "managers/FormatTraits.h"
#include "support/TestRoots.h"

#include <QDir>

namespace korvane {

class RecognitionTest : public TestRoots {
protected:
    QString dir() const { return rootPath("plugins"); }
    QString bundle(const QString &name, const QVariantMap &info = {},
                   PluginLibraryBuilder::PlistFormat format = PluginLibraryBuilder::Xml) const
    {
        return PluginLibraryBuilder::makeBundle(dir(), name, MachO::intel(), info, format);
    }
    QString file(const QString &name, const QString &type = {}) const
    {
        return PluginLibraryBuilder::makeFile(dir(), name, type);
    }
};

TEST_F(RecognitionTest, AudioUnitsAreRecognisedByTheEndOfTheirName)
{
    EXPECT_TRUE(isAudioUnitName("Foo.component"));
    EXPECT_TRUE(isAudioUnitName("notacomponent"));
    EXPECT_FALSE(isAudioUnitName("Foo.COMPONENT"));
    EXPECT_FALSE(isAudioUnitName("Foo.component.zip"));
    EXPECT_FALSE(isAudioUnitName(".DS_Store"));
    EXPECT_FALSE(isAudioUnitName(""));
}

TEST_F(RecognitionTest, PlainFilesNeedTheirFinderTypeAndMustNotBeHidden)
{
    struct Case {
        bool (*test)(const QString &);
        const char *type;
    };
    for (const Case &c : {Case{&isVSTPlugInPath, "aPcs"}, Case{&isRTASPlugInPath, "TDMw"},
                          Case{&isMASPlugInPath, "Mas!"}}) {
        SCOPED_TRACE(c.type);
        QDir(dir()).removeRecursively();
        EXPECT_TRUE(c.test(file("Plug", c.type)));
        EXPECT_FALSE(c.test(file(".DS_Store", c.type)));
        EXPECT_FALSE(c.test(file("Other", "TEXT")));
        EXPECT_FALSE(c.test(file("Untyped")));
        EXPECT_FALSE(c.test(dir() + "/Missing"));
    }
    // Each format wants its own type.
    EXPECT_FALSE(isVSTPlugInPath(file("Rtas", "TDMw")));
    EXPECT_FALSE(isMASPlugInPath(file("Vst", "aPcs")));
}

TEST_F(RecognitionTest, VSTFoldersArePackagesNamedVst)
{
    EXPECT_TRUE(isVSTPlugInPath(PluginLibraryBuilder::makeVST(dir(), "Foo.vst", MachO::ppc())));
    EXPECT_TRUE(isVSTPlugInPath(PluginLibraryBuilder::makeFolder(dir() + "/Bare.vst")));
    EXPECT_FALSE(isVSTPlugInPath(bundle("Foo.vst3")));
    EXPECT_FALSE(isVSTPlugInPath(bundle("Foo.bundle")));
    EXPECT_FALSE(isVSTPlugInPath(PluginLibraryBuilder::makeFolder(dir() + "/Plain")));
    EXPECT_FALSE(isVSTPlugInPath(file("Loose.vst"))); // a file needs the Finder type
}

TEST_F(RecognitionTest, RTASFoldersAreRtasPackagesOrTDMwDpmPackages)
{
    const QVariantMap tdmw{{"CFBundlePackageType", "TDMw"}};
    EXPECT_TRUE(isRTASPlugInPath(PluginLibraryBuilder::makeRTAS(dir(), "Eq.rtas", MachO::ppc())));
    EXPECT_TRUE(isRTASPlugInPath(PluginLibraryBuilder::makeRTAS(dir(), "Eq.dpm", MachO::ppc())));
    EXPECT_TRUE(isRTASPlugInPath(bundle("Bin.dpm", tdmw, PluginLibraryBuilder::Binary)));
    EXPECT_FALSE(isRTASPlugInPath(bundle("Bndl.dpm", {{"CFBundlePackageType", "BNDL"}})));
    EXPECT_FALSE(isRTASPlugInPath(PluginLibraryBuilder::makeFolder(dir() + "/NoInfo.dpm")));
    EXPECT_FALSE(isRTASPlugInPath(bundle("Named.bundle", tdmw)));
    // A plain file named like a package is not one; only its Finder type could make it a plug-in.
    EXPECT_FALSE(isRTASPlugInPath(file("Fake.rtas")));
    EXPECT_TRUE(isRTASPlugInPath(file("Typed.rtas", "TDMw")));

    const QString broken = PluginLibraryBuilder::makeFolder(dir() + "/Broken.dpm/Contents");
    writeText(broken + "/Info.plist", QByteArray("bplist00\xff\xff\x01garbage", 18));
    EXPECT_FALSE(isRTASPlugInPath(dir() + "/Broken.dpm"));
}

TEST_F(RecognitionTest, MASFoldersArePackagesWithAPluginTypeUUID)
{
    EXPECT_TRUE(isMASPlugInPath(PluginLibraryBuilder::makeMAS(dir(), "Comp.bundle", MachO::ppc())));
    EXPECT_TRUE(isMASPlugInPath(
        PluginLibraryBuilder::makeMAS(dir(), "Comp", MachO::ppc(), PluginLibraryBuilder::Binary)));
    EXPECT_FALSE(isMASPlugInPath(bundle("Empty.bundle", {{"MotuPluginTypeUUID", ""}})));
    EXPECT_FALSE(isMASPlugInPath(bundle("None.bundle")));
    EXPECT_FALSE(isMASPlugInPath(PluginLibraryBuilder::makeFolder(dir() + "/Folder")));

    const QString broken = PluginLibraryBuilder::makeFolder(dir() + "/Broken.bundle/Contents");
    writeText(broken + "/Info.plist", "<?xml version=\"1.0\"?><plist><dict><key>MotuPlugin");
    EXPECT_FALSE(isMASPlugInPath(dir() + "/Broken.bundle"));
}

} // namespace korvane
