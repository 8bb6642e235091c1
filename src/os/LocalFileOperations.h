#pragma once

#include "os/CrossDeviceMove.h"
#include "os/FileOperations.h"
#include "os/Roots.h"
#include "os/Sidecars.h"

namespace korvane {

// The file operations on the local disk. Moves never leave an item in neither place: a rename
// where it can, a CrossDeviceMove where it cannot; a sidecar follows its item (Sidecars); the
// trash is the home trash (HomeTrash). The calls that differ between operating systems live in
// PlatformFiles, the ones all share in PosixFiles.
class LocalFileOperations : public FileOperations {
public:
    // The trash is the roots' freedesktop home trash; default roots have none.
    explicit LocalFileOperations(Roots roots = {});
    // The cross-device move works on this very object.
    LocalFileOperations(const LocalFileOperations &) = delete;
    LocalFileOperations &operator=(const LocalFileOperations &) = delete;

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
    bool createDirectory(const QString &path, FileError *error = nullptr) override;
    int lockFolder(int folder) override;
    bool move(const QString &from, const QString &to, FileError *error = nullptr) override;
    bool copy(const QString &from, const QString &to, FileError *error = nullptr) override;
    bool remove(const QString &path, FileError *error = nullptr) override;
    bool moveToTrash(const QString &path, FileError *error = nullptr,
                     QString *trashedTo = nullptr) override;
    bool writeFileAtomically(const QString &path, const QByteArray &bytes,
                             FileError *error = nullptr) override;
    void setCopyProgress(CopyProgress progress) override { m_copyProgress = std::move(progress); }
    void beginBatch() override;
    void endBatch() override;

protected:
    // One plain file; the recursive copy and the cross-device move call it per file.
    virtual bool copyFile(const QString &from, const QString &to, FileError *error);
    // Counts bytes written by copyFile towards the item being copied.
    void noteCopied(qint64 bytes);

private:
    friend class CrossDeviceMove; // copies with copyTree, counting with beginCopy

    bool copyTree(const QString &from, const QString &to, FileError *error);
    // move and copy without the sidecar.
    bool relocate(const QString &from, const QString &to, FileError *error);
    bool duplicate(const QString &from, const QString &to, FileError *error);
    // One item into the trash's files folder, under preferredName when it is free.
    bool trashItem(const QString &path, const QString &preferredName, FileError *error,
                   QString *trashedTo);

    // Starts the byte count of one item's copy, when anyone listens.
    void beginCopy(const QString &from);

    Roots m_roots;
    Sidecars m_sidecars;
    CrossDeviceMove m_crossDevice;
    CopyProgress m_copyProgress;
    qint64 m_copied = 0;
    qint64 m_copyTotal = 0;
};

} // namespace korvane
