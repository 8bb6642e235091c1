#include "codec/PluginArchive.h"

#include "PluginLibraryBuilder.h"
#include "os/PathBytes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

using namespace korvane;
using B = PluginLibraryBuilder;

namespace {

// Every file, folder and link below root with its contents, link target or "dir", and mode.
QMap<QString, QString> snapshot(const QString &root)
{
    QMap<QString, QString> items;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        const QString relative = path.mid(root.size() + 1);
        struct stat st {};
        ::lstat(QFile::encodeName(path).constData(), &st);
        QString what;
        if (info.isSymLink()) {
            char target[4096] = {};
            const ssize_t length =
                ::readlink(QFile::encodeName(path).constData(), target, sizeof target - 1);
            what = "link:" + QString::fromUtf8(target, length < 0 ? 0 : int(length));
        } else if (info.isDir())
            what = "dir";
        else {
            QFile file(path);
            file.open(QIODevice::ReadOnly);
            what = QString::fromLatin1(
                QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256).toHex());
        }
        items[relative] = what + QString(" %1").arg(st.st_mode & 0777, 0, 8);
    }
    return items;
}

void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray readBytes(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

// An archive as a hostile writer makes it: any names, types and links, xz-compressed.
struct RawEntry {
    RawEntry(const QByteArray &entryName, mode_t entryType = AE_IFREG,
             const QByteArray &linkTarget = {})
        : name(entryName), type(entryType), link(linkTarget)
    {
    }
    QByteArray name;
    mode_t type;
    QByteArray link;
    QByteArray data = "x";
};

void writeRaw(const QString &path, const QList<RawEntry> &entries)
{
    archive *a = archive_write_new();
    archive_write_add_filter_xz(a);
    archive_write_set_format_pax_restricted(a);
    ASSERT_EQ(archive_write_open_filename(a, QFile::encodeName(path).constData()), ARCHIVE_OK);
    for (const RawEntry &raw : entries) {
        archive_entry *entry = archive_entry_new();
        archive_entry_set_pathname(entry, raw.name.constData());
        archive_entry_set_filetype(entry, raw.type);
        archive_entry_set_perm(entry, 0644);
        if (raw.type == AE_IFLNK)
            archive_entry_set_symlink(entry, raw.link.constData());
        if (raw.type == AE_IFCHR)
            archive_entry_set_rdev(entry, makedev(1, 3));
        archive_entry_set_size(entry, raw.type == AE_IFREG ? raw.data.size() : 0);
        archive_write_header(a, entry);
        if (raw.type == AE_IFREG)
            archive_write_data(a, raw.data.constData(), size_t(raw.data.size()));
        archive_entry_free(entry);
    }
    archive_write_close(a);
    archive_write_free(a);
}

class PluginArchiveTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        source = B::makeFolder(path("source"));
        bundle = B::makeVST(source, "Echo Verb", QByteArray(300000, 'e'));
        // What bundles carry: a link inside, an executable, a name that is not UTF-8.
        ASSERT_EQ(::symlink("MacOS/Plugin", QFile::encodeName(bundle + "/Contents/Current")), 0);
        ::chmod(QFile::encodeName(bundle + "/Contents/MacOS/Plugin").constData(), 0755);
        oddName = pathFromBytes(QByteArray("Bad\xff\xfe.vst"));
        ASSERT_EQ(::mkdir(pathBytes(source + "/" + oddName).constData(), 0755), 0);
        const int fd = ::open(pathBytes(source + "/" + oddName + "/data").constData(),
                              O_WRONLY | O_CREAT, 0644);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(::write(fd, "odd", 3), 3);
        ::close(fd);
    }
    // QTemporaryDir cannot remove a name that is not UTF-8.
    void TearDown() override { QProcess::execute("rm", {"-rf", "--", dir.path()}); }
    QString path(const QString &relative) const { return dir.path() + "/" + relative; }
    QList<ArchiveTree> trees() const
    {
        return {{bundle, "plugins/0/Echo Verb.vst"},
                {source + "/" + oddName, "plugins/1/" + oddName}};
    }
    QString archive()
    {
        const QString file = path("backup.tar.xz");
        const ArchiveResult result =
            PluginArchive::write(file, {{"manifest.json", "{\"a\":1}"}}, trees());
        EXPECT_TRUE(result.ok) << qPrintable(result.error);
        return file;
    }
    // Not one file below folder.
    static bool isEmptyFolder(const QString &folder)
    {
        return QDir(folder)
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
            .isEmpty();
    }

    QTemporaryDir dir;
    QString source, bundle, oddName;
};

} // namespace

