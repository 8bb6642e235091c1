#pragma once

#include "platform/FileOperations.h"
#include "platform/Roots.h"

#include <QHash>
#include <QSet>
#include <optional>

namespace korvane {

// The file operations on the local disk. Moves never leave an item in neither place; the calls
// that differ between operating systems live in PlatformFiles.
class LocalFileOperations : public FileOperations {
public:
    // The trash is the roots' freedesktop home trash; default roots have none.
    explicit LocalFileOperations(Roots roots = {});

    QStringList directoryContents(const QString &path) const override;
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
    void beginBatch() override { m_sidecars.emplace(); }
    void endBatch() override;

protected:
    // One plain file; the recursive copy and the cross-device move call it per file.
    virtual bool copyFile(const QString &from, const QString &to, FileError *error);
    // Counts bytes written by copyFile towards the item being copied.
    void noteCopied(qint64 bytes);

private:
    bool copyTree(const QString &from, const QString &to, FileError *error);
    // move and copy without the sidecar.
    bool relocate(const QString &from, const QString &to, FileError *error);
    bool duplicate(const QString &from, const QString &to, FileError *error);
    // Whether path has a sidecar; in a batch from the folder's listing, confirmed when it says so.
    bool sidecarBeside(const QString &path);
    // Keeps a batch's listings true after a sidecar followed its item from one folder to another.
    void noteSidecar(const QString &from, const QString &to, bool moved);
    bool moveAcrossFileSystems(const QString &from, const QString &to, FileError *error);
    // A hidden folder of a move across file systems, made when missing; failures name item.
    bool makeStagingFolder(const QString &folder, const QString &item, FileError *error);
    // Removes a staging folder with nothing left in it, or, in a batch, when the batch ends.
    void removeIfEmpty(const QString &folder);
    // One item into the trash's files folder, under preferredName when it is free.
    bool trashItem(const QString &path, const QString &preferredName, FileError *error,
                   QString *trashedTo);

    // Starts the byte count of one item's copy, when anyone listens.
    void beginCopy(const QString &from);

    Roots m_roots;
    // During a batch: per folder listed, the names of the sidecars in it.
    std::optional<QHash<QString, QSet<QString>>> m_sidecars;
    // During a batch: the staging folders it made or found.
    QSet<QString> m_batchStaging;
    CopyProgress m_copyProgress;
    qint64 m_copied = 0;
    qint64 m_copyTotal = 0;
};

} // namespace korvane
