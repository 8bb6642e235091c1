#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace korvane {

// A backup archive: a tar (POSIX pax) compressed with xz, whose CRC-64 checks let a reader tell a
// damaged archive from a good one before anything of it is put in place. Names are bytes as the
// file system holds them (PathBytes).
//
// A reader takes nothing on trust: an entry is refused when its name is absolute, holds "." or
// "..", or lies below a link; when it is anything other than a file, a folder or a link; when a
// link points outside the extracted tree; when a name comes twice; or when the entries pass the
// limits on count and size. Every refusal names the entry.

// How far the work has come, in bytes of the whole; false stops it.
using ArchiveProgress = std::function<bool(qint64 done, qint64 total)>;

struct ArchiveLimits {
    qint64 maxBytes = qint64(256) << 30; // the entries' contents together
    qint64 maxEntries = 2000000;
    qint64 maxDocumentBytes = 16 << 20; // readDocument's answer
    // When above 0: a link must stay inside the tree named by the first this many steps of its
    // own name ("plugins/2/Echo.vst" for 3), so that each such tree can move on its own.
    int linkScopeDepth = 0;
};

// One tree on disk (a file, a folder with everything below it, or a link) and the name it takes
// in the archive.
struct ArchiveTree {
    QString sourcePath;
    QString archiveName;
};

// A small file written from memory (a manifest, a set document).
struct ArchiveDocument {
    QString archiveName;
    QByteArray bytes;
};

struct ArchiveResult {
    bool ok = false;
    bool cancelled = false;
    QString error; // why it failed, naming the file or the entry
    // Items below the trees left out: neither file, folder nor link (a socket, a FIFO), or a link
    // that leaves its tree (a reader would refuse it, and with it the archive).
    QStringList skipped;
};

class PluginArchive {
public:
    // Writes the documents, then the trees, into path. A tree that is itself a link is written as
    // what it points to: a backup holds the plug-in, not a pointer to it. The archive appears under
    // its name only when whole; a failure or a cancel leaves nothing there (nor a temporary file
    // beside it). An existing file at path is replaced only once the new archive is complete.
    static ArchiveResult write(const QString &path, const QList<ArchiveDocument> &documents,
                               const QList<ArchiveTree> &trees,
                               const ArchiveProgress &progress = {});

    // Reads every entry to its end under the rules above; ok when the archive is whole and clean.
    // entries (optional) receives the entries' names in archive order.
    static ArchiveResult verify(const QString &path, const ArchiveLimits &limits = {},
                                QStringList *entries = nullptr,
                                const ArchiveProgress &progress = {});

    // Extracts every entry into destination, an existing folder, under the same rules. Verify
    // first: a refusal found midway leaves what was extracted so far for the caller to remove.
    static ArchiveResult extract(const QString &path, const QString &destination,
                                 const ArchiveLimits &limits = {},
                                 const ArchiveProgress &progress = {});

    // The same, each entry going where placeOf says (an absolute path as bytes), or nowhere when
    // it answers an empty one. Missing folders on the way are made.
    using Placement = std::function<QByteArray(const QByteArray &name)>;
    static ArchiveResult extract(const QString &path, const Placement &placeOf,
                                 const ArchiveLimits &limits = {},
                                 const ArchiveProgress &progress = {});

    // The contents of one plain file entry of at most limits.maxDocumentBytes; nullopt when it is
    // missing, larger, or the archive cannot be read.
    static std::optional<QByteArray> readDocument(const QString &path, const QString &archiveName,
                                                  const ArchiveLimits &limits = {});

    // The check a reader applies to an entry's name and, for a link, its target; empty when the
    // entry may be extracted, else why not.
    static QString refusal(const QByteArray &name, const QByteArray &linkTarget = {});
};

} // namespace korvane
