#include "app/AppServices.h"

#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <PluginLibraryBuilder.h>
#include <QDir>

using namespace korvane;

class ContentRegistryTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        QDir().mkpath(homePath("Library/Application Support")); // there on every real system
    }
    QString userFile() const { return homePath("Library/Application Support/Korvane/content.plist"); }
    QList<QStringList> userEntries() const
    {
        QList<QStringList> entries;
        for (const QVariant &entry : PropertyList::readArray(userFile()).value_or(QVariantList()))
            entries.append(entry.toStringList());
        return entries;
    }
    static void write(const QString &path, const QVariantList &root)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        ASSERT_TRUE(PropertyList::writeXml(path, root));
    }
    static QVariant entry(const QStringList &e) { return QVariantList(e.begin(), e.end()); }
};

TEST_F(ContentRegistryTest, MissingRegistriesLeaveAnEmptyUserFile)
{
    AppServices services;
    EXPECT_EQ(PropertyList::readArray(userFile()), QVariantList());
}

TEST_F(ContentRegistryTest, SystemRegistryIsCopiedToTheUserOnFirstSave)
{
    write(rootPath("Library/Application Support/Korvane/content.plist"), {entry({"A", "/x"}), entry({"B", "/y"})});
    AppServices services;
    EXPECT_FALSE(QFileInfo::exists(userFile()));
    EXPECT_EQ(services.getContentForKey("B"), QStringList({"B", "/y"}));
    services.saveContent({"C", "/z"});
    EXPECT_EQ(userEntries(), QList<QStringList>({{"A", "/x"}, {"B", "/y"}, {"C", "/z"}}));
}

TEST_F(ContentRegistryTest, FirstEntryWithAKeyIsTheOnlyOneSeen)
{
    write(userFile(), {entry({"A", "/1"}), entry({"A", "/2"})});
    AppServices services;
    EXPECT_EQ(services.getContentForKey("A"), QStringList({"A", "/1"}));
    services.saveContent({"A", "/3"});
    EXPECT_EQ(userEntries(), QList<QStringList>({{"A", "/3"}, {"A", "/2"}}));
}

TEST_F(ContentRegistryTest, MalformedEntriesAreLeftOutAndGarbageReadsAsAbsent)
{
    write(userFile(), {QVariantList{"A", qint64(5)}, "loose", QVariantList(), QVariantMap{{"k", "v"}}, entry({"B"})});
    AppServices services;
    EXPECT_EQ(services.contentRegistry(), QList<QStringList>({{"B"}}));
    writeText(userFile(), "<?xml version=\"1.0\"?><plist><array><array><string>A");
    services.initContent();
    EXPECT_TRUE(services.contentRegistry().isEmpty());
}

