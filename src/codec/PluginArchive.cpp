#include "codec/PluginArchive.h"

#include "os/PathBytes.h"

#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

namespace {

constexpr size_t kBlock = 256 * 1024;

struct ArchiveFree {
    void operator()(archive *a) const
    {
        if (a)
            archive_free(a); // closes as well
    }
};
using ArchivePtr = std::unique_ptr<archive, ArchiveFree>;

struct EntryFree {
    void operator()(archive_entry *e) const { archive_entry_free(e); }
};
using EntryPtr = std::unique_ptr<archive_entry, EntryFree>;

QString shown(const QByteArray &name)
{
    return displayName(pathFromBytes(name));
}

QString archiveError(archive *a)
{
    const char *text = archive_error_string(a);
    QString error = text ? QString::fromLocal8Bit(text) : QStringLiteral("unknown error");
    // "Write failed" alone would not tell a full disk from a read-only one.
    if (const int code = archive_errno(a); code > 0) {
        const QString reason = QString::fromLocal8Bit(std::strerror(code));
        if (!error.contains(reason))
            error += QStringLiteral(": ") + reason;
    }
    return error;
}

QString systemError(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

QList<QByteArray> components(const QByteArray &path)
{
    return path.split('/');
}

// ----- Writing ------------------------------------------------------------------------------

class Writer {
public:
    Writer(const QString &path, const ArchiveProgress &progress)
        : m_file(path), m_progress(progress)
    {
    }

    ArchiveResult run(const QList<ArchiveDocument> &documents, const QList<ArchiveTree> &trees)
    {
        for (const ArchiveTree &tree : trees)
            m_total += treeBytes(pathBytes(tree.sourcePath), true);
        // Rewritten in place where a temporary file cannot be made beside the target would leave
        // a half archive under the name on a failure; better to fail.
        m_file.setDirectWriteFallback(false);
        if (!m_file.open(QIODevice::WriteOnly))
            return failed(QStringLiteral("%1: %2").arg(m_file.fileName(), m_file.errorString()));
        m_archive.reset(archive_write_new());
        archive *a = m_archive.get();
        if (archive_write_add_filter_xz(a) != ARCHIVE_OK
            || archive_write_set_filter_option(a, "xz", "compression-level", "3") != ARCHIVE_OK
            || archive_write_set_format_pax_restricted(a) != ARCHIVE_OK
            // Names are the file system's bytes, UTF-8 or not.
            || archive_write_set_format_option(a, "pax", "hdrcharset", "BINARY") != ARCHIVE_OK
            || archive_write_set_bytes_in_last_block(a, 1) != ARCHIVE_OK
            || archive_write_open2(a, this, nullptr, &Writer::writeBlock, nullptr, nullptr)
                   != ARCHIVE_OK)
            return failed(archiveError(a));

        for (const ArchiveDocument &document : documents)
            if (!addDocument(document))
                return finish();
        for (const ArchiveTree &tree : trees)
            if (!add(pathBytes(tree.sourcePath), pathBytes(tree.archiveName), {}))
                return finish();
        if (archive_write_close(a) != ARCHIVE_OK) {
            fail(archiveError(a));
            return finish();
        }
        if (!m_file.commit())
            fail(QStringLiteral("%1: %2").arg(m_file.fileName(), m_file.errorString()));
        return finish();
    }

private:
    static la_ssize_t writeBlock(archive *a, void *self, const void *buffer, size_t length)
    {
        auto *writer = static_cast<Writer *>(self);
        const qint64 written =
            writer->m_file.write(static_cast<const char *>(buffer), qint64(length));
        if (written != qint64(length)) {
            archive_set_error(a, EIO, "%s", qPrintable(writer->m_file.errorString()));
            return -1;
        }
        return la_ssize_t(written);
    }

    qint64 treeBytes(const QByteArray &path, bool top = false) const
    {
        struct stat st {};
        if ((top ? ::stat(path.constData(), &st) : ::lstat(path.constData(), &st)) != 0)
            return 0;
        if (S_ISREG(st.st_mode))
            return st.st_size;
        if (!S_ISDIR(st.st_mode))
            return 0;
        qint64 sum = 0;
        for (const QByteArray &child : children(path))
            sum += treeBytes(path + '/' + child);
        return sum;
    }

    static QList<QByteArray> children(const QByteArray &path)
    {
        QList<QByteArray> names;
        DIR *dir = ::opendir(path.constData());
        if (!dir)
            return names;
        while (const dirent *entry = ::readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..")
                names << name;
        }
        ::closedir(dir);
        std::sort(names.begin(), names.end());
        return names;
    }

    bool addDocument(const ArchiveDocument &document)
    {
        EntryPtr entry(archive_entry_new());
        const QByteArray name = pathBytes(document.archiveName);
        archive_entry_set_pathname(entry.get(), name.constData());
        archive_entry_set_filetype(entry.get(), AE_IFREG);
        archive_entry_set_perm(entry.get(), 0644);
        archive_entry_set_size(entry.get(), document.bytes.size());
        archive_entry_set_mtime(entry.get(), ::time(nullptr), 0);
        if (archive_write_header(m_archive.get(), entry.get()) != ARCHIVE_OK
            || archive_write_data(m_archive.get(), document.bytes.constData(),
                                  size_t(document.bytes.size()))
                   != document.bytes.size())
            return fail(shown(name) + QStringLiteral(": ") + archiveError(m_archive.get()));
        return true;
    }

    // below: the path below the tree's top, empty for the top itself.
    bool add(const QByteArray &source, const QByteArray &name, const QByteArray &below)
    {
        const bool top = below.isEmpty();
        struct stat st {};
        if ((top ? ::stat(source.constData(), &st) : ::lstat(source.constData(), &st)) != 0)
            return fail(shown(source) + QStringLiteral(": ") + systemError(errno));
        if (!S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode) && !S_ISLNK(st.st_mode)) {
            m_skipped << pathFromBytes(source);
            return true;
        }
        EntryPtr entry(archive_entry_new());
        archive_entry_copy_stat(entry.get(), &st);
        archive_entry_set_pathname(entry.get(), name.constData());
        // Put back as the person restoring, whoever owned it here.
        archive_entry_set_uid(entry.get(), 0);
        archive_entry_set_gid(entry.get(), 0);
        archive_entry_set_perm(entry.get(), st.st_mode & 0777);
        archive_entry_set_nlink(entry.get(), 1);
        if (S_ISLNK(st.st_mode)) {
            QByteArray target(PATH_MAX, '\0');
            const ssize_t length =
                ::readlink(source.constData(), target.data(), size_t(target.size()));
            if (length < 0)
                return fail(shown(source) + QStringLiteral(": ") + systemError(errno));
            target.truncate(length);
            // A reader refuses a link that leaves its tree; written, it would make the whole
            // archive unreadable.
            if (!PluginArchive::refusal(below, target).isEmpty()) {
                m_skipped << pathFromBytes(source);
                return true;
            }
            archive_entry_set_symlink(entry.get(), target.constData());
        }
        int fd = -1;
        if (S_ISREG(st.st_mode)) {
            fd = ::open(source.constData(), O_RDONLY | O_CLOEXEC | (top ? 0 : O_NOFOLLOW));
            if (fd < 0)
                return fail(shown(source) + QStringLiteral(": ") + systemError(errno));
        }
        if (archive_write_header(m_archive.get(), entry.get()) != ARCHIVE_OK) {
            if (fd >= 0)
                ::close(fd);
            return fail(shown(name) + QStringLiteral(": ") + archiveError(m_archive.get()));
        }
        if (fd >= 0) {
            const bool copied = copyData(fd, source, st.st_size);
            ::close(fd);
            if (!copied)
                return false;
        }
        if (S_ISDIR(st.st_mode))
            for (const QByteArray &child : children(source))
                if (!add(source + '/' + child, name + '/' + child,
                         top ? child : below + '/' + child))
                    return false;
        return true;
    }

    bool copyData(int fd, const QByteArray &source, qint64 size)
    {
        QByteArray buffer(kBlock, Qt::Uninitialized);
        qint64 left = size;
        while (left > 0) {
            const ssize_t got = ::read(fd, buffer.data(), size_t(std::min<qint64>(left, kBlock)));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                return fail(shown(source) + QStringLiteral(": ") + systemError(errno));
            // A file that shrank while it was read: the header promised its old size.
            if (got == 0)
                return fail(shown(source) + QStringLiteral(": changed while it was read"));
            if (archive_write_data(m_archive.get(), buffer.constData(), size_t(got)) != got)
                return fail(shown(source) + QStringLiteral(": ") + archiveError(m_archive.get()));
            left -= got;
            m_done += got;
            if (m_progress && !m_progress(m_done, m_total)) {
                m_cancelled = true;
                return false;
            }
        }
        return true;
    }

    bool fail(const QString &error)
    {
        if (m_error.isEmpty())
            m_error = error;
        return false;
    }

    ArchiveResult failed(const QString &error)
    {
        fail(error);
        return finish();
    }

    ArchiveResult finish()
    {
        ArchiveResult result;
        result.cancelled = m_cancelled;
        result.error = m_cancelled ? QString() : m_error;
        result.skipped = m_skipped;
        result.ok = !m_cancelled && m_error.isEmpty();
        if (!result.ok) {
            // Closes the archive before the file it writes to goes.
            m_archive.reset();
            m_file.cancelWriting();
            if (m_file.isOpen())
                m_file.commit(); // after cancelWriting: removes the temporary file
        }
        return result;
    }

    QSaveFile m_file;
    ArchiveProgress m_progress;
    ArchivePtr m_archive;
    qint64 m_total = 0;
    qint64 m_done = 0;
    bool m_cancelled = false;
    QString m_error;
    QStringList m_skipped;
};

// ----- Reading ------------------------------------------------------------------------------

// Reads an archive entry by entry under the rules; the handler sees each checked entry and reads
// its data (or not: the reader then reads it to its end).
class Reader {
public:
    using Handler =
        std::function<bool(archive *, archive_entry *, const QByteArray &name, QString *error)>;

