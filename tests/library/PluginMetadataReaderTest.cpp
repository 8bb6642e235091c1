#include "library/PluginMetadataReader.h"
#include "LinuxPluginFixtures.h"
#include "core/FormatTable.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QFile>
#include <QThread>

namespace korvane {
namespace {

class PluginMetadataReaderTest : public TestRoots {
protected:
    static const Format &row(const char *name)
    {
        return FormatTable::builtIn().at(*FormatTable::builtIn().typeOfName(name));
    }
};

TEST_F(PluginMetadataReaderTest, AnUnchangedPlugInIsReadOnceAndAChangedFileIsReadAgain)
{
    const QString bundle = homePath(".lv2/Tone.lv2");
    QDir().mkpath(bundle);
    writeText(
        bundle + "/manifest.ttl",
        "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
        "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
        "<urn:korvane:tone> a lv2:Plugin ; lv2:binary <tone.so> ; rdfs:seeAlso <tone.ttl> .\n");
    writeText(bundle + "/tone.ttl", "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
                                    "<urn:korvane:tone> doap:name \"Tone\" .\n");
    PluginMetadataReader reader(row("lv2"), locations());
    const auto first = reader.read(LocUserActive, "Tone.lv2", bundle);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->name, "Tone");
    EXPECT_EQ(reader.read(LocUserActive, "Tone.lv2", bundle), first);
    EXPECT_EQ(reader.cacheHits(), 1);

    // The data file a plug-in names changes size: read again, with the new name.
    writeText(bundle + "/tone.ttl", "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
                                    "<urn:korvane:tone> doap:name \"Tone Two\" .\n");
    EXPECT_EQ(reader.read(LocUserActive, "Tone.lv2", bundle)->name, "Tone Two");
    EXPECT_EQ(reader.reads(), 2);

