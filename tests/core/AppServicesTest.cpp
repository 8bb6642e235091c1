#include "core/AppServices.h"

#include "codec/PropertyList.h"
#include "os/SystemLog.h"
#include "support/ServicesFixture.h"

#include <QDateTime>
#include <QDir>

namespace korvane {
namespace {

const QString kSupport = QStringLiteral("Library/Application Support/Korvane");

class AppServicesTest : public ServicesFixture {
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
    QString groupsFile() const { return homePath(kSupport + "/groups.plist"); }
    std::optional<QVariantList> userEntries() const { return PropertyList::readArray(userFile()); }
};

// A fresh account may not even have "Library/Application Support": the data files must still land.
TEST_F(AppServicesTest, SystemFileIsUsedAndCopiedToTheUserOnFirstSaveEvenWithoutLibrary)
{
    writeText(rootPath(kSupport + "/content.plist"),
              PropertyList::toXml(plist({{"A", "/x"}, {"B", "/y"}})));
    AppServices services(parts());
    EXPECT_FALSE(QFileInfo::exists(userFile()));
    EXPECT_EQ(services.contentFor("B"), QStringList({"B", "/y"}));
    QDir(homePath("Library")).removeRecursively();
    services.storeContent({"C", "/z"});
    EXPECT_EQ(userEntries(), plist({{"A", "/x"}, {"B", "/y"}, {"C", "/z"}}));
    QFile::remove(rootPath(kSupport + "/content.plist"));
    QFile::remove(userFile());
    AppServices fresh(parts()); // no file anywhere: an empty one for the user
    EXPECT_EQ(userEntries(), QVariantList());
}

TEST_F(AppServicesTest, DuplicatesAndMalformedEntries)
{
    // Only the first entry with a key is seen; what is not a list of strings is left out.
    const QVariantList bad{QVariantList{"A", qint64(5)}, "loose", QVariantList(), QVariantMap()};
    const QByteArray original = PropertyList::toXml(bad + plist({{"B"}, {"A", "/1"}, {"A", "/2"}}));
    writeText(userFile(), original);
    AppServices services(parts());
    EXPECT_EQ(services.contentRegistry(), QList<QStringList>({{"B"}, {"A", "/1"}, {"A", "/2"}}));
    EXPECT_EQ(services.contentFor("A"), QStringList({"A", "/1"}));
    services.storeContent({"A", "/3"});
    EXPECT_EQ(userEntries(), plist({{"B"}, {"A", "/3"}, {"A", "/2"}}));
    // What was left out is not lost with the rewrite.
    const QStringList kept = keptFiles();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(readText(kept.first()), QString::fromUtf8(original));
}

TEST_F(AppServicesTest, DamagedFileIsKeptUnderAFreeDatedNameOrNotReplaced)
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
    AppServices services(parts()); // garbage reads as no file
    EXPECT_TRUE(services.contentRegistry().isEmpty());
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
    EXPECT_EQ(services.logText(), line + "\n");

