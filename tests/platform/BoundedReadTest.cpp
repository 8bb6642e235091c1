#include "platform/Bundle.h"
#include "platform/PropertyList.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <sys/stat.h>

namespace korvane {
namespace {

using B = PluginLibraryBuilder;

class BoundedReadTest : public TestRoots {};

// Files are read whole up to 16 MB; a larger one is refused without reading it into memory.
TEST_F(BoundedReadTest, PropertyListsOverSixteenMegabytesAreRefused)
{
    const QByteArray list = "<plist><string>x</string></plist>";
    const QString small = homePath("small.plist");
    const QString large = homePath("large.plist");
    writeText(small, list + QByteArray(1024 * 1024, ' '));
    writeText(large, list + QByteArray(16 * 1024 * 1024, ' '));
    EXPECT_EQ(PropertyList::read(small), QVariant("x"));
    EXPECT_FALSE(PropertyList::read(large));
    EXPECT_FALSE(PropertyList::read(homePath("missing.plist")));
    EXPECT_FALSE(PropertyList::read(home()));
}

// A pipe where the executable should be is no executable, and must not hold up a scan (opening
// it for reading would wait for a writer that never comes).
TEST_F(BoundedReadTest, APipeInPlaceOfAnExecutableGivesNoBytes)
{
    const QString bundle = B::makeVST(homePath("VST"), "Pipe.vst", MachO::intel());
    const QString executable = bundle + "/Contents/MacOS/Plugin";
    ASSERT_TRUE(QFile::remove(executable));
    ASSERT_EQ(::mkfifo(QFile::encodeName(executable).constData(), 0644), 0);
    EXPECT_TRUE(MachOHeader::firstBytes(executable).isEmpty());
    EXPECT_TRUE(MachOHeader::firstBytes(bundle).isEmpty()); // a folder has no bytes either
}

} // namespace
} // namespace korvane