TEST_F(ContentRegistryTest, FailedWriteKeepsTheChangeInMemory)
{
    AppServices services;
    ImmutableGuard guard(homePath("Library/Application Support/Korvane"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.saveContent({"A", "/a"});
    EXPECT_EQ(PropertyList::readArray(userFile()), QVariantList());
    EXPECT_EQ(services.getContentForKey("A"), QStringList({"A", "/a"}));
}

TEST_F(ContentRegistryTest, OnlyCompanionsUnderTheSystemActiveRootHideScanPaths)
{
    const QString components = Locations::expand("/Library/Audio/Plug-Ins/Components");
    const QStringList scan{"Other", "Shared", "Shared/Lib", "Shared/Lib/x"};
    {
        AppServices services;
        services.saveContent({"X.component", components + "/Shared/Lib"});
        EXPECT_EQ(services.removeContentPaths(0, scan), QStringList({"Other", "Shared"}));
        EXPECT_EQ(services.removeContentPaths(7, scan), scan);
    }
    // A home longer than the system root, as on a real machine, so the cut lands mid-folder.
    QDir().mkpath(homePath("someone/Library/Application Support"));
    qputenv("HOME", homePath("someone").toUtf8());
    AppServices services;
    services.saveContent({"X.component", Locations::expand("~/Library/Audio/Plug-Ins/Components/Shared/Lib")});
    services.saveContent({"Y.component", components, components + "/"}); // too short to cut
    EXPECT_EQ(services.removeContentPaths(0, scan), scan);
}

TEST_F(ContentRegistryTest, PackagesCollapseWithTheirContentsAndNamesakes)
{
    PluginLibraryBuilder::makeVST(Locations::folderPath(3, 0), "A.vst", MachO::intel());
    PluginLibraryBuilder::makeFolder(Locations::folderPath(3, 0) + "/Sub");
    AppServices services;
    const QStringList scan{"A.vst", "A.vst/Contents", "A.vst/Contents/Info.plist", "A.vst copy", "B.vst", "Sub", "Sub/C"};
    EXPECT_EQ(services.removeIrrelevantData(3, 0, scan), QStringList({"A.vst", "B.vst", "Sub", "Sub/C"}));
    EXPECT_EQ(services.getFullPath("X", 1, 3), homePath("Library/Application Support/Digidesign/Plug-Ins (Disabled)/X"));
    EXPECT_EQ(services.getFullPath("X", 0, 1), rootPath("Library/Audio/Plug-Ins/Components (Disabled)/X"));
    EXPECT_EQ(services.getFullPath("X", 4, 0), QString());
}

TEST_F(ContentRegistryTest, CreateFoldersMakesMissingParentsAndIgnoresFailures)
{
    AppServices services;
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

class GroupRegistryTest : public TestRoots {
protected:
    QString groupsFile() const { return homePath("Library/Application Support/Korvane/groups.plist"); }
    void writeGroups(const QVariantList &groups)
    {
        QDir().mkpath(QFileInfo(groupsFile()).absolutePath());
        ASSERT_TRUE(PropertyList::writeXml(groupsFile(), groups));
    }
};

TEST_F(GroupRegistryTest, LoadingForcesTheEmptyFirstEntry)
{
    EXPECT_EQ(AppServices().getGroups(), QStringList({""}));
    writeGroups({"New Group", "Drums"});
    EXPECT_EQ(AppServices().getGroups(), QStringList({"", "Drums"}));
    writeGroups({"", "Drums", qint64(3)}); // anything but names reads as no file
    EXPECT_EQ(AppServices().getGroups(), QStringList({""}));
}

TEST_F(GroupRegistryTest, RemovingAGroupRenumbersEditorMenuAndFile)
{
    writeGroups({"", "G1", "G2", "G3"});
    AppServices services;
    services.removeGroupEntry(0);
    EXPECT_EQ(services.numberOfRowsInGroupTable(), 2);
    EXPECT_EQ(services.groupTableObjectValue(0), "G2");
    EXPECT_EQ(services.groupMenuTitles(), QStringList({"G2", "G3"}));
    services.saveGroupRegistry();
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), QStringList({"", "G2", "G3"}));

    ImmutableGuard guard(groupsFile());
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.addGroupEntry();
    services.saveGroupRegistry();
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), QStringList({"", "G2", "G3"}));
}

TEST_F(GroupRegistryTest, AddingAndRenamingUpdateTheSubmenu)
{
    AppServices services;
    services.addGroupEntry();
    services.addGroupEntry();
    services.groupTableSetObjectValue("Drums", 1);
    EXPECT_EQ(services.groupMenuTitles(), QStringList({"New Group", "Drums"}));
    services.setGroupByIndex(2, "Synths"); // one past the last: appended
    EXPECT_EQ(services.getGroups(), QStringList({"", "New Group", "Drums", "Synths"}));
}

class LogAndFileErrorTest : public TestRoots {};

TEST_F(LogAndFileErrorTest, LogTextIsAppendedAndShowLogFollowsTheWindow)
{
    AppServices services;
    services.addLogEntry(nullptr, "a\n");
    services.addLogEntry(nullptr, "b\n");
    EXPECT_EQ(services.logText(), "a\nb\n");
    services.showLog();
    EXPECT_FALSE(services.isShowLogEnabled());
    services.hideLog();
    EXPECT_TRUE(services.isShowLogEnabled());
}

TEST_F(LogAndFileErrorTest, OnlyProceedCarriesOn)
{
    ScriptedUi ui;
    ui.alertAnswers << AlertAlternate << AlertDefault << AlertFirst;
    AppServices services;
    const QVariantMap info{{"Error", "Permission denied"}, {"Path", "/x/%@.vst"}};
    EXPECT_FALSE(services.fileManager(nullptr, info));
    EXPECT_TRUE(services.fileManager(nullptr, info));
    EXPECT_FALSE(services.fileManager(nullptr, info));
    ASSERT_EQ(ui.alerts.size(), 3);
    EXPECT_EQ(ui.alerts[0].title, "Korvane");
    EXPECT_EQ(ui.alerts[0].messageText, "File operation error...\n error: Permission denied\n with file: /x/%@.vst");
    EXPECT_EQ(ui.alerts[0].buttons, QStringList({"Proceed", "Stop"}));
}
