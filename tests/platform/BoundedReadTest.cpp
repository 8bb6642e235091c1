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

// Only plain files give bytes, also through a link. A pipe must not hold up a scan (opening it
// for reading would wait for a writer that never comes), nor a link lead it to open one.
TEST_F(BoundedReadTest, OnlyPlainFilesGiveTheirFirstBytes)
{
    const QString bundle = B::makeVST(homePath("VST"), "Pipe.vst", MachO::intel());
    const QString executable = bundle + "/Contents/MacOS/Plugin";
    const QString pipe = homePath("pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0644), 0);
    ASSERT_TRUE(QFile::link(executable, homePath("linked")));
    EXPECT_EQ(MachOHeader::firstBytes(homePath("linked")), MachO::intel());

    ASSERT_TRUE(QFile::link(pipe, homePath("to-pipe")));
    ASSERT_TRUE(QFile::link(bundle, homePath("to-folder")));
    for (const QString &path : {pipe, homePath("to-pipe"), bundle, homePath("to-folder")})
        EXPECT_TRUE(MachOHeader::firstBytes(path).isEmpty()) << qPrintable(path);
}

} // namespace
} // namespace korvane