    Reader(const QString &path, const ArchiveLimits &limits, const ArchiveProgress &progress)
        : m_path(path), m_limits(limits), m_progress(progress)
    {
    }

    ArchiveResult run(const Handler &handler)
    {
        ArchiveResult result;
        m_archive.reset(archive_read_new());
        archive *a = m_archive.get();
        archive_read_support_filter_xz(a);
        archive_read_support_format_tar(a);
        struct stat st {};
        const QByteArray file = pathBytes(m_path);
        if (::stat(file.constData(), &st) != 0) {
            result.error = displayName(m_path) + QStringLiteral(": ") + systemError(errno);
            return result;
        }
        if (!S_ISREG(st.st_mode)) {
            result.error = displayName(m_path) + QStringLiteral(": not a file");
            return result;
        }
        const qint64 size = st.st_size;
        if (archive_read_open_filename(a, file.constData(), kBlock) != ARCHIVE_OK) {
            result.error = displayName(m_path) + QStringLiteral(": ") + archiveError(a);
            return result;
        }
        qint64 entries = 0;
        qint64 bytes = 0;
        QSet<QByteArray> names;
        QSet<QByteArray> links;
        for (;;) {
            archive_entry *entry = nullptr;
            const int status = archive_read_next_header(a, &entry);
            if (status == ARCHIVE_EOF)
                break;
            if (status != ARCHIVE_OK) {
                result.error = displayName(m_path) + QStringLiteral(": ")
                               + (names.isEmpty() ? archiveError(a)
                                                  : QStringLiteral("after \"%1\": %2")
                                                        .arg(shown(m_last), archiveError(a)));
                return result;
            }
            if (archive_filter_code(a, 0) != ARCHIVE_FILTER_XZ) {
                result.error = displayName(m_path) + QStringLiteral(": not a Korvane backup");
                return result;
            }
            const char *rawName = archive_entry_pathname(entry);
            QByteArray name = rawName ? QByteArray(rawName) : QByteArray();
            if (archive_entry_filetype(entry) == AE_IFDIR)
                while (name.endsWith('/'))
                    name.chop(1);
            m_last = name;
            const QString refused = check(entry, name, names, links, ++entries, &bytes);
            if (!refused.isEmpty()) {
                result.error = QStringLiteral("\"%1\": %2").arg(shown(name), refused);
                return result;
            }
            QString error;
            if (handler && !handler(a, entry, name, &error)) {
                result.error = error;
                return result;
            }
            // What the handler left unread is read to its end: a damaged block must show.
            if (!readRest(a, name, &error)) {
                result.error = error;
                return result;
            }
            if (m_progress && !m_progress(archive_filter_bytes(a, -1), size)) {
                result.cancelled = true;
                return result;
            }
        }
        if (archive_read_close(a) != ARCHIVE_OK) {
            result.error = displayName(m_path) + QStringLiteral(": ") + archiveError(a);
            return result;
        }
        result.ok = true;
        return result;
    }

