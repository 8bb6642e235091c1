#include "platform/ScanCache.h"
#include "platform/Bundle.h"
#include "platform/LocalFileOperations.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDir>

namespace korvane {
namespace {

using B = PluginLibraryBuilder;

class ScanCacheTest : public TestRoots {};

// Within one scan a bundle is looked at once; the next scan, and anything outside a scan, sees the
// disk as it is now.
TEST_F(ScanCacheTest, AnswersLastOnlyAsLongAsTheScan)
{
    const QString folder = homePath("MAS");
    const QString bundle = B::makeMAS(folder, "Delay.bundle", MachO::intel());
    const QString renamed = folder + "/Renamed.bundle";
    {
        ScanCache scan;
        // The listing tells the kind of each entry; the bundle is read once.
        EXPECT_EQ(disk().directoryContents(folder), QStringList{"Delay.bundle"});
        EXPECT_EQ(Bundle::executablePath(bundle), bundle + "/Contents/MacOS/Plugin");
        ASSERT_TRUE(QDir().rename(bundle, renamed));
        EXPECT_TRUE(Bundle::canOpen(bundle));
        EXPECT_EQ(Bundle::infoValue(bundle, "CFBundleName").toString(), "Delay");
        {
            ScanCache inner; // a scan of its own starts afresh
            EXPECT_FALSE(Bundle::canOpen(bundle));
        }
        EXPECT_TRUE(Bundle::isFilePackage(bundle));
        EXPECT_EQ(ScanCache::current(), &scan);
    }
    EXPECT_EQ(ScanCache::current(), nullptr);
    EXPECT_FALSE(Bundle::isFilePackage(bundle));
    EXPECT_FALSE(Bundle::infoDictionary(bundle));
    EXPECT_TRUE(Bundle::isFilePackage(renamed));

    // Links to folders are not real folders to descend into, but count as folders.
    ASSERT_TRUE(QFile::link(renamed, folder + "/Link.bundle"));
    ScanCache scan;
    EXPECT_TRUE(ScanCache::isRealFolder(renamed));
    EXPECT_FALSE(ScanCache::isRealFolder(folder + "/Link.bundle"));
    EXPECT_EQ(ScanCache::kind(folder + "/Link.bundle"), ScanCache::Folder);
    EXPECT_EQ(ScanCache::kind(renamed + "/Contents/Info.plist"), ScanCache::File);
    EXPECT_EQ(ScanCache::kind(folder + "/missing"), ScanCache::Missing);
}

} // namespace
} // namespace korvane
