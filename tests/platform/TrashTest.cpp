#include "platform/LocalFileOperations.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDir>
#include <QRegularExpression>
#include <QUrl>

#include <sys/stat.h>

namespace korvane {
namespace {

using B = PluginLibraryBuilder;

// Each test starts from a home without .local/share and runs in an empty current folder, which
// must stay empty: the trash is in the home folder or nowhere.
class TrashTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        ASSERT_TRUE(m_current.isValid());
        m_previous = QDir::currentPath();
        ASSERT_TRUE(QDir::setCurrent(m_current.path()));
        ASSERT_TRUE(QDir(homePath(".local")).removeRecursively());
    }
    void TearDown() override
    {
        QDir::setCurrent(m_previous);
        EXPECT_TRUE(
            QDir(m_current.path()).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden));
        TestRoots::TearDown();
    }
    FileOperations &ops() { return disk(); }
    QString trash(const QString &relative) const
    {
        return homePath(".local/share/Trash/" + relative);
    }
    QStringList entries(const QString &folder) { return ops().directoryContents(folder); }

private:
    QTemporaryDir m_current;
    QString m_previous;
};

int modeOf(const QString &path)
{
    struct stat info;
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? int(info.st_mode & 07777) : -1;
}

TEST_F(TrashTest, MakesTheHomeTrashAndRecordsWhereEachItemCameFrom)
{
    const QString name = QStringLiteral("Echo Verb \u00fc.vst");
    const QString first = B::makeVST(rootPath("VST"), name, MachO::intel());
    B::makeFile(rootPath("VST"), "._" + name, {}, "finder info");
    const QString second = B::makeFile(rootPath("VST (Disabled)"), name, {}, "second");

    FileError error;
    QString trashedTo;
    ASSERT_TRUE(ops().moveToTrash(first, &error, &trashedTo)) << error.reason.toStdString();
    EXPECT_EQ(trashedTo, trash("files/" + name));
    for (const char *folder : {".local", ".local/share", ".local/share/Trash",
                               ".local/share/Trash/files", ".local/share/Trash/info"})
        EXPECT_EQ(modeOf(homePath(folder)), 0700) << folder;
    ASSERT_TRUE(ops().moveToTrash(second, &error, &trashedTo)) << error.reason.toStdString();
    EXPECT_EQ(trashedTo, trash("files/" + name + ".2"));
    EXPECT_EQ(readText(trashedTo), "second");

    // A stray entry without a record keeps its name and contents.
    B::makeFile(trash("files"), "Plain.vst", {}, "stray");
    ASSERT_TRUE(ops().moveToTrash(B::makeFile(rootPath("VST"), "Plain.vst"), &error, &trashedTo));
    EXPECT_EQ(trashedTo, trash("files/Plain.vst.2"));
    EXPECT_EQ(readText(trash("files/Plain.vst")), "stray");

    EXPECT_EQ(entries(rootPath("VST")), QStringList());
    EXPECT_EQ(entries(trash("files")),
              QStringList({"._" + name, name, name + ".2", "Plain.vst", "Plain.vst.2"}));
    EXPECT_EQ(entries(trash("info")),
              QStringList({"._" + name + ".trashinfo", name + ".2.trashinfo", name + ".trashinfo",
                           "Plain.vst.2.trashinfo"}));
    const QString path = QString::fromLatin1(QUrl::toPercentEncoding(root(), "/"))
                         + "/VST%20%28Disabled%29/Echo%20Verb%20%C3%BC.vst";
    const QRegularExpression record(
        "^\\[Trash Info\\]\nPath=" + QRegularExpression::escape(path)
        + "\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n$");
    EXPECT_TRUE(record.match(readText(trash("info/" + name + ".2.trashinfo"))).hasMatch())
        << readText(trash("info/" + name + ".2.trashinfo")).toStdString();
}

TEST_F(TrashTest, WithoutRoomInTheHomeNothingMovesAndNothingIsWritten)
{
    const QString item = B::makeFile(rootPath("VST"), "Echo.vst", {}, "mine");
    FileError error;

    const QString missing = homePath("missing");
    EXPECT_FALSE(LocalFileOperations(Roots::at(root(), missing)).moveToTrash(item, &error));
    EXPECT_EQ(error.path, missing);
    EXPECT_EQ(error.reason, "There is no trash: the home folder does not exist");
    EXPECT_FALSE(QFileInfo::exists(missing));

    const QString home = this->home();
    ImmutableGuard guard(home);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    EXPECT_FALSE(ops().moveToTrash(item, &error));
    EXPECT_EQ(error.path, homePath(".local"));
    EXPECT_TRUE(error.reason.startsWith("Cannot create the trash folder: "))
        << qPrintable(error.reason);
    EXPECT_TRUE(QDir(home).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden));
    EXPECT_EQ(readText(item), "mine");
}

} // namespace
} // namespace korvane