    // Counts data a handler reads against the size limit and reports progress; false on an
    // error (with its text) or a cancel.
    bool countData(const QByteArray &name, qint64 length, QString *error)
    {
        m_dataBytes += length;
        if (m_dataBytes > m_limits.maxBytes) {
            *error =
                QStringLiteral("\"%1\": the archive holds more than its limit").arg(shown(name));
            return false;
        }
        return true;
    }

    // Reads the entry's data to its end, counted against the limits; each block goes to write
    // when given (false from it stops the reading, with its own error).
    bool readRest(archive *a, const QByteArray &name, QString *error,
                  const std::function<bool(const void *, size_t, la_int64_t)> &write = {})
    {
        const void *buffer = nullptr;
        size_t length = 0;
        la_int64_t offset = 0;
        for (;;) {
            const int status = archive_read_data_block(a, &buffer, &length, &offset);
            if (status == ARCHIVE_EOF)
                return true;
            if (status != ARCHIVE_OK) {
                *error = QStringLiteral("\"%1\": %2").arg(shown(name), archiveError(a));
                return false;
            }
            if (!countData(name, qint64(length), error))
                return false;
            if (write && !write(buffer, length, offset))
                return false;
        }
    }

    const ArchiveLimits &limits() const { return m_limits; }

private:
    QString check(archive_entry *entry, const QByteArray &name, QSet<QByteArray> &names,
                  QSet<QByteArray> &links, qint64 count, qint64 *bytes) const
    {
        if (count > m_limits.maxEntries)
            return QStringLiteral("the archive holds more entries than its limit");
        const mode_t type = archive_entry_filetype(entry);
        if (archive_entry_hardlink(entry))
            return QStringLiteral("a hard link");
        if (type != AE_IFREG && type != AE_IFDIR && type != AE_IFLNK)
            return QStringLiteral("neither a file, a folder nor a link");
        QByteArray target;
        if (type == AE_IFLNK) {
            const char *raw = archive_entry_symlink(entry);
            target = raw ? QByteArray(raw) : QByteArray();
        }
        QString refused = PluginArchive::refusal(name, target);
        if (!refused.isEmpty())
            return refused;
        if (type == AE_IFLNK && m_limits.linkScopeDepth > 0) {
            const QList<QByteArray> parts = name.split('/');
            if (parts.size() <= m_limits.linkScopeDepth
                || !PluginArchive::refusal(parts.mid(m_limits.linkScopeDepth).join('/'), target)
                        .isEmpty())
                return QStringLiteral("a link that leaves its plug-in");
        }
        if (names.contains(name))
            return QStringLiteral("named twice");
        QByteArray parent = name;
        while (parent.contains('/')) {
            parent.truncate(parent.lastIndexOf('/'));
            if (links.contains(parent))
                return QStringLiteral("below a link");
        }
        names.insert(name);
        if (type == AE_IFLNK)
            links.insert(name);
        if (type == AE_IFREG) {
            const qint64 size = archive_entry_size(entry);
            if (size < 0 || size > m_limits.maxBytes - *bytes)
                return QStringLiteral("the archive holds more than its limit");
            *bytes += size;
        }
        return {};
    }

