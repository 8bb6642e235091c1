#include "codec/Vst3ModuleInfo.h"
#include "codec/ElfHeader.h"

#include "LinuxPluginFixtures.h"
#include "support/TestRoots.h"

#include <QDir>

// VST 3 module descriptions and bundle architectures, on bundles shaped around real ELF objects.
namespace korvane {
namespace {

using F = LinuxPluginFixtures;

const QString kCid = QStringLiteral("B9F9ADE1CD9C4B6DA57E61E3123535FD");

class Vst3ModuleInfoTest : public TestRoots {};

TEST_F(Vst3ModuleInfoTest, ReadsAShapedBundleAsAHostWould)
{
    const QString elf = QStringLiteral("/usr/lib/vst/MVerb-vst.so");
    if (!F::systemHas(elf))
        GTEST_SKIP() << "dpf-plugins-vst is not installed (tools/setup.sh)";
    const QString source = F::copyFromSystem(elf, root());
    const QString bundle = F::makeVst3Bundle(home() + "/.vst3", "Squash", source,
                                             F::moduleInfo("Squash", "Velmora Audio", kCid, "SqSh"),
                                             {"x86_64-linux", "aarch64-linux", "x86_64-win"});
    ASSERT_FALSE(bundle.isEmpty());

    QFile file(bundle + "/Contents/Resources/moduleinfo.json");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString error;
    const auto info = Vst3ModuleInfo::parse(file.readAll(), &error);
    ASSERT_TRUE(info) << qPrintable(error);
    EXPECT_EQ(info->name, "Squash");
    EXPECT_EQ(info->version, "1.2.0.7");
    EXPECT_EQ(info->vendor, "Velmora Audio");
    EXPECT_EQ(info->url, "https://example.org");
    EXPECT_EQ(info->email, "mailto:plugins@example.org");
    ASSERT_EQ(info->classes.size(), 2);
    ASSERT_EQ(info->audioModules().size(), 1);
    const Vst3ModuleInfo::Class processor = info->audioModules().first();
    EXPECT_EQ(processor.cid, kCid);
    EXPECT_EQ(processor.subCategories, QStringList({"Fx", "Dynamics"}));
    EXPECT_EQ(processor.sdkVersion, "VST 3.7.9");
    ASSERT_EQ(info->compatibility.size(), 1);
    EXPECT_EQ(info->compatibility[0].newCid, kCid);
    ASSERT_EQ(info->compatibility[0].old.size(), 1);
    EXPECT_EQ(info->compatibility[0].old[0].vst2IdText(), "SqSh");

    const QStringList names =
        QDir(bundle + "/Contents").entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    QStringList architectures;
    for (const auto &entry : Vst3Architectures::fromFolderNames(names))
        architectures << entry.architecture + "/" + entry.system;
    EXPECT_EQ(architectures, QStringList({"aarch64/Linux", "x86_64/Linux", "x86_64/Windows"}));
    EXPECT_EQ(ElfHeader::read(bundle + "/Contents/aarch64-linux/Squash.so").describe(), "x86_64")
        << "the folder name is a claim; the binary's header says what it really is";
}

TEST_F(Vst3ModuleInfoTest, Vst2IdsAreReadFromTheSdksForm)
{
    EXPECT_EQ(Vst3ModuleInfo::vst2IdFromCid(F::vst2Cid("Abcd", "Gain")), 0x41626364u);
    // The controller's form starts with "VSE".
    EXPECT_EQ(Vst3ModuleInfo::vst2IdFromCid("565345416263646761696E0000000000"), 0x41626364u);
    EXPECT_FALSE(Vst3ModuleInfo::vst2IdFromCid(kCid));
    EXPECT_FALSE(Vst3ModuleInfo::vst2IdFromCid("565354"));
    EXPECT_FALSE(Vst3ModuleInfo::vst2IdFromCid("565354ZZZZZZZZ6761696E0000000000"));
    Vst3ModuleInfo::OldId unprintable{QString(), 0x00010203u};
    EXPECT_EQ(unprintable.vst2IdText(), "0x00010203");
}

TEST_F(Vst3ModuleInfoTest, WrongTypesLeaveFieldsEmptyAndBrokenTextIsRefused)
{
    QString error;
    const auto odd = Vst3ModuleInfo::parse(R"({Name: 7, "Factory Info": [], Classes: {},
        Compatibility: [{New: "A", Old: "B"}, 5, {Old: []}]})",
                                           &error);
    ASSERT_TRUE(odd) << qPrintable(error);
    EXPECT_TRUE(odd->name.isEmpty());
    EXPECT_TRUE(odd->vendor.isEmpty());
    EXPECT_TRUE(odd->classes.isEmpty());
    ASSERT_EQ(odd->compatibility.size(), 1); // entries without a new ID are dropped
    EXPECT_EQ(odd->compatibility[0].old.size(), 1);

    EXPECT_FALSE(Vst3ModuleInfo::parse("{\n  \"Name\": \"Gain\"\n  \"Version\": 1\n}", &error));
    EXPECT_EQ(error, "not JSON5: line 3, column 3: expected ',' or '}'");
    EXPECT_FALSE(Vst3ModuleInfo::parse("[1, 2]", &error));
    EXPECT_EQ(error, "not a module description: the top value is not an object");
}

TEST_F(Vst3ModuleInfoTest, ArchitectureFoldersAreKnownByName)
{
    const QStringList names{"Resources", "x86_64-linux", "i386-linux", "armv7l-linux",
                            "arm64-win", "arm64ec-win",  "x86-win",    "Info.plist",
                            "MacOS",     "x86_64-Linux", "PkgInfo"};
    QStringList seen;
    for (const auto &entry : Vst3Architectures::fromFolderNames(names))
        seen << entry.architecture;
    EXPECT_EQ(seen, QStringList({"x86_64", "i386", "armv7l", "arm64", "arm64ec", "x86"}));
    const auto withMac = Vst3Architectures::fromFolderNames({"MacOS"}, true);
    ASSERT_EQ(withMac.size(), 1);
    EXPECT_EQ(withMac[0].system, "macOS");
}

} // namespace
} // namespace korvane
