#include "library/PluginBackup.h"

#include "FormatManagerFixture.h"
#include "codec/PluginArchive.h"
#include "os/PathBytes.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <archive.h>
#include <archive_entry.h>

namespace korvane {

namespace {

// A tmpfs of the given size mounted over a folder for a test's life.
struct SmallDisk {
    SmallDisk(const QString &folder, const char *size) : path(folder)
    {
        QDir().mkpath(path);
        mounted = QProcess::execute("mount",
                                    {"-t", "tmpfs", "-o", QString("size=") + size, "tmpfs", path})
                  == 0;
    }
    ~SmallDisk()
    {
        if (mounted && QProcess::execute("umount", {path}) != 0)
            QProcess::execute("umount", {"-l", path});
    }
    QString path;
    bool mounted = false;
};

QByteArray randomBytes(int size)
{
    QFile random("/dev/urandom");
    random.open(QIODevice::ReadOnly);
    return random.read(size);
}

} // namespace

// Audio Units in all four places, one with a large executable that does not compress.
class PluginBackupTest : public FormatManagerFixture {
protected:
    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        for (int loc = 0; loc < LocationCount; ++loc)
            addAU(loc, QString("Unit %1").arg(loc));
        QFile big(Bundle::executablePath(auPath(LocUserActive, "Unit 2.component")));
        ASSERT_TRUE(big.open(QIODevice::Append));
        big.write(randomBytes(2 << 20));
        big.close();
        au->rescan();
        archive = homePath("Documents/AU.tar.xz");
        QDir().mkpath(homePath("Documents"));
    }

    // Every item below the four folders with its contents' digest: what a restore must bring
    // back, and what a refused one must leave.
    QMap<QString, QByteArray> library() const
    {
        QMap<QString, QByteArray> items;
        for (int loc = 0; loc < LocationCount; ++loc) {
            const QString base = folder(TypeAU, loc);
            QDirIterator it(base, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                            QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString path = it.next();
                if (it.fileInfo().isDir()) {
                    items[path] = "folder";
                    continue;
                }
                QFile file(path);
                file.open(QIODevice::ReadOnly);
                items[path] = QCryptographicHash::hash(file.readAll(), QCryptographicHash::Md5);
            }
        }
        return items;
    }
    bool backUp()
    {
        ui.savePanelAnswers.enqueue(archive);
        au->maintenance().backup();
        return QFileInfo::exists(archive);
    }
    void removeAll()
    {
        for (int loc = 0; loc < LocationCount; ++loc)
            QProcess::execute("rm", {"-rf", "--", folder(TypeAU, loc)});
    }
    void restore()
    {
        ui.openPanelAnswers.enqueue(archive);
        au->maintenance().restoreBackup();
    }

    QString archive;
};

// The whole library, on and off, system and user, comes back where and as it was, with nothing
// of the staging left; the backup itself says how many plug-ins it holds.
TEST_F(PluginBackupTest, RestoreBringsBackEveryPlugInInItsPlace)
{
    const QMap<QString, QByteArray> before = library();
    ASSERT_TRUE(backUp());
    EXPECT_TRUE(logText().contains("4 plug-ins backed up")) << qPrintable(logText());
    EXPECT_TRUE(ui.savePanels.first().fileName.endsWith(".tar.xz"));

    removeAll();
    restore();
    EXPECT_EQ(library(), before);
    EXPECT_TRUE(ui.alerts.isEmpty()) << qPrintable(ui.alertMessages().join(", "));
    EXPECT_EQ(names(au).size(), 4);
    EXPECT_EQ(au->pendingCount(), 0);
    for (int loc = 0; loc < LocationCount; ++loc)
        EXPECT_FALSE(QDir(folder(TypeAU, loc))
                         .entryList(QDir::Hidden | QDir::AllEntries)
                         .join(" ")
                         .contains(".korvane-"));
}

// An installed copy is never replaced without asking: Keep leaves it and shows the saved state
// as a change to apply, Replace puts it in the trash, Cancel changes nothing at all.
TEST_F(PluginBackupTest, AnInstalledCopyIsKeptReplacedOrLeftAsAsked)
{
    ASSERT_TRUE(backUp());
    // Unit 1 was off when saved; now it is on, and holds something new.
    ASSERT_TRUE(disk().move(auPath(LocSystemDisabled, "Unit 1.component"),
                            auPath(LocSystemActive, "Unit 1.component")));
    writeText(auPath(LocSystemActive, "Unit 1.component") + "/Contents/new", "mine");
    QProcess::execute("rm", {"-rf", "--", auPath(LocUserDisabled, "Unit 3.component")});
    au->rescan();
    const QMap<QString, QByteArray> changed = library();

    ui.alertAnswers.enqueue(AlertAnswer::Third); // Cancel
    restore();
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(ui.alerts.first().messageText.contains("Unit 0.component"));
    EXPECT_EQ(library(), changed);

    // Unit 0, 1 and 2 are installed; Unit 3 is missing and comes back either way.
    for (AlertAnswer answer : {AlertAnswer::First, AlertAnswer::First, AlertAnswer::First})
        ui.alertAnswers.enqueue(answer);
    restore();
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Unit 1.component/Contents/new")));
    EXPECT_FALSE(exists(auPath(LocSystemDisabled, "Unit 1.component")));
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Unit 3.component")));
    // The saved set says Unit 1 is off: a change for the person to apply.
    EXPECT_EQ(au->pendingCount(), 1);
    EXPECT_FALSE(item(au, "Unit 1.component")->isActive());

    for (AlertAnswer answer :
         {AlertAnswer::First, AlertAnswer::Second, AlertAnswer::First, AlertAnswer::First})
        ui.alertAnswers.enqueue(answer);
    restore();
    EXPECT_FALSE(exists(auPath(LocSystemActive, "Unit 1.component")));
    EXPECT_TRUE(exists(auPath(LocSystemDisabled, "Unit 1.component")));
    EXPECT_FALSE(exists(auPath(LocSystemDisabled, "Unit 1.component/Contents/new")));
    EXPECT_TRUE(exists(homePath(".local/share/Trash/files/Unit 1.component/Contents/new")));
}