    QString m_path;
    ArchiveLimits m_limits;
    ArchiveProgress m_progress;
    ArchivePtr m_archive;
    QByteArray m_last;
    qint64 m_dataBytes = 0;
};

} // namespace

ArchiveResult PluginArchive::write(const QString &path, const QList<ArchiveDocument> &documents,
                                   const QList<ArchiveTree> &trees, const ArchiveProgress &progress)
{
    return Writer(path, progress).run(documents, trees);
}

ArchiveResult PluginArchive::verify(const QString &path, const ArchiveLimits &limits,
                                    QStringList *entries, const ArchiveProgress &progress)
{
    if (entries)
        entries->clear();
    return Reader(path, limits, progress)
        .run([entries](archive *, archive_entry *, const QByteArray &name, QString *) {
            if (entries)
                *entries << pathFromBytes(name);
            return true;
        });
}

ArchiveResult PluginArchive::extract(const QString &path, const QString &destination,
                                     const ArchiveLimits &limits, const ArchiveProgress &progress)
{
    const QByteArray base = pathBytes(destination);
    return extract(
        path, [&base](const QByteArray &name) { return base + '/' + name; }, limits, progress);
}

ArchiveResult PluginArchive::extract(const QString &path, const Placement &placeOf,
                                     const ArchiveLimits &limits, const ArchiveProgress &progress)
{
    ArchivePtr disk(archive_write_disk_new());
    // The names are checked above (no "..", nothing below a link of the archive); the folders a
    // person reached through a link of their own (a plug-in folder on another disk) are theirs.
    archive_write_disk_set_options(disk.get(), ARCHIVE_EXTRACT_TIME | ARCHIVE_EXTRACT_PERM
                                                   | ARCHIVE_EXTRACT_SECURE_NODOTDOT
                                                   | ARCHIVE_EXTRACT_NO_OVERWRITE);
    Reader reader(path, limits, progress);
    return reader.run([&](archive *a, archive_entry *entry, const QByteArray &name,
                          QString *error) {
        const QByteArray target = placeOf(name);
        if (target.isEmpty())
            return true;
        archive_entry_set_pathname(entry, target.constData());
        archive_entry_set_perm(entry, archive_entry_perm(entry) & 0777);
        auto failed = [&](archive *from) {
            *error = QStringLiteral("\"%1\": %2").arg(shown(name), archiveError(from));
            return false;
        };
        if (archive_write_header(disk.get(), entry) != ARCHIVE_OK)
            return failed(disk.get());
        const bool copied = reader.readRest(
            a, name, error, [&](const void *buffer, size_t length, la_int64_t offset) {
                return archive_write_data_block(disk.get(), buffer, length, offset) == ARCHIVE_OK
                       || failed(disk.get());
            });
        if (!copied)
            return false;
        if (archive_write_finish_entry(disk.get()) != ARCHIVE_OK)
            return failed(disk.get());
        return true;
    });
}

