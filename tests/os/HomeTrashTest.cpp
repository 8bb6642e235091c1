#include "support/TestRoots.h"

#include "DiskFixture.h"

#include <QDir>
#include <QRegularExpression>
#include <QUrl>

// The trash is made in the home, for its owner alone, and records where each item came from;
// without room for it nothing moves and nothing is written.
namespace korvane {
namespace {

class HomeTrashTest : public DiskFixture {
protected:
    void SetUp() override
    {
        DiskFixture::SetUp();
        ASSERT_TRUE(QDir(homePath(".local")).removeRecursively());
        first = B::makeVST(rootPath("VST"), name, MachO::intel());
        B::makeFile(rootPath("VST"), "._" + name, {}, "finder info");
        second = B::makeFile(rootPath("VST (Disabled)"), name, {}, "second");
    }
    const QString name = QStringLiteral("Echo Verb \u00fc.vst");
    QString first, second;
};

TEST_F(HomeTrashTest, WithoutAHomeToHoldItOrWithALockedOneNothingMoves)
{
    FileError error;
    EXPECT_FALSE(
        LocalFileOperations(Roots::at(root(), homePath("none"))).moveToTrash(first, &error));
    EXPECT_EQ(error.path, homePath("none"));
    EXPECT_FALSE(ImmutableGuard(home()).ok() && files.moveToTrash(first, &error)); // locked home
    EXPECT_TRUE(entries(home()).isEmpty());
}

// Items of one name take the next free name; an entry of the trash without a record stays.
TEST_F(HomeTrashTest, EveryItemIsKeptUnderAFreeNameInFoldersForTheOwnerAlone)
{
    FileError error;
    QString trashedTo;
    ASSERT_TRUE(files.moveToTrash(first, &error)) << qPrintable(error.reason);
    ASSERT_TRUE(files.moveToTrash(second, &error, &trashedTo)) << qPrintable(error.reason);
    EXPECT_EQ(trashedTo, trash("files/" + name + ".2"));
    EXPECT_EQ(readText(trashedTo), "second");
    B::makeFile(trash("files"), "Plain.vst", {}, "stray");
    ASSERT_TRUE(files.moveToTrash(B::makeFile(rootPath("VST"), "Plain.vst")));
    EXPECT_EQ(readText(trash("files/Plain.vst")), "stray");
    for (const char *folder : {".local", ".local/share", ".local/share/Trash",
                               ".local/share/Trash/files", ".local/share/Trash/info"})
        EXPECT_EQ(modeOf(homePath(folder)), 0700) << folder;
    EXPECT_TRUE(entries(rootPath("VST")).isEmpty());
    EXPECT_EQ(entries(trash("files")),
              QStringList({"._" + name, name, name + ".2", "Plain.vst", "Plain.vst.2"}));
    EXPECT_EQ(entries(trash("info")),
              QStringList({"._" + name + ".trashinfo", name + ".2.trashinfo", name + ".trashinfo",
                           "Plain.vst.2.trashinfo"}));
}

TEST_F(HomeTrashTest, TheRecordHoldsTheEncodedPathAndTheTime)
{
    FileError error;
    ASSERT_TRUE(files.moveToTrash(first, &error)) << qPrintable(error.reason);
    ASSERT_TRUE(files.moveToTrash(second, &error)) << qPrintable(error.reason);
    const QString path = QString::fromLatin1(QUrl::toPercentEncoding(root(), "/"))
                         + "/VST%20%28Disabled%29/Echo%20Verb%20%C3%BC.vst";
    const QRegularExpression record("^\\[Trash Info\\]\nPath=" + QRegularExpression::escape(path)
                                    + "\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT[\\d:]{8}\n$");
    const QString info = readText(trash("info/" + name + ".2.trashinfo"));
    EXPECT_TRUE(record.match(info).hasMatch()) << qPrintable(info);
}

} // namespace
} // namespace korvane