// A damaged archive or one of another format is refused with the reason, and nothing changes.
TEST_F(PluginBackupTest, ADamagedOrForeignArchiveChangesNothing)
{
    ASSERT_TRUE(backUp());
    removeAll();
    au->rescan();
    const QMap<QString, QByteArray> empty = library();

    QFile file(archive);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QByteArray bytes = file.readAll();
    file.resize(bytes.size() - 5000);
    file.close();
    restore();
    EXPECT_EQ(ui.alertMessages(), QStringList{"The backup was not restored"});
    EXPECT_EQ(library(), empty);

    // A backup's own manifest beside an entry that climbs out, or a link out of its plug-in.
    ASSERT_TRUE(backUp());
    const std::optional<QByteArray> manifest =
        PluginArchive::readDocument(archive, PluginBackup::manifestName());
    ASSERT_TRUE(manifest);
    removeAll();
    au->rescan();
    for (const auto &[name, link] : {std::pair<QByteArray, QByteArray>{"../x", {}},
                                     {"plugins/0/Unit 0.component/l", "../../../../x"}}) {
        struct archive *hostile = archive_write_new();
        archive_write_add_filter_xz(hostile);
        archive_write_set_format_pax_restricted(hostile);
        archive_write_open_filename(hostile, QFile::encodeName(archive).constData());
        for (const auto &[entryName, entryBytes] :
             {std::pair<QByteArray, QByteArray>{pathBytes(PluginBackup::manifestName()), *manifest},
              {name, "x"}}) {
            archive_entry *entry = archive_entry_new();
            archive_entry_set_pathname(entry, entryName.constData());
            archive_entry_set_filetype(entry,
                                       link.isEmpty() || entryName != name ? AE_IFREG : AE_IFLNK);
            archive_entry_set_perm(entry, 0644);
            if (archive_entry_filetype(entry) == AE_IFLNK)
                archive_entry_set_symlink(entry, link.constData());
            else
                archive_entry_set_size(entry, entryBytes.size());
            archive_write_header(hostile, entry);
            archive_write_data(hostile, entryBytes.constData(), size_t(entryBytes.size()));
            archive_entry_free(entry);
        }
        archive_write_close(hostile);
        archive_write_free(hostile);
        ui.alerts.clear();
        restore();
        EXPECT_EQ(ui.alertMessages(), QStringList{"The backup was not restored"}) << name.data();
        EXPECT_TRUE(ui.alerts.value(0).informativeText.contains(QString::fromUtf8(name)))
            << qPrintable(ui.alerts.value(0).informativeText);
        EXPECT_EQ(library(), empty);
    }
    EXPECT_FALSE(exists(folder(TypeAU, 0) + "/../x"));
    ui.alerts.clear();

    // A VST backup is no AU backup.
    ui.savePanelAnswers.enqueue(homePath("Documents/VST.tar.xz"));
    vst->rescan();
    vst->maintenance().backup();
    ui.openPanelAnswers.enqueue(homePath("Documents/VST.tar.xz"));
    au->maintenance().restoreBackup();
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(ui.alerts.last().informativeText.contains("another format (vst)"));
    EXPECT_EQ(library(), empty);
}

// Cancel at any point of a restore, while the archive is checked or while it is unpacked, leaves
// the library as it was and no staged copy behind.
TEST_F(PluginBackupTest, CancelAnywhereInARestoreChangesNothing)
{
    ASSERT_TRUE(backUp());
    removeAll();
    au->rescan();
    const QMap<QString, QByteArray> empty = library();
    ui.cancelAt = 1000000;
    restore();
    const int looks = ui.looks;
    ASSERT_GT(looks, 10);
    for (int at = 1; at < looks; at += 5) {
        removeAll();
        au->rescan();
        ui.looks = 0;
        ui.cancelAt = at;
        restore();
        EXPECT_EQ(library(), empty) << "cancelled at look " << at;
    }
}

