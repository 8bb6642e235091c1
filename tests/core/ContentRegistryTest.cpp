#include "core/ContentRegistry.h"

#include "codec/PropertyList.h"
#include "core/AppServices.h"
#include "os/SystemLog.h"
#include "support/ServicesFixture.h"

#include <QDateTime>
#include <QDir>

namespace korvane {
namespace {

const QString kSupport = QStringLiteral("Library/Application Support/Korvane");

class ContentRegistryTest : public ServicesFixture {
protected:
    // Registry entries as the property list holds them.
    static QVariantList plist(const QList<QStringList> &entries)
    {
        QVariantList list;
        for (const QStringList &entry : entries)
            list.append(QVariant(QVariantList(entry.begin(), entry.end())));
        return list;
    }
    // The copies of the damaged content file kept beside it, as paths.
    QStringList keptFiles() const
    {
        QStringList kept;
        for (const QString &name : QDir(homePath(kSupport)).entryList({"content.plist.damaged-*"}))
            kept << homePath(kSupport + "/" + name);
        return kept;
    }
    QString userFile() const { return homePath(kSupport + "/content.plist"); }
    std::optional<QVariantList> userEntries() const { return PropertyList::readArray(userFile()); }
};

// A fresh account may not even have "Library/Application Support": the data files must still land.
TEST_F(ContentRegistryTest, SystemFileIsUsedAndCopiedToTheUserOnFirstSaveEvenWithoutLibrary)
{
    writeText(rootPath(kSupport + "/content.plist"),
              PropertyList::toXml(plist({{"A", "/x"}, {"B", "/y"}})));
    AppServices run(parts());
    ContentRegistry &content = run.contentRegistry();
    EXPECT_FALSE(QFileInfo::exists(userFile()));
    EXPECT_EQ(content.contentFor("B"), QStringList({"B", "/y"}));
    QDir(homePath("Library")).removeRecursively();
    content.store(QStringList{"C", "/z"});
    EXPECT_EQ(userEntries(), plist({{"A", "/x"}, {"B", "/y"}, {"C", "/z"}}));
    QFile::remove(rootPath(kSupport + "/content.plist"));
    QFile::remove(userFile());
    AppServices fresh(parts()); // no file anywhere: an empty one for the user
    EXPECT_EQ(userEntries(), QVariantList());
}

TEST_F(ContentRegistryTest, DuplicatesAndMalformedEntries)
{
    // Only the first entry with a key is seen; what is not a list of strings is left out.
    const QVariantList bad{QVariantList{"A", qint64(5)}, "loose", QVariantList(), QVariantMap()};
    const QByteArray original = PropertyList::toXml(bad + plist({{"B"}, {"A", "/1"}, {"A", "/2"}}));
    writeText(userFile(), original);
    AppServices run(parts());
    ContentRegistry &content = run.contentRegistry();
    EXPECT_EQ(content.entries(), QList<QStringList>({{"B"}, {"A", "/1"}, {"A", "/2"}}));
    EXPECT_EQ(content.contentFor("A"), QStringList({"A", "/1"}));
    content.store(QStringList{"A", "/3"});
    EXPECT_EQ(userEntries(), plist({{"B"}, {"A", "/3"}, {"A", "/2"}}));
    // What was left out is not lost with the rewrite.
    const QStringList kept = keptFiles();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(readText(kept.first()), QString::fromUtf8(original));
}

TEST_F(ContentRegistryTest, DamagedFileIsKeptUnderAFreeDatedNameOrNotReplaced)
{
    // Names a keep in the next seconds would choose are taken already.
    QStringList taken;
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 3; ++second) {
        taken << userFile() + ".damaged-" + now.addSecs(second).toString("yyyy-MM-ddTHH-mm-ss");
        writeText(taken.last(), "taken");
    }
    const QByteArray garbage = "<?xml version=\"1.0\"?><plist><array><array><string>A";
    writeText(userFile(), garbage);
    SystemLogCapture log;
    AppServices run(parts()); // garbage reads as no file
    ContentRegistry &content = run.contentRegistry();
    EXPECT_TRUE(content.entries().isEmpty());
    EXPECT_EQ(userEntries(), QVariantList());
    QStringList kept = keptFiles();
    for (const QString &name : taken)
        EXPECT_TRUE(kept.removeOne(name) && readText(name) == "taken");
    ASSERT_EQ(kept.size(), 1);
    const QString keptAs = kept.first();
    EXPECT_TRUE(keptAs.endsWith("-2")) << keptAs.toStdString();
    EXPECT_EQ(readText(keptAs), QString::fromUtf8(garbage));
    const QString line = "Could not read " + userFile() + "; kept it as " + keptAs;
    EXPECT_EQ(log.lines(), QStringList{line});
    EXPECT_EQ(run.log().text(), line + "\n");

