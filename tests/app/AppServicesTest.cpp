#include "app/AppServices.h"

#include "ServicesFixture.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "platform/SystemLog.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <PluginLibraryBuilder.h>
#include <QDateTime>
#include <QDir>
#include <QSet>

using namespace korvane;

namespace {

// Registry entries as the property list holds them.
QVariantList plist(const QList<QStringList> &entries)
{
    QVariantList list;
    for (const QStringList &entry : entries)
        list.append(QVariant(QVariantList(entry.begin(), entry.end())));
    return list;
}

const QString kSupport = QStringLiteral("Library/Application Support/Korvane");

// The copies of a damaged file kept beside it, as paths.
QStringList keptFiles(const QString &file)
{
    const QFileInfo info(file);
    QStringList kept;
    for (const QString &name :
         QDir(info.absolutePath()).entryList({info.fileName() + ".damaged-*"}))
        kept << info.absolutePath() + "/" + name;
    return kept;
}

} // namespace

class ContentRegistryTest : public ServicesFixture {
protected:
    void SetUp() override
    {
        ServicesFixture::SetUp();
        QDir().mkpath(homePath("Library/Application Support")); // there on every real system
    }
    QString userFile() const { return homePath(kSupport + "/content.plist"); }
    QStringList keptFiles() const { return ::keptFiles(userFile()); }
    std::optional<QVariantList> userEntries() const { return PropertyList::readArray(userFile()); }
};

TEST_F(ContentRegistryTest, NoFileAnywhereLeavesAnEmptyUserFile)
{
    AppServices services(parts());
    EXPECT_EQ(userEntries(), QVariantList());
}

TEST_F(ContentRegistryTest, SystemFileIsUsedAndCopiedToTheUserOnFirstSave)
{
    writeText(rootPath(kSupport + "/content.plist"),
              PropertyList::toXml(plist({{"A", "/x"}, {"B", "/y"}})));
    AppServices services(parts());
    EXPECT_FALSE(QFileInfo::exists(userFile()));
    EXPECT_EQ(services.getContentForKey("B"), QStringList({"B", "/y"}));
    services.saveContent({"C", "/z"});
    EXPECT_EQ(userEntries(), plist({{"A", "/x"}, {"B", "/y"}, {"C", "/z"}}));
}

TEST_F(ContentRegistryTest, DuplicatesAndMalformedEntries)
{
    // Only the first entry with a key is seen; what is not a list of strings is left out.
    const QVariantList bad{QVariantList{"A", qint64(5)}, "loose", QVariantList(), QVariantMap()};
    const QByteArray original = PropertyList::toXml(bad + plist({{"B"}, {"A", "/1"}, {"A", "/2"}}));
    writeText(userFile(), original);
    AppServices services(parts());
    EXPECT_EQ(services.contentRegistry(), QList<QStringList>({{"B"}, {"A", "/1"}, {"A", "/2"}}));
    EXPECT_EQ(services.getContentForKey("A"), QStringList({"A", "/1"}));
    services.saveContent({"A", "/3"});
    EXPECT_EQ(userEntries(), plist({{"B"}, {"A", "/3"}, {"A", "/2"}}));
    // What was left out is not lost with the rewrite.
    const QStringList kept = keptFiles();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(readText(kept.first()), QString::fromUtf8(original));
}

