#include "codec/Bundle.h"
#include "codec/MachOHeader.h"
#include "os/ScanCache.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace korvane {
namespace {

using B = PluginLibraryBuilder;

class BundleTest : public TestRoots {};

TEST_F(BundleTest, InfoExecutableAndFirstBytes)
{
    const QString folder = homePath("VST");
    const QString xml = B::makeVST(folder, "Xml.vst", MachO::intel());
    const QString binary = B::makeVST(folder, "Bin.vst", MachO::ppc(), B::Binary);
    for (const QString &bundle : {xml, binary}) {
        EXPECT_EQ(Bundle::infoValue(bundle, "CFBundleExecutable").toString(), "Plugin");
        EXPECT_EQ(Bundle::executablePath(bundle), bundle + "/Contents/MacOS/Plugin");
    }
    EXPECT_EQ(MachOHeader::firstBytes(Bundle::executablePath(binary)), MachO::ppc());

    // No key, no file, a name that climbs out of Contents/MacOS, a broken Info.plist: no path.
    const QString noKey = B::makeBundle(folder, "NoKey.vst", MachO::intel(), {}, B::Xml, {});
    const QString noFile = B::makeVST(folder, "NoFile.vst", MachO::intel());
    ASSERT_TRUE(QFile::remove(noFile + "/Contents/MacOS/Plugin"));
    const QVariantMap climb{{"CFBundleExecutable", "../Info.plist"}};
    const QString climbing = B::makeBundle(folder, "Climb.vst", MachO::intel(), climb);
    const QString garbage = B::makeVST(folder, "Garbage.vst", MachO::intel());
    writeText(garbage + "/Contents/Info.plist", "<plist><dict><key>CFBundleExecutable");
    for (const QString &bundle : {noKey, noFile, climbing, garbage})
        EXPECT_TRUE(Bundle::executablePath(bundle).isEmpty()) << bundle.toStdString();
    EXPECT_FALSE(Bundle::infoDictionary(garbage));
    EXPECT_TRUE(Bundle::canOpen(garbage));

    // A short file gives what it has. Only plain files give bytes, also through a link: opening a
    // pipe would hold the scan up waiting for a writer.
    const QString shortFile = B::makeFile(folder, "short", {}, MachO::intel().left(7));
    EXPECT_EQ(MachOHeader::firstBytes(shortFile), MachO::intel().left(7));
    ASSERT_TRUE(QFile::link(xml + "/Contents/MacOS/Plugin", homePath("linked")));
    EXPECT_EQ(MachOHeader::firstBytes(homePath("linked")), MachO::intel());
    const QString pipe = homePath("pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0644), 0);
    ASSERT_TRUE(QFile::link(pipe, homePath("to-pipe")));
    for (const QString &path : {pipe, homePath("to-pipe"), xml, folder + "/missing"})
        EXPECT_TRUE(MachOHeader::firstBytes(path).isEmpty()) << qPrintable(path);
}

// Within one scan a bundle is looked at once; the next scan, and anything outside a scan, sees the
// disk as it is now. A link to a folder counts as a folder but is not one to descend into.
TEST_F(BundleTest, AScanCacheAnswersOnlyAsLongAsTheScan)
{
    const QString bundle = B::makeMAS(homePath("MAS"), "Delay.bundle", MachO::intel());
    const QString renamed = homePath("MAS/Renamed.bundle"), link = homePath("MAS/Link.bundle");
    {
        ScanCache scan;
        EXPECT_EQ(disk().listForScan(homePath("MAS"), &scan), QStringList{"Delay.bundle"});
        EXPECT_EQ(Bundle::executablePath(bundle, &scan), bundle + "/Contents/MacOS/Plugin");
        ASSERT_TRUE(QDir().rename(bundle, renamed));
        EXPECT_TRUE(Bundle::isFilePackage(bundle, &scan) && Bundle::canOpen(bundle, &scan));
        EXPECT_EQ(Bundle::infoValue(bundle, "CFBundleName", &scan).toString(), "Delay");
        // Code outside the scan, handed no cache, sees the disk as it is.
        EXPECT_FALSE(Bundle::canOpen(bundle));
    }
    EXPECT_FALSE(Bundle::canOpen(bundle));
    EXPECT_FALSE(Bundle::infoDictionary(bundle));

    ASSERT_TRUE(QFile::link(renamed, link));
    ScanCache scan;
    EXPECT_TRUE(ScanCache::isRealFolder(renamed, &scan));
    EXPECT_FALSE(ScanCache::isRealFolder(link, &scan));
    EXPECT_EQ(ScanCache::kind(link, &scan), ScanCache::Folder);
}

} // namespace
} // namespace korvane