    // Where it cannot be moved aside it is left alone, and so are the changes after it.
    writeText(userFile(), garbage);
    ImmutableGuard guard(homePath(kSupport));
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    content.load();
    content.store(QStringList{"A", "/a"}); // the change stays in memory
    EXPECT_EQ(readText(userFile()), QString::fromUtf8(garbage));
    EXPECT_EQ(content.contentFor("A"), QStringList({"A", "/a"}));
    EXPECT_EQ(log.lines().mid(1), QStringList(2, "Could not read " + userFile()
                                                     + " nor move it aside; left it as it is"));
}

TEST_F(ContentRegistryTest, OnlyCompanionsUnderTheSystemActiveRootHideScanPaths)
{
    const QString components = locations().expand("/Library/Audio/Plug-Ins/Components");
    const QStringList scan{"Other", "Shared", "Shared/Lib", "Shared/Lib/x", "Shared/Lib2"};
    {
        AppServices run(parts());
        ContentRegistry &content = run.contentRegistry();
        content.store(QStringList{"X.component", components + "/Shared/Lib"});
        // Whole steps: "Shared/Lib2" is not inside "Shared/Lib".
        EXPECT_EQ(content.withoutContentPaths(0, scan),
                  QStringList({"Other", "Shared", "Shared/Lib2"}));
        EXPECT_EQ(content.withoutContentPaths(7, scan), scan);
    }
    // A home longer than the system root, as on a real machine, so the cut lands mid-folder.
    QDir().mkpath(homePath("someone/Library/Application Support"));
    const Locations longer(Roots::at(root(), homePath("someone")));
    AppServices run(RunParts{longer, disk(), ui, FormatTable::builtIn(), locks()});
    ContentRegistry &content = run.contentRegistry();
    content.store(QStringList{"X.component",
                              longer.expand("~/Library/Audio/Plug-Ins/Components/Shared/Lib")});
    content.store(QStringList{"Y.component", components, components + "/"}); // too short to cut
    EXPECT_EQ(content.withoutContentPaths(0, scan), scan);
}

TEST_F(ContentRegistryTest, FullPathsStayInsideTheRoots)
{
    AppServices run(parts());
    const ContentRegistry &content = run.contentRegistry();
    EXPECT_EQ(content.fullPath("Sub/X.vst", 3, 0),
              rootPath("Library/Audio/Plug-Ins/VST/Sub/X.vst"));
    for (const char *name : {"../../../../../etc/passwd", "Sub/../../X.vst", "/etc/passwd", ".."})
        EXPECT_TRUE(content.fullPath(name, 3, 0).isEmpty()) << name;
    const int pastTheTable = FormatTable::builtIn().count();
    EXPECT_TRUE(content.fullPath("X", pastTheTable, 0).isEmpty()
                && content.fullPath("X", 0, -1).isEmpty() && content.fullPath("X", 0, 4).isEmpty());
}

} // namespace
} // namespace korvane
