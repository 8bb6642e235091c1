#include "PluginLibraryBuilder.h"
#include "managers/FormatTraits.h"
#include "support/TestRoots.h"

namespace korvane {

using Builder = PluginLibraryBuilder;

class RecognitionTest : public TestRoots {
protected:
    QString dir() const { return rootPath("plugins"); }
    QString bundle(const QString &name, const QVariantMap &info = {},
                   Builder::PlistFormat format = Builder::Xml) const
    {
        return Builder::makeBundle(dir(), name, MachO::intel(), info, format);
    }
    QString file(const QString &name, const QString &type = {}) const
    {
        return Builder::makeFile(dir(), name, type);
    }
    QString folder(const QString &name) const { return Builder::makeFolder(dir() + "/" + name); }
    // A package whose Info.plist is cut short or damaged.
    QString broken(const QString &name, const QByteArray &info) const
    {
        writeText(folder(name + "/Contents") + "/Info.plist", info);
        return dir() + "/" + name;
    }
};

TEST_F(RecognitionTest, FilesNeedTheirFinderTypeFoldersArePackagesOfTheFormatsKind)
{
    const struct {
        bool (*test)(const QString &);
        const char *type;
    } formats[] = {
        {&isVSTPlugInPath, "aPcs"}, {&isRTASPlugInPath, "TDMw"}, {&isMASPlugInPath, "Mas!"}};
    for (const auto &f : formats) {
        SCOPED_TRACE(f.type);
        EXPECT_TRUE(f.test(file(QString("Plug") + f.type, f.type)));
        EXPECT_FALSE(f.test(file(QString(".Hidden") + f.type, f.type)));
        EXPECT_FALSE(f.test(file("Other", "TEXT")));
        EXPECT_FALSE(f.test(file("Untyped")));
        EXPECT_FALSE(f.test(dir() + "/Missing"));
    }
    const QVariantMap tdmw{{"CFBundlePackageType", "TDMw"}};
    const struct {
        bool (*test)(const QString &);
        QString path;
        bool expected;
    } cases[] = {
        {&isVSTPlugInPath, Builder::makeVST(dir(), "Foo.vst", MachO::ppc()), true},
        {&isVSTPlugInPath, folder("Bare.vst"), true},
        {&isVSTPlugInPath, bundle("Foo.vst3"), false},
        {&isVSTPlugInPath, file("Loose.vst"), false},    // a file needs the Finder type
        {&isVSTPlugInPath, file("Rtas", "TDMw"), false}, // each format wants its own type
        {&isRTASPlugInPath, Builder::makeRTAS(dir(), "Eq.rtas", MachO::ppc()), true},
        {&isRTASPlugInPath, bundle("Bin.dpm", tdmw, Builder::Binary), true},
        {&isRTASPlugInPath, bundle("Bndl.dpm", {{"CFBundlePackageType", "BNDL"}}), false},
        {&isRTASPlugInPath, folder("NoInfo.dpm"), false},
        {&isRTASPlugInPath, bundle("Named.bundle", tdmw), false},
        {&isRTASPlugInPath, file("Fake.rtas"), false}, // named like a package, but a file
        {&isRTASPlugInPath, file("Typed.rtas", "TDMw"), true},
        {&isRTASPlugInPath, broken("Broken.dpm", QByteArray("bplist00\xff\xff\x01garbage", 18)),
         false},
        {&isMASPlugInPath, Builder::makeMAS(dir(), "Comp.bundle", MachO::ppc()), true},
        {&isMASPlugInPath, Builder::makeMAS(dir(), "Comp", MachO::ppc(), Builder::Binary), true},
        {&isMASPlugInPath, bundle("Empty.bundle", {{"MotuPluginTypeUUID", ""}}), false},
        {&isMASPlugInPath, folder("Folder"), false},
        {&isMASPlugInPath, broken("Broken.bundle", "<?xml version=\"1.0\"?><plist><dict><key>Mo"),
         false},
        // AppleDouble sidecars carry their owner's name but are never plug-ins.
        {&isAudioUnitName, "Foo.component", true},
        {&isAudioUnitName, "._Foo.component", false},
        {&isVSTPlugInPath, folder("._Bare.vst"), false},
        {&isMASPlugInPath, Builder::makeMAS(dir(), "._Comp.bundle", MachO::ppc()), false},
        // Nor is what a move cut short leaves beside its source and its target, whole as it is.
        {&isAudioUnitName, ".Foo.component.korvane-partial.component", true},
        {&isMASPlugInPath, Builder::makeMAS(dir(), ".Comp.bundle.korvane-removing.2", MachO::ppc()),
         false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.test(c.path), c.expected) << c.path.section('/', -1).toStdString();
}

} // namespace korvane