// A bundle goes in and comes out byte for byte, with its link, its modes and a name that is not
// UTF-8; the documents come back by name, and verify lists every entry in order.
TEST_F(PluginArchiveTest, TreesComeBackAsTheyWent)
{
    const QString file = archive();
    QStringList entries;
    const ArchiveResult verified = PluginArchive::verify(file, {}, &entries);
    ASSERT_TRUE(verified.ok) << qPrintable(verified.error);
    EXPECT_EQ(entries.first(), "manifest.json");
    EXPECT_TRUE(entries.contains("plugins/0/Echo Verb.vst/Contents/Current"));
    EXPECT_TRUE(entries.contains("plugins/1/" + oddName + "/data"));

    const QString out = B::makeFolder(path("out"));
    ArchiveLimits scoped;
    scoped.linkScopeDepth = 3;
    const ArchiveResult extracted = PluginArchive::extract(file, out, scoped);
    ASSERT_TRUE(extracted.ok) << qPrintable(extracted.error);
    EXPECT_EQ(snapshot(out + "/plugins/0/Echo Verb.vst"), snapshot(bundle));
    EXPECT_EQ(snapshot(out + "/plugins/1/" + oddName), snapshot(source + "/" + oddName));
    EXPECT_EQ(PluginArchive::readDocument(file, "manifest.json"), QByteArray("{\"a\":1}"));

    // A link out of its bundle would make the archive unreadable: it is left out, and said.
    ASSERT_EQ(::symlink("../../Elsewhere", QFile::encodeName(bundle + "/Contents/Out")), 0);
    const ArchiveResult leaving = PluginArchive::write(path("leaving.tar.xz"), {}, trees());
    ASSERT_TRUE(leaving.ok);
    EXPECT_EQ(leaving.skipped, QStringList{bundle + "/Contents/Out"});
    EXPECT_TRUE(PluginArchive::verify(path("leaving.tar.xz"), scoped).ok);
    EXPECT_FALSE(PluginArchive::readDocument(file, "missing.json"));
}

// Whatever damage an archive took, verify refuses it and names what it found; nothing of a
// refused archive is ever put in place by the callers.
TEST_F(PluginArchiveTest, DamagedOrHostileArchivesAreRefused)
{
    const QString good = archive();
    const QByteArray bytes = readBytes(good);

    writeBytes(path("truncated"), bytes.left(bytes.size() * 2 / 3));
    QByteArray flipped = bytes;
    flipped[flipped.size() / 2] = char(flipped.at(flipped.size() / 2) ^ 0x10);
    writeBytes(path("flipped"), flipped);
    writeBytes(path("plain"), "not an archive at all");
    writeRaw(path("dotdot"), {{"plugins/0/ok"}, {"../x"}});
    writeRaw(path("inner-dotdot"), {{"plugins/0/../../x"}});
    writeRaw(path("absolute"), {{"/tmp/x"}});
    writeRaw(path("link-out"),
             {{"plugins/0/A.vst", AE_IFDIR}, {"plugins/0/A.vst/l", AE_IFLNK, "../../../../etc"}});
    writeRaw(path("link-absolute"), {{"plugins/0/l", AE_IFLNK, "/etc/passwd"}});
    writeRaw(path("below-link"), {{"plugins/l", AE_IFLNK, "0"}, {"plugins/l/x"}});
    writeRaw(path("device"), {{"plugins/0/null", AE_IFCHR}});
    writeRaw(path("twice"), {{"plugins/0/x"}, {"plugins/0/x"}});

    const QMap<QString, QString> expected{
        {"truncated", ""},
        {"flipped", ""},
        {"plain", ""},
        {"dotdot", "\"../x\""},
        {"inner-dotdot", "\"plugins/0/../../x\""},
        {"absolute", "\"/tmp/x\": an absolute name"},
        {"link-out", "\"plugins/0/A.vst/l\": a link outside"},
        {"link-absolute", "\"plugins/0/l\": a link outside"},
        {"below-link", "\"plugins/l/x\": below a link"},
        {"device", "\"plugins/0/null\": neither a file"},
        {"twice", "\"plugins/0/x\": named twice"},
    };
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        const ArchiveResult result = PluginArchive::verify(path(it.key()));
        EXPECT_FALSE(result.ok) << qPrintable(it.key());
        EXPECT_FALSE(result.error.isEmpty()) << qPrintable(it.key());
        EXPECT_TRUE(result.error.contains(it.value()))
            << qPrintable(it.key() + ": " + result.error);
        // Extraction applies the same rules: nothing lands outside the destination.
        const QString out = B::makeFolder(path("out-" + it.key()));
        EXPECT_FALSE(PluginArchive::extract(path(it.key()), out).ok) << qPrintable(it.key());
    }
    EXPECT_FALSE(QFileInfo::exists(path("x")));
    EXPECT_FALSE(QFileInfo::exists("/tmp/x"));
}