// A full disk while the archive is written, and a Cancel midway, leave no archive; a full disk
// while plug-ins are unpacked leaves the library as it was and no staged copy behind.
TEST_F(PluginBackupTest, AFullDiskOrCancelLeavesNothingHalfDone)
{
    ui.cancelAt = 2;
    EXPECT_FALSE(backUp());
    EXPECT_TRUE(ui.alerts.isEmpty());
    ui.cancelAt = 0;

    SmallDisk small(homePath("Small"), "1m");
    if (!small.mounted)
        GTEST_SKIP() << "cannot mount a tmpfs here; the full disk is not tested";
    ui.savePanelAnswers.enqueue(small.path + "/AU.tar.xz");
    au->maintenance().backup();
    ASSERT_EQ(ui.alertMessages(), QStringList{"The backup could not be written"});
    EXPECT_TRUE(QDir(small.path)
                    .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                    .isEmpty());

    ASSERT_TRUE(backUp());
    removeAll();
    au->rescan();
    // The user's folders on a disk too small for the large plug-in.
    SmallDisk plugIns(homePath("Library/Audio/Plug-Ins"), "1m");
    ASSERT_TRUE(plugIns.mounted);
    au->rescan();
    const QMap<QString, QByteArray> empty = library();
    restore();
    EXPECT_EQ(ui.alertMessages().last(), "The backup was not restored");
    EXPECT_TRUE(ui.alerts.last().informativeText.contains("No space left on device"))
        << qPrintable(ui.alerts.last().informativeText);
    EXPECT_EQ(library(), empty);
}

// Linux VST 2 in five folder pairs: /usr/local/lib/vst, ~/.vst, ~/.lxvst, then the distribution's
// /usr/lib/vst and /usr/lib/lxvst. A backup holds every pair Korvane moves in, the third as well;
// the distribution's plug-ins are left to its package manager, and a backup naming one (as a
// hand-made archive may) puts nothing there.
TEST_F(PluginBackupTest, ALinuxFormatsBackupCoversEveryPairButTheDistributions)
{
    const Format *row = nullptr;
    for (const Format &format : FormatTable::builtIn())
        if (format.prefix == "LXVST")
            row = &format;
    ASSERT_TRUE(row);
    ASSERT_TRUE(row->isDistributionOwned(6));
    FormatManager lxvst(*row, context->parts);
    const auto path = [&](int loc, const QString &name) {
        return locations().folderPath(*row, loc) + "/" + name;
    };
    const QStringList saved{path(LocSystemActive, "Local.so"), path(LocUserDisabled, "Off.so"),
                            path(4, "Extra.so"), path(5, "Sub/Later.so")};
    for (const QString &file : saved) {
        QDir().mkpath(QFileInfo(file).path());
        writeText(file, file.toUtf8());
    }
    const QString packaged = path(6, "Packaged.so");
    QDir().mkpath(QFileInfo(packaged).path());
    writeText(packaged, "the package's");
    lxvst.rescan();
    ASSERT_EQ(lxvst.items().size(), 5);

    ASSERT_EQ(PluginBackup(lxvst).backup(archive).count, 4);
    EXPECT_TRUE(logText().contains("Left out of the backup: 1 plug-ins in the distribution's"))
        << qPrintable(logText());
    for (const QString &file : saved)
        ASSERT_TRUE(QFile::remove(file));
    lxvst.rescan();
    const PluginBackup::Result restored = PluginBackup(lxvst).restore(archive, {});
    EXPECT_TRUE(restored.ok) << qPrintable(restored.error);
    EXPECT_EQ(restored.restored.size(), 4);
    for (const QString &file : saved)
        EXPECT_EQ(readText(file), file.toUtf8());
    EXPECT_EQ(readText(packaged), "the package's");

    // An archive that puts a plug-in into /usr/lib/vst: refused by name, nothing made there.
    QJsonArray folders;
    for (int loc = 0; loc < row->locationCount(); ++loc)
        folders << row->folder(loc);
    const QJsonObject manifest{
        {"korvaneBackup", 1},
        {"format", "lxvst"},
        {"folders", folders},
        {"plugins",
         QJsonArray{QJsonObject{
             {"name", "Planted.so"}, {"location", 6}, {"entry", "plugins/6/Planted.so"}}}}};
    const QString planted = homePath("Planted.so");
    writeText(planted, "planted");
    const QString handMade = homePath("Documents/planted.tar.xz");
    ASSERT_TRUE(PluginArchive::write(
                    handMade, {{PluginBackup::manifestName(), QJsonDocument(manifest).toJson()}},
                    {{planted, "plugins/6/Planted.so"}})
                    .ok);
    const PluginBackup::Result refused = PluginBackup(lxvst).restore(handMade, {});
    EXPECT_FALSE(refused.ok);
    EXPECT_TRUE(refused.error.contains("the distribution owns that folder"))
        << qPrintable(refused.error);
    EXPECT_FALSE(exists(path(6, "Planted.so")));
    EXPECT_EQ(QDir(locations().folderPath(*row, 6))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{"Packaged.so"});
}

} // namespace korvane
