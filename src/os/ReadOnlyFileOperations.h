#pragma once

#include "os/FileOperations.h"

namespace korvane {

// File operations that look but never change anything: every change fails with the reason
// "read-only" and leaves the disk as it was. Commands that only report install it, so that
// asking what is installed cannot create folders or rewrite data files on the way.
class ReadOnlyFileOperations : public FileOperations {
public:
    // Reads go to inner, which must outlive this object.
    explicit ReadOnlyFileOperations(FileOperations &inner) : m_inner(inner) {}

    QStringList directoryContents(const QString &path) const override;
    QStringList listForScan(const QString &path, ScanCache *cache) const override;
    QStringList subpaths(const QString &path) const override;
    bool exists(const QString &path) const override;
    bool isDirectory(const QString &path) const override;
    bool isReadable(const QString &path) const override;
    bool isWritable(const QString &path) const override;
    bool isDeletable(const QString &path) const override;
    std::optional<FileIdentity> identity(const QString &path, bool followLinks) const override;
    bool holdsAllOf(const QString &whole, const QString &part) const override;
    bool isReadOnly() const override { return true; }

    bool createDirectory(const QString &path, FileError *error = nullptr) override;
    int lockFolder(int folder) override;
    bool move(const QString &from, const QString &to, FileError *error = nullptr) override;
    bool copy(const QString &from, const QString &to, FileError *error = nullptr) override;
    bool remove(const QString &path, FileError *error = nullptr) override;
    bool moveToTrash(const QString &path, FileError *error = nullptr,
                     QString *trashedTo = nullptr) override;
    bool writeFileAtomically(const QString &path, const QByteArray &bytes,
                             FileError *error = nullptr) override;

private:
    FileOperations &m_inner;
};

} // namespace korvane
