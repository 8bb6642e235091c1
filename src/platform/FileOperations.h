#pragma once

#include <QString>
#include <QStringList>

namespace korvane {

// Why a file operation failed, in the form the file-error answer shows it.
struct FileError {
    QString path;
    QString reason;
};

// Every file-system change the program makes passes through here. The real implementation works on
// the disk; tests subclass it to inject failures where the file system cannot produce them.
class FileOperations {
public:
    virtual ~FileOperations() = default;

    // Direct entries (no "." or ".."; hidden ones included), sorted by name. Unlistable: empty.
    virtual QStringList directoryContents(const QString &path) const;
    // Every file and folder below path as paths relative to it, parents before children, sorted.
    virtual QStringList subpaths(const QString &path) const;

    virtual bool exists(const QString &path) const;
    virtual bool isDirectory(const QString &path) const;
    virtual bool isReadable(const QString &path) const;
    virtual bool isWritable(const QString &path) const;
    virtual bool isDeletable(const QString &path) const;

    // One level, no attributes; fails when the parent is missing.
    virtual bool createDirectory(const QString &path, FileError *error = nullptr);

    // An item's AppleDouble sidecar ("._" and its name, beside it) goes wherever the item goes in
    // move, copy, remove and moveToTrash. A sidecar that cannot follow stays where it was and is
    // reported to the system log; it never fails the item's own operation, and an existing
    // sidecar at the target is never replaced.

    // Rename; across file systems copy to a temporary name beside the target, rename, then remove
    // the source, so the item is whole in exactly one place whatever fails. Never overwrites.
    virtual bool move(const QString &from, const QString &to, FileError *error = nullptr);
    // Recursive copy; never overwrites an existing target.
    virtual bool copy(const QString &from, const QString &to, FileError *error = nullptr);
    // Recursive removal, checked first: when any part could not be removed nothing is.
    virtual bool remove(const QString &path, FileError *error = nullptr);
    // Into the freedesktop home trash ($XDG_DATA_HOME/Trash, by default under
    // HOME/.local/share), created when missing; never anywhere else. trashedTo receives where the
    // item now lies.
    virtual bool moveToTrash(const QString &path, FileError *error = nullptr,
                             QString *trashedTo = nullptr);
    // Replaces path's contents whole or not at all (temporary file beside it, then rename). Every
    // data file the program writes goes through here.
    virtual bool writeFileAtomically(const QString &path, const QByteArray &bytes,
                                     FileError *error = nullptr);

    // The instance the program uses; tests may install their own and restore it.
    static FileOperations &current();
    static void setCurrent(FileOperations *operations); // nullptr restores the real one

protected:
    // One plain file; the recursive copy and the cross-device move call it per file.
    virtual bool copyFile(const QString &from, const QString &to, FileError *error);

private:
    bool copyTree(const QString &from, const QString &to, FileError *error);
    // move and copy without the sidecar.
    bool relocate(const QString &from, const QString &to, FileError *error);
    bool duplicate(const QString &from, const QString &to, FileError *error);
    bool moveAcrossFileSystems(const QString &from, const QString &to, FileError *error);
    // One item into the trash's files folder, under preferredName when it is free.
    bool trashItem(const QString &path, const QString &preferredName, FileError *error,
                   QString *trashedTo);
};

} // namespace korvane
