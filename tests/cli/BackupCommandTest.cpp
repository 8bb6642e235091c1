// KorvaneCMD backup and restore, run as built against temporary roots.
#include "PluginLibraryBuilder.h"
#include "support/RunKorvaneCmd.h"
#include "support/TestRoots.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QProcess>

namespace korvane {

namespace {

using Builder = PluginLibraryBuilder;

class BackupCommandTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        for (const QString &base : {root(), home()})
            QDir().mkpath(base + "/Library/Audio/Plug-Ins");
        QDir().mkpath(homePath("Documents"));
        Builder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Alpha", MachO::universal2());
        Builder::makeAudioUnit(folder(TypeAU, LocSystemDisabled), "Beta", MachO::intel());
        Builder::makeAudioUnit(folder(TypeAU, LocUserDisabled), "Gamma", MachO::ppc());
        Builder::makeAudioUnit(folder(TypeAU, LocUserActive), "Delta", MachO::x86_64());
        archive = homePath("Documents/au.tar.xz");
    }

    ToolRun tool(const QStringList &arguments)
    {
        return runKorvaneCmd(KORVANE_CMD, arguments,
                             {{"KORVANE_ROOT", root()}, {"HOME", home()}, {"XDG_DATA_HOME", {}}});
    }

    QString au(int loc, const QString &name) const
    {
        return folder(TypeAU, loc) + "/" + name + ".component";
    }

    // Every item below the format's folders, with a digest of each file.
    QMap<QString, QByteArray> library() const
    {
        QMap<QString, QByteArray> items;
        for (int loc = 0; loc < LocationCount; ++loc) {
            QDirIterator it(folder(TypeAU, loc),
                            QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                            QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString path = it.next();
                QFile file(path);
                items[path] =
                    it.fileInfo().isDir() || !file.open(QIODevice::ReadOnly)
                        ? QByteArray("folder")
                        : QCryptographicHash::hash(file.readAll(), QCryptographicHash::Md5);
            }
        }
        return items;
    }

    QString archive;
};

} // namespace

// What is missing comes back in its place and state; what is installed stays and is named on
// standard error, until --replace puts the saved copy there and the installed one in the trash.
TEST_F(BackupCommandTest, RestorePutsBackWhatIsMissingAndReplacesOnlyWhenAsked)
{
    const QMap<QString, QByteArray> saved = library();
    const ToolRun backup = tool({"backup", "--format", "au", "--to", archive});
    ASSERT_EQ(backup.exitCode, 0) << qPrintable(backup.err);
    EXPECT_TRUE(backup.out.contains("backed up 4 plug-ins")) << qPrintable(backup.out);

    QProcess::execute("rm", {"-rf", au(LocSystemActive, "Alpha"), au(LocUserDisabled, "Gamma")});
    writeText(au(LocUserActive, "Delta") + "/Contents/changed", "mine");
    // A check names what the restore will do, exits 3 and leaves every file as it is.
    const QMap<QString, QByteArray> beforeCheck = library();
    const ToolRun check = tool({"restore", "--check", "--format", "au", archive});
    EXPECT_EQ(check.exitCode, 3) << qPrintable(check.err);
    EXPECT_TRUE(check.out.contains("would restore " + au(LocSystemActive, "Alpha")));
    EXPECT_TRUE(check.out.contains("would restore " + au(LocUserDisabled, "Gamma")));
    EXPECT_TRUE(check.err.contains("installed already: " + au(LocUserActive, "Delta")));
    EXPECT_EQ(library(), beforeCheck);
    const ToolRun replaceCheck =
        tool({"restore", "--check", "--replace", "--format", "au", archive});
    EXPECT_TRUE(replaceCheck.out.contains("would move to the trash " + au(LocUserActive, "Delta")))
        << qPrintable(replaceCheck.out);
    EXPECT_EQ(library(), beforeCheck);

    const ToolRun restore = tool({"restore", "--format", "au", archive});
    EXPECT_EQ(restore.exitCode, 0) << qPrintable(restore.err);
    EXPECT_TRUE(restore.out.contains("restored " + au(LocSystemActive, "Alpha")));
    EXPECT_TRUE(restore.out.contains("restored " + au(LocUserDisabled, "Gamma")));
    EXPECT_TRUE(restore.err.contains("installed already: " + au(LocUserActive, "Delta")));
    EXPECT_TRUE(restore.err.contains("installed already: " + au(LocSystemDisabled, "Beta")));
    EXPECT_TRUE(QFileInfo::exists(au(LocUserActive, "Delta") + "/Contents/changed"));

    const ToolRun replace = tool({"restore", "--replace", "--format", "au", archive});
    EXPECT_EQ(replace.exitCode, 0) << qPrintable(replace.err);
    EXPECT_EQ(library(), saved);
    EXPECT_TRUE(
        QFileInfo::exists(homePath(".local/share/Trash/files/Delta.component/Contents/changed")));
    EXPECT_TRUE(replace.err.contains("is now in the trash")) << qPrintable(replace.err);
}

// A damaged archive, one of another format and a wrong command line exit 2 and change nothing;
// an archive that cannot be written exits 1 and leaves nothing.
TEST_F(BackupCommandTest, BadInputChangesNothing)
{
    ASSERT_EQ(tool({"backup", "--format", "au", "--to", archive}).exitCode, 0);
    ASSERT_EQ(tool({"backup", "--format", "vst", "--to", homePath("vst.tar.xz")}).exitCode, 0);
    QFile file(archive);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    bytes[bytes.size() / 2] = char(bytes.at(bytes.size() / 2) ^ 0x01);
    file.seek(0);
    file.write(bytes);
    file.close();
    QProcess::execute("rm", {"-rf", au(LocSystemActive, "Alpha")});
    const QMap<QString, QByteArray> before = library();

    const ToolRun damaged = tool({"restore", "--format", "au", archive});
    EXPECT_EQ(damaged.exitCode, 2);
    EXPECT_TRUE(damaged.err.contains("nothing restored")) << qPrintable(damaged.err);
    const ToolRun foreign = tool({"restore", "--format", "au", homePath("vst.tar.xz")});
    EXPECT_EQ(foreign.exitCode, 2);
    EXPECT_TRUE(foreign.err.contains("another format (vst)")) << qPrintable(foreign.err);
    EXPECT_EQ(tool({"restore", "--format", "au", homePath("none.tar.xz")}).exitCode, 2);
    EXPECT_EQ(library(), before);

    for (const QStringList &wrong :
         {QStringList{"backup", "--format", "au"}, QStringList{"restore", "--format", "au"},
          QStringList{"backup", "--to", archive},
          QStringList{"backup", "--format", "au", "--replace", "--to", archive},
          QStringList{"list", "--to", archive}}) {
        EXPECT_EQ(tool(wrong).exitCode, 2) << qPrintable(wrong.join(' '));
    }

    const ToolRun unwritable =
        tool({"backup", "--format", "au", "--to", homePath("no/such/a.tar.xz")});
    EXPECT_EQ(unwritable.exitCode, 1);
    EXPECT_TRUE(unwritable.err.contains("backup not written")) << qPrintable(unwritable.err);
    EXPECT_FALSE(QFileInfo::exists(homePath("no")));
}

} // namespace korvane