// A link may climb inside the tree and go down again; one that climbs past the top, climbs after
// descending, or (with a scope) leaves its own plug-in is refused.
TEST_F(PluginArchiveTest, LinksStayInsideTheTree)
{
    EXPECT_EQ(PluginArchive::refusal("a/b/l", "../c"), "");
    EXPECT_EQ(PluginArchive::refusal("a/b/l", "../../c/d"), "");
    EXPECT_NE(PluginArchive::refusal("a/b/l", "../../../c"), "");
    EXPECT_NE(PluginArchive::refusal("a/b/l", "c/../../.."), "");
    EXPECT_NE(PluginArchive::refusal("a/b/l", ""), "");

    ArchiveLimits scoped;
    scoped.linkScopeDepth = 3;
    writeRaw(path("in-plugin"), {{"plugins/0/A.vst/Contents/l", AE_IFLNK, "../Info"}});
    writeRaw(path("to-neighbour"), {{"plugins/0/A.vst/l", AE_IFLNK, "../B.vst"}});
    EXPECT_TRUE(PluginArchive::verify(path("in-plugin"), scoped).ok);
    EXPECT_TRUE(PluginArchive::verify(path("to-neighbour")).ok);
    const ArchiveResult refused = PluginArchive::verify(path("to-neighbour"), scoped);
    EXPECT_TRUE(refused.error.contains("leaves its plug-in")) << qPrintable(refused.error);
}

// The limits hold against an archive that claims, or holds, too much.
TEST_F(PluginArchiveTest, LimitsOnCountAndSizeHold)
{
    const QString file = archive();
    ArchiveLimits few;
    few.maxEntries = 3;
    EXPECT_TRUE(PluginArchive::verify(file, few).error.contains("more entries"));
    ArchiveLimits small;
    small.maxBytes = 1000;
    EXPECT_TRUE(PluginArchive::verify(file, small).error.contains("more than its limit"));
    const QString out = B::makeFolder(path("out"));
    EXPECT_FALSE(PluginArchive::extract(file, out, small).ok);
}

// A cancel midway and a full disk leave no archive and no temporary file; an archive already
// under the name stays as it was until a new one is whole.
TEST_F(PluginArchiveTest, AFailedOrCancelledWriteLeavesNothing)
{
    const QString target = path("backup.tar.xz");
    writeBytes(target, "older backup");
    int calls = 0;
    const ArchiveResult cancelled =
        PluginArchive::write(target, {}, trees(), [&](qint64 done, qint64 total) {
            EXPECT_LE(done, total);
            return ++calls < 2;
        });
    EXPECT_TRUE(cancelled.cancelled);
    EXPECT_FALSE(cancelled.ok);
    EXPECT_EQ(readBytes(target), "older backup");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"backup.tar.xz"});

    QTemporaryDir mountPoint;
    if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=64k", "tmpfs", mountPoint.path()})
        != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here; the full disk is not tested";
    // Random bytes do not compress: 300 kB cannot fit in 64 kB.
    QFile random("/dev/urandom");
    random.open(QIODevice::ReadOnly);
    writeBytes(bundle + "/Contents/Resources.bin", random.read(300000));
    const ArchiveResult full = PluginArchive::write(mountPoint.path() + "/b.tar.xz", {}, trees());
    EXPECT_FALSE(full.ok);
    EXPECT_FALSE(full.error.isEmpty());
    EXPECT_TRUE(isEmptyFolder(mountPoint.path()));
    QProcess::execute("umount", {mountPoint.path()});
}