TEST_F(ContentRegistryTest, DamagedFileIsKeptUnderAFreeDatedNameOrNotReplaced)
{
    // Names a keep in the next seconds would choose are taken already.
    const QString support = homePath(kSupport);
    QStringList taken;
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 3; ++second) {
        taken << userFile() + ".damaged-" + now.addSecs(second).toString("yyyy-MM-ddTHH-mm-ss");
        writeText(taken.last(), "taken");
    }
    const QByteArray garbage = "<?xml version=\"1.0\"?><plist><array><array><string>A";
    writeText(userFile(), garbage);
    SystemLogCapture log;
    AppServices services(parts()); // garbage reads as no file
    EXPECT_TRUE(services.contentRegistry().isEmpty());
    EXPECT_EQ(userEntries(), QVariantList());
    const QStringList kept = keptFiles();
    ASSERT_EQ(kept.size(), 4);
    for (const QString &name : taken)
        EXPECT_EQ(readText(name), "taken");
    const QString keptAs =
        (QSet<QString>(kept.begin(), kept.end()) - QSet<QString>(taken.begin(), taken.end()))
            .values()
            .value(0);
    EXPECT_TRUE(keptAs.endsWith("-2")) << keptAs.toStdString();
    EXPECT_EQ(readText(keptAs), QString::fromUtf8(garbage));
    const QString line = "Could not read " + userFile() + "; kept it as " + keptAs;
    EXPECT_EQ(log.lines(), QStringList{line});
    EXPECT_EQ(services.logText(), line + "\n");

    // Where it cannot be moved aside it is left alone, and so are the changes after it.
    writeText(userFile(), garbage);
    ImmutableGuard guard(support);
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.initContent();
    services.saveContent({"A", "/a"}); // the change stays in memory
    EXPECT_EQ(readText(userFile()), QString::fromUtf8(garbage));
    EXPECT_EQ(services.getContentForKey("A"), QStringList({"A", "/a"}));
    EXPECT_EQ(log.lines().mid(1), QStringList(2, "Could not read " + userFile()
                                                     + " nor move it aside; left it as it is"));
}

TEST_F(ContentRegistryTest, OnlyCompanionsUnderTheSystemActiveRootHideScanPaths)
{
    const QString components = locations().expand("/Library/Audio/Plug-Ins/Components");
    const QStringList scan{"Other", "Shared", "Shared/Lib", "Shared/Lib/x", "Shared/Lib2"};
    {
        AppServices services(parts());
        services.saveContent({"X.component", components + "/Shared/Lib"});
        // Whole steps: "Shared/Lib2" is not inside "Shared/Lib".
        EXPECT_EQ(services.removeContentPaths(0, scan),
                  QStringList({"Other", "Shared", "Shared/Lib2"}));
        EXPECT_EQ(services.removeContentPaths(7, scan), scan);
    }
    // A home longer than the system root, as on a real machine, so the cut lands mid-folder.
    QDir().mkpath(homePath("someone/Library/Application Support"));
    const Locations longer(Roots::at(root(), homePath("someone")));
    AppServices services(RunParts{longer, disk(), ui, FormatTable::builtIn()});
    services.saveContent(
        {"X.component", longer.expand("~/Library/Audio/Plug-Ins/Components/Shared/Lib")});
    services.saveContent({"Y.component", components, components + "/"}); // too short to cut
    EXPECT_EQ(services.removeContentPaths(0, scan), scan);
}

TEST_F(ContentRegistryTest, PackagesCollapseWithTheirContentsOnly)
{
    PluginLibraryBuilder::makeVST(folder(3, 0), "A.vst", MachO::intel());
    PluginLibraryBuilder::makeFolder(folder(3, 0) + "/Sub");
    AppServices services(parts());
    const QStringList scan{"A.vst",      "A.vst/Contents", "A.vst/Contents/Info.plist",
                           "A.vst copy", "A.vst2.vst",     "B.vst",
                           "Sub",        "Sub/C"};
    EXPECT_EQ(services.removeIrrelevantData(3, 0, scan),
              QStringList({"A.vst", "A.vst copy", "A.vst2.vst", "B.vst", "Sub", "Sub/C"}));
}

TEST_F(ContentRegistryTest, FullPathsAndCreatedFoldersStayInsideTheRoots)
{
    AppServices services(parts());
    EXPECT_EQ(services.getFullPath("X", 1, 3),
              homePath("Library/Application Support/Digidesign/Plug-Ins (Disabled)/X"));
    EXPECT_EQ(services.getFullPath("Sub/X.vst", 3, 0),
              rootPath("Library/Audio/Plug-Ins/VST/Sub/X.vst"));
    for (const char *name : {"../../../../../etc/passwd", "Sub/../../X.vst", "/etc/passwd", ".."})
        EXPECT_TRUE(services.getFullPath(name, 3, 0).isEmpty()) << name;
    EXPECT_TRUE(services.getFullPath("X", 4, 0).isEmpty());
    EXPECT_TRUE(services.getFullPath("X", 0, -1).isEmpty());

    QDir().mkpath(rootPath("a"));
    services.createFolders(rootPath("a/../escape/b/file"));
    EXPECT_FALSE(QFileInfo::exists(rootPath("escape")));
}

