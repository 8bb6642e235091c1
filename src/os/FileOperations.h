#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace korvane {

class ScanCache;

// Why a file operation failed, in the form the file-error answer shows it.
struct FileError {
    QString path;
    QString reason;
    int code = 0; // errno where the system gave one, so a caller can tell a target in the way
};

// What tells one file or folder from every other. Two paths with the same device and inode are one
// item, however they are written: through a link, a bind mount, a hard link, or the same path.
struct FileIdentity {
    quint64 device = 0;
    quint64 inode = 0;
    bool isFolder = false;
    bool isLink = false; // only where links were not followed
    bool isSameItem(const FileIdentity &other) const
    {
        return device == other.device && inode == other.inode;
    }
};

// How far the copy of one item has come: bytes written so far of the item's total.
using CopyProgress = std::function<void(qint64 copied, qint64 total)>;

// Every look at and every change of the disk the program makes passes through here, so a run
// can be made read-only, and tests can inject failures the file system cannot produce.
// LocalFileOperations is the real one.
class FileOperations {
public:
    virtual ~FileOperations() = default;

    // Direct entries (no "." or ".."; hidden ones included), sorted by name. Unlistable: empty.
    virtual QStringList directoryContents(const QString &path) const = 0;
    // directoryContents for a scan: the local disk tells cache each entry's kind on the way.
    virtual QStringList listForScan(const QString &path, ScanCache *cache) const
    {
        (void)cache;
        return directoryContents(path);
    }
    // Every file and folder below path as paths relative to it, parents before children, sorted.
    virtual QStringList subpaths(const QString &path) const = 0;

    virtual bool exists(const QString &path) const = 0;
    virtual bool isDirectory(const QString &path) const = 0;
    virtual bool isReadable(const QString &path) const = 0;
    virtual bool isWritable(const QString &path) const = 0;
    virtual bool isDeletable(const QString &path) const = 0;
    // The item at path, or the item a link there points to with followLinks; none when nothing
    // is there.
    virtual std::optional<FileIdentity> identity(const QString &path, bool followLinks) const = 0;
    // Every file, folder and link below part (part itself included) is in whole at the same
    // relative place with the same contents or link target; metadata is not compared.
    virtual bool holdsAllOf(const QString &whole, const QString &part) const = 0;
    // Whether every change is refused, so that nothing need be tried.
    virtual bool isReadOnly() const { return false; }

    // One level, no attributes; fails when the parent is missing.
    virtual bool createDirectory(const QString &path, FileError *error = nullptr) = 0;

    // The kernel's exclusive lock on an open folder, without waiting; it lasts while that
    // descriptor stays open. 0; EWOULDBLOCK while another holder has it; else the errno of a file
    // system that keeps no such locks (ENOLCK, EOPNOTSUPP, EBADF). Changes nothing on disk.
    virtual int lockFolder(int folder) = 0;

    // An item's AppleDouble sidecar ("._" and its name, beside it) goes wherever the item goes in
    // move, copy, remove and moveToTrash, and an existing sidecar at the target is never replaced.
    // In copy, remove and moveToTrash a sidecar that cannot follow stays where it was and is
    // reported to the system log; it never fails the item's own operation.

    // Rename; across file systems copy into a hidden staging folder beside the target, rename,
    // then remove the source, so the item is whole in exactly one place whatever fails. Never
    // overwrites; a target that is the source itself (same device and inode) is refused. With a
    // sidecar, nothing moves while the target's sidecar path is taken (EEXIST on that path), and
    // an item whose sidecar fails to follow goes back where a rename can take it.
    virtual bool move(const QString &from, const QString &to, FileError *error = nullptr) = 0;
    // Recursive copy; never overwrites an existing target.
    virtual bool copy(const QString &from, const QString &to, FileError *error = nullptr) = 0;
    // Recursive removal, checked first: when any part could not be removed nothing is.
    virtual bool remove(const QString &path, FileError *error = nullptr) = 0;
    // Into the freedesktop home trash, created when missing; never anywhere else. trashedTo
    // receives where the item now lies.
    virtual bool moveToTrash(const QString &path, FileError *error = nullptr,
                             QString *trashedTo = nullptr) = 0;
    // Replaces path's contents whole or not at all (temporary file beside it, then rename). Every
    // data file the program writes goes through here.
    virtual bool writeFileAtomically(const QString &path, const QByteArray &bytes,
                                     FileError *error = nullptr) = 0;

    // While set, copy and a move across file systems report each item's bytes as they are
    // written, so a long copy can show how far it has come; an empty function stops the reports.
    // By value: an implementation keeps the function, and moves it in.
    // NOLINTNEXTLINE(performance-unnecessary-value-param)
    virtual void setCopyProgress(CopyProgress progress) { (void)progress; }

    // Between the two, move and copy may learn which items have sidecars from one listing per
    // folder instead of one look per item. A sidecar someone else makes meanwhile may stay behind.
    virtual void beginBatch() {}
    virtual void endBatch() {}
};

// Makes folder and each missing folder above it through files; true when folder is a folder in
// the end (another process may have made it meanwhile). error is the first level that failed.
bool makePath(FileOperations &files, const QString &folder, FileError *error = nullptr);

// Hands a copy-progress function to the file operations for as long as it lives.
class CopyProgressScope {
public:
    CopyProgressScope(FileOperations &files, CopyProgress progress) : m_files(files)
    {
        m_files.setCopyProgress(std::move(progress));
    }
    ~CopyProgressScope() { m_files.setCopyProgress({}); }
    CopyProgressScope(const CopyProgressScope &) = delete;
    CopyProgressScope &operator=(const CopyProgressScope &) = delete;

private:
    FileOperations &m_files;
};

// Makes the moves and copies made while it lives one batch.
class BatchScope {
public:
    explicit BatchScope(FileOperations &files) : m_files(files) { m_files.beginBatch(); }
    ~BatchScope() { m_files.endBatch(); }
    BatchScope(const BatchScope &) = delete;
    BatchScope &operator=(const BatchScope &) = delete;

private:
    FileOperations &m_files;
};

} // namespace korvane
