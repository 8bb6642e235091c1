#include "platform/LocalFileOperations.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QFile>
#include <QMap>

namespace korvane {
namespace {

using B = PluginLibraryBuilder;

class RemoveSafetyTest : public TestRoots {};

// Every path below the bundle with what it holds, to see that a refused removal touched nothing.
QMap<QString, QByteArray> contents(const QString &bundle)
{
    QMap<QString, QByteArray> result;
    for (const QString &relative : LocalFileOperations().subpaths(bundle)) {
        QFile file(bundle + "/" + relative);
        result.insert(relative, file.open(QIODevice::ReadOnly) ? file.readAll() : "folder");
    }
    return result;
}

// A lock anywhere, on the bundle, deep inside it or on its folder, refuses the removal before a
// single file goes: a half-deleted plug-in is worse than one that stays.
TEST_F(RemoveSafetyTest, ALockAnywhereRemovesNothing)
{
    const QString folder = homePath("Plug-Ins");
    const QString bundle = B::makeVST(folder, "Echo.vst", MachO::intel());
    B::makeFile(bundle + "/Contents/Resources", "Presets/Default", {}, "preset");
    const QMap<QString, QByteArray> before = contents(bundle);
    ASSERT_EQ(before.size(), 7);

    for (const QString &locked : {bundle, bundle + "/Contents/Resources/Presets/Default",
                                  bundle + "/Contents/MacOS", folder}) {
        FileError error;
        {
            ImmutableGuard guard(locked);
            if (!guard.ok())
                GTEST_SKIP() << "no immutable files here";
            EXPECT_FALSE(disk().remove(bundle, &error)) << qPrintable(locked);
        }
        EXPECT_FALSE(error.reason.isEmpty()) << qPrintable(locked);
        EXPECT_EQ(contents(bundle), before) << qPrintable(locked);
    }

    // Unlocked, the same call removes it all.
    EXPECT_TRUE(disk().remove(bundle));
    EXPECT_FALSE(QFileInfo::exists(bundle));
}

} // namespace
} // namespace korvane