std::optional<QByteArray> PluginArchive::readDocument(const QString &path,
                                                      const QString &archiveName,
                                                      const ArchiveLimits &limits)
{
    const QByteArray wanted = pathBytes(archiveName);
    std::optional<QByteArray> found;
    Reader reader(path, limits, {});
    reader.run([&](archive *a, archive_entry *entry, const QByteArray &name, QString *error) {
        if (name != wanted)
            return true;
        if (archive_entry_filetype(entry) != AE_IFREG
            || archive_entry_size(entry) > limits.maxDocumentBytes)
            return false;
        QByteArray bytes(qsizetype(archive_entry_size(entry)), Qt::Uninitialized);
        const la_ssize_t got = archive_read_data(a, bytes.data(), size_t(bytes.size()));
        if (got != bytes.size()) {
            *error = archiveError(a);
            return false;
        }
        found = bytes;
        return false; // nothing more is wanted
    });
    return found;
}

QString PluginArchive::refusal(const QByteArray &name, const QByteArray &linkTarget)
{
    if (name.isEmpty())
        return QStringLiteral("an entry without a name");
    if (name.startsWith('/'))
        return QStringLiteral("an absolute name");
    if (name.size() >= PATH_MAX)
        return QStringLiteral("a name too long");
    const QList<QByteArray> parts = components(name);
    for (const QByteArray &part : parts) {
        if (part.isEmpty() || part == "." || part == "..")
            return QStringLiteral("a name with an empty, \".\" or \"..\" step");
        if (part.size() > NAME_MAX)
            return QStringLiteral("a name too long");
    }
    if (linkTarget.isNull())
        return {};
    // A link may climb towards the top of the tree and then only descend: every name it passes
    // is itself inside, so whatever links lie on its way, it ends inside.
    if (linkTarget.isEmpty() || linkTarget.startsWith('/'))
        return QStringLiteral("a link outside the archive's tree");
    qsizetype climbs = 0;
    bool descending = false;
    for (const QByteArray &part : components(linkTarget)) {
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..") {
            if (descending)
                return QStringLiteral("a link outside the archive's tree");
            ++climbs;
        } else {
            descending = true;
        }
    }
    if (climbs > parts.size() - 1)
        return QStringLiteral("a link outside the archive's tree");
    return {};
}

} // namespace korvane