TEST_F(ContentRegistryTest, CreateFoldersMakesTheParentsOnlyAndIgnoresFailures)
{
    AppServices services(parts());
    QDir().mkpath(rootPath("a"));
    services.createFolders(rootPath("a/b/c/file"));
    EXPECT_TRUE(QFileInfo(rootPath("a/b/c")).isDir());
    EXPECT_FALSE(QFileInfo::exists(rootPath("a/b/c/file")));

    ImmutableGuard guard(rootPath("a"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.createFolders(rootPath("a/x/y/file"));
    EXPECT_FALSE(QFileInfo::exists(rootPath("a/x")));
}

class GroupRegistryTest : public ServicesFixture {
protected:
    QString groupsFile() const { return homePath(kSupport + "/groups.plist"); }
    void writeGroups(const QVariantList &g) { writeText(groupsFile(), PropertyList::toXml(g)); }
};

TEST_F(GroupRegistryTest, LoadingForcesTheEmptyFirstEntryAndKeepsWhatItCouldNotRead)
{
    EXPECT_EQ(AppServices(parts()).getGroups(), QStringList({""}));
    writeGroups({"New Group", "Drums"});
    EXPECT_EQ(AppServices(parts()).getGroups(), QStringList({"", "Drums"}));
    writeGroups({"", "Drums", qint64(3)}); // anything but names reads as no file...
    const QByteArray original = readText(groupsFile()).toUtf8();
    AppServices services(parts());
    EXPECT_EQ(services.getGroups(), QStringList({""}));
    services.saveGroupRegistry(); // ...and is kept before it is replaced
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), QStringList({""}));
    const QStringList kept = keptFiles(groupsFile());
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(readText(kept.first()).toUtf8(), original);
    EXPECT_TRUE(services.logText().contains(kept.first()));
}

TEST_F(GroupRegistryTest, EditsRenumberEditorMenuAndFile)
{
    writeGroups({"", "G1", "G2"});
    AppServices services(parts());
    services.addGroupEntry();
    EXPECT_EQ(services.getGroups().value(3), "New Group");
    services.groupTableSetObjectValue("Drums", 2);
    services.setGroupByIndex(4, "Synths"); // one past the last: appended
    EXPECT_EQ(services.groupMenuTitles(), QStringList({"G1", "G2", "Drums", "Synths"}));
    int changes = 0;
    QObject::connect(&services, &AppServices::groupsChanged, [&] { ++changes; });
    for (int row : {-1, -7, 4}) // no selection, or none that exists: nothing shifts
        services.removeGroupEntry(row);
    EXPECT_EQ(services.getGroups(), QStringList({"", "G1", "G2", "Drums", "Synths"}));
    EXPECT_EQ(changes, 0);
    services.removeGroupEntry(0);
    EXPECT_EQ(services.numberOfRowsInGroupTable(), 3);
    EXPECT_EQ(services.groupTableObjectValue(0), "G2");
    EXPECT_EQ(services.groupMenuTitles(), QStringList({"G2", "Drums", "Synths"}));
    services.saveGroupRegistry();
    const QStringList saved{"", "G2", "Drums", "Synths"};
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), saved);

    ImmutableGuard guard(groupsFile());
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.addGroupEntry();
    services.saveGroupRegistry();
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), saved);
}

class FileErrorTest : public ServicesFixture {};

TEST_F(FileErrorTest, OnlyProceedCarriesOn)
{
    ui.alertAnswers << AlertAlternate << AlertDefault << AlertFirst;
    AppServices services(parts());
    const QVariantMap info{{"Error", "Permission denied"}, {"Path", "/x/%@.vst"}};
    EXPECT_FALSE(services.fileManager(nullptr, info));
    EXPECT_TRUE(services.fileManager(nullptr, info));
    EXPECT_FALSE(services.fileManager(nullptr, info));
    ASSERT_EQ(ui.alerts.size(), 3);
    EXPECT_EQ(ui.alerts[0].title, "Korvane");
    EXPECT_EQ(ui.alerts[0].messageText,
              "File operation error...\n error: Permission denied\n with file: /x/%@.vst");
    EXPECT_EQ(ui.alerts[0].buttons, QStringList({"Proceed", "Stop"}));
}