    // Where it cannot be moved aside it is left alone, and so are the changes after it.
    writeText(userFile(), garbage);
    ImmutableGuard guard(homePath(kSupport));
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.loadContentRegistry();
    services.storeContent({"A", "/a"}); // the change stays in memory
    EXPECT_EQ(readText(userFile()), QString::fromUtf8(garbage));
    EXPECT_EQ(services.contentFor("A"), QStringList({"A", "/a"}));
    EXPECT_EQ(log.lines().mid(1), QStringList(2, "Could not read " + userFile()
                                                     + " nor move it aside; left it as it is"));
}

TEST_F(AppServicesTest, OnlyCompanionsUnderTheSystemActiveRootHideScanPaths)
{
    const QString components = locations().expand("/Library/Audio/Plug-Ins/Components");
    const QStringList scan{"Other", "Shared", "Shared/Lib", "Shared/Lib/x", "Shared/Lib2"};
    {
        AppServices services(parts());
        services.storeContent({"X.component", components + "/Shared/Lib"});
        // Whole steps: "Shared/Lib2" is not inside "Shared/Lib".
        EXPECT_EQ(services.withoutContentPaths(0, scan),
                  QStringList({"Other", "Shared", "Shared/Lib2"}));
        EXPECT_EQ(services.withoutContentPaths(7, scan), scan);
    }
    // A home longer than the system root, as on a real machine, so the cut lands mid-folder.
    QDir().mkpath(homePath("someone/Library/Application Support"));
    const Locations longer(Roots::at(root(), homePath("someone")));
    AppServices services(RunParts{longer, disk(), ui, FormatTable::builtIn(), locks()});
    services.storeContent(
        {"X.component", longer.expand("~/Library/Audio/Plug-Ins/Components/Shared/Lib")});
    services.storeContent({"Y.component", components, components + "/"}); // too short to cut
    EXPECT_EQ(services.withoutContentPaths(0, scan), scan);
}

TEST_F(AppServicesTest, FullPathsAndCreatedFoldersStayInsideTheRoots)
{
    AppServices services(parts());
    EXPECT_EQ(services.fullPath("Sub/X.vst", 3, 0),
              rootPath("Library/Audio/Plug-Ins/VST/Sub/X.vst"));
    for (const char *name : {"../../../../../etc/passwd", "Sub/../../X.vst", "/etc/passwd", ".."})
        EXPECT_TRUE(services.fullPath(name, 3, 0).isEmpty()) << name;
    const int pastTheTable = FormatTable::builtIn().count();
    EXPECT_TRUE(services.fullPath("X", pastTheTable, 0).isEmpty()
                && services.fullPath("X", 0, -1).isEmpty()
                && services.fullPath("X", 0, 4).isEmpty());

    QDir().mkpath(rootPath("a"));
    services.createFolders(rootPath("a/../escape/b/file"));
    EXPECT_FALSE(QFileInfo::exists(rootPath("escape")));
    services.createFolders(rootPath("a/b/c/file")); // the parents only
    EXPECT_TRUE(QFileInfo(rootPath("a/b/c")).isDir());
    EXPECT_FALSE(QFileInfo::exists(rootPath("a/b/c/file")));
    ImmutableGuard guard(rootPath("a"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.createFolders(rootPath("a/x/y/file")); // a failure is ignored
    EXPECT_FALSE(QFileInfo::exists(rootPath("a/x")));
}

// The first entry is always the empty "no group": the editor's rows are one off the registry's.
TEST_F(AppServicesTest, GroupEditsRenumberAndAFailedSaveKeepsTheFile)
{
    writeText(groupsFile(), PropertyList::toXml(QVariantList{"New Group", "G1", "G2"}));
    AppServices services(parts());
    services.setGroupAt(2, "Synths"); // one past the last: appended
    int changes = 0;
    QObject::connect(&services, &AppServices::groupsChanged, [&] { ++changes; });
    for (int row : {-1, -7, 3}) // no selection, or none that exists: nothing shifts
        services.removeGroup(row);
    EXPECT_EQ(changes, 0);
    services.removeGroup(0);
    EXPECT_EQ(services.groupMenuTitles(), QStringList({"G2", "Synths"}));
    QDir(homePath("Library")).removeRecursively(); // the folders are made again
    services.saveGroupRegistry();
    const QStringList saved{"", "G2", "Synths"};
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), saved);

    ImmutableGuard guard(groupsFile());
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    services.addGroup();
    ui.alertAnswers << AlertAnswer::Third; // Cancel: said, and nothing replaced
    services.saveGroupRegistry();
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), saved);
    EXPECT_EQ(ui.alertMessages(), QStringList{"“groups.plist” could not be saved."});
}

// A switch that records its own inverse on every change, as the managers' edits do.
struct Switch {
    UndoStack &undo;
    QString name;
    bool on = false;
    void toggle()
    {
        undo.registerUndo(this, [this] { toggle(); });
        on = !on;
        undo.setActionName(name);
    }
};

TEST_F(AppServicesTest, UndoRecordsTheRedoAndRedoTheUndo)
{
    AppServices services(parts());
    UndoStack &undo = *services.undoStack();
    auto titles = [&] { return QStringList{services.undoTitle(), services.redoTitle()}; };
    services.undo(); // nothing to undo
    EXPECT_EQ(titles(), QStringList({"Undo", "Redo"}));

    Switch a{undo, "A"}, b{undo, "B"};
    a.toggle();
    b.toggle();
    services.undo();
    EXPECT_FALSE(b.on);
    EXPECT_EQ(titles(), QStringList({"Undo A", "Redo B"}));
    services.undo();
    services.redo(); // what a redo records must not drop the other redo step
    EXPECT_TRUE(a.on);
    EXPECT_EQ(titles(), QStringList({"Undo A", "Redo B"}));

    b.toggle(); // a new change clears what could be redone
    EXPECT_FALSE(undo.canRedo());
    // An inverse that names nothing still leaves the redo named after the step it undid.
    undo.registerUndo(nullptr, [&undo] { undo.registerUndo(nullptr, [] {}); });
    EXPECT_EQ(undo.undoText(), "Undo");
    undo.setActionName("C");
    undo.undo();
    EXPECT_EQ(undo.redoText(), "Redo C");

    a.toggle(); // removing a target drops its steps only
    undo.removeActionsOf(&a);
    EXPECT_EQ(undo.undoText(), "Undo B");
    undo.undo();
    EXPECT_FALSE(b.on || undo.canUndo());
}

} // namespace
} // namespace korvane