    // The formats of the first four show no metadata of this kind.
    PluginMetadataReader audioUnits(FormatTable::builtIn().at(TypeAU), locations());
    EXPECT_EQ(audioUnits.read(LocUserActive, "Tone.lv2", bundle), nullptr);
}

// A rescan stats only what the first read stamped: each change that alters what the bundle says
// must touch one of those.
TEST_F(PluginMetadataReaderTest, AVst3RescanSeesANewArchitectureANewModuleInfoAndAFileInItsPlace)
{
    const QString bundle = homePath(".vst3/Echo.vst3");
    QDir().mkpath(bundle + "/Contents/x86_64-linux");
    PluginMetadataReader reader(row("vst3"), locations());
    const auto read = [&] { return reader.read(LocUserActive, "Echo.vst3", bundle); };
    EXPECT_EQ(read()->architectures, QStringList{"x86_64"});
    EXPECT_EQ(read()->vendor, "");
    EXPECT_EQ(reader.reads(), 1);

    QDir().mkpath(bundle + "/Contents/aarch64-linux");
    EXPECT_EQ(read()->architectures, (QStringList{"aarch64", "x86_64"}));

    QDir().mkpath(bundle + "/Contents/Resources");
    writeText(bundle + "/Contents/Resources/moduleinfo.json",
              "{ \"Name\": \"Echo\", \"Version\": \"2.0\",\n"
              "  \"Factory Info\": { \"Vendor\": \"Velmora\", }, }");
    EXPECT_EQ(read()->vendor, "Velmora");
    EXPECT_EQ(reader.reads(), 3);
    EXPECT_EQ(read()->vendor, "Velmora");
    EXPECT_EQ(reader.reads(), 3);

    // An older module, a single file, put where the bundle was.
    ASSERT_TRUE(QDir(bundle).removeRecursively());
    writeText(bundle, "#!/bin/sh\n");
    EXPECT_TRUE(read()->unreadable.contains("not an ELF file"));
    EXPECT_TRUE(read()->architectures.isEmpty());
    EXPECT_EQ(reader.reads(), 4);
}

TEST_F(PluginMetadataReaderTest, EveryFormatAsksOnePackageDatabaseAndAnInstallIsSeenAtTheNextScan)
{
    const QString info = rootPath("var/lib/dpkg/info");
    QDir().mkpath(info);
    QDir().mkpath(rootPath("usr/lib/ladspa"));
    QDir().mkpath(rootPath("usr/lib/lv2/Tone.lv2"));
    writeText(rootPath("usr/lib/ladspa/amp.so"), "not an ELF file");
    writeText(info + "/amp-plugins:amd64.list", "/usr/lib/ladspa\n/usr/lib/ladspa/amp.so\n");
    const QStringList folders{"/usr/lib/ladspa", "/usr/lib/lv2"};
    PluginMetadataReader ladspa(row("ladspa"), locations(), folders);
    PluginMetadataReader lv2(row("lv2"), locations(), folders);
    const int loc = 4; // the second system pair's active folder: /usr/lib/<name>
    ASSERT_TRUE(row("ladspa").isDistributionOwned(loc));
    ASSERT_TRUE(row("lv2").isDistributionOwned(loc));
    ladspa.beginScan();
    lv2.beginScan();
    EXPECT_EQ(ladspa.read(loc, "amp.so", rootPath("usr/lib/ladspa/amp.so"))->package,
              "amp-plugins:amd64");
    EXPECT_EQ(lv2.read(loc, "Tone.lv2", rootPath("usr/lib/lv2/Tone.lv2"))->package, "");
    EXPECT_EQ(ladspa.packageDatabase(), lv2.packageDatabase());

    // A package that arrives between two scans is named at the second, the files unchanged.
    // (Past the file system's clock tick, so that the info folder's time moves.)
    QThread::msleep(20);
    writeText(info + "/tone-lv2.list", "/usr/lib/lv2/Tone.lv2\n");
    EXPECT_EQ(lv2.read(loc, "Tone.lv2", rootPath("usr/lib/lv2/Tone.lv2"))->package, "")
        << "asked once per scan";
    lv2.beginScan();
    EXPECT_EQ(lv2.read(loc, "Tone.lv2", rootPath("usr/lib/lv2/Tone.lv2"))->package, "tone-lv2");
    EXPECT_EQ(lv2.reads(), 1) << "only the package was asked again";
}

TEST_F(PluginMetadataReaderTest, SharedObjectsSayTheirArchitectureOrPlainlyWhatTheyAreNot)
{
    const Format &ladspa = row("ladspa");
    const QString folder = homePath(".ladspa");
    QDir().mkpath(folder);
    writeText(folder + "/short.so", "\x7f"
                                    "ELF");
    writeText(folder + "/text.so", "#!/bin/sh\n");
    EXPECT_TRUE(PluginMetadataReader::readUncached(ladspa, folder + "/short.so")
                    .unreadable.startsWith("cannot be read: "));
    EXPECT_TRUE(PluginMetadataReader::readUncached(ladspa, folder + "/text.so")
                    .unreadable.contains("not an ELF file"));
}

// An LV2 bundle's architectures are those of the shared objects its manifest names inside it:
// Debian's real 3-band EQ says x86_64 (or whatever this machine builds), and a binary the
// manifest names outside the bundle is not read.
TEST_F(PluginMetadataReaderTest, AnLv2BundleNamesTheArchitecturesOfItsOwnBinaries)
{
    const QString system = QStringLiteral("/usr/lib/lv2/3BandEQ.lv2");
    if (!LinuxPluginFixtures::systemHas(system))
        GTEST_SKIP() << "dpf-plugins-lv2 is not installed";
    const QString bundle = LinuxPluginFixtures::copyFromSystem(system, root());
    ASSERT_FALSE(bundle.isEmpty());
    const PluginMetadata real = PluginMetadataReader::readUncached(row("lv2"), bundle);
    EXPECT_TRUE(real.unreadable.isEmpty()) << real.unreadable.toStdString();
    ASSERT_EQ(real.architectures.size(), 1);
    EXPECT_FALSE(real.architectures.first().isEmpty());

    const QString outside = homePath(".lv2/Outside.lv2");
    QDir().mkpath(outside);
    writeText(outside + "/manifest.ttl",
              "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
              "<urn:korvane:outside> a lv2:Plugin ; lv2:binary <../Tone.lv2/tone.so> .\n");
    EXPECT_TRUE(PluginMetadataReader::readUncached(row("lv2"), outside).architectures.isEmpty());
}

} // namespace
} // namespace korvane
