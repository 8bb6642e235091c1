#include "os/ReadOnlyFileOperations.h"

namespace korvane {

namespace {
bool refuse(FileError *error, const QString &path)
{
    if (error)
        *error = FileError{path, QStringLiteral(QT_TRANSLATE_NOOP("korvane", "read-only"))};
    return false;
}
} // namespace

QStringList ReadOnlyFileOperations::directoryContents(const QString &path) const
{
    return m_inner.directoryContents(path);
}

QStringList ReadOnlyFileOperations::listForScan(const QString &path, ScanCache *cache) const
{
    return m_inner.listForScan(path, cache);
}

QStringList ReadOnlyFileOperations::subpaths(const QString &path) const
{
    return m_inner.subpaths(path);
}

bool ReadOnlyFileOperations::exists(const QString &path) const
{
    return m_inner.exists(path);
}

bool ReadOnlyFileOperations::isDirectory(const QString &path) const
{
    return m_inner.isDirectory(path);
}

bool ReadOnlyFileOperations::isReadable(const QString &path) const
{
    return m_inner.isReadable(path);
}

bool ReadOnlyFileOperations::isWritable(const QString &path) const
{
    return m_inner.isWritable(path);
}

bool ReadOnlyFileOperations::isDeletable(const QString &path) const
{
    return m_inner.isDeletable(path);
}

std::optional<FileIdentity> ReadOnlyFileOperations::identity(const QString &path,
                                                             bool followLinks) const
{
    return m_inner.identity(path, followLinks);
}

bool ReadOnlyFileOperations::holdsAllOf(const QString &whole, const QString &part) const
{
    return m_inner.holdsAllOf(whole, part);
}

bool ReadOnlyFileOperations::createDirectory(const QString &path, FileError *error)
{
    return refuse(error, path);
}

int ReadOnlyFileOperations::lockFolder(int folder)
{
    return m_inner.lockFolder(folder); // a lock changes nothing on disk
}

bool ReadOnlyFileOperations::move(const QString &from, const QString &, FileError *error)
{
    return refuse(error, from);
}

bool ReadOnlyFileOperations::copy(const QString &, const QString &to, FileError *error)
{
    return refuse(error, to);
}

bool ReadOnlyFileOperations::remove(const QString &path, FileError *error)
{
    return refuse(error, path);
}

bool ReadOnlyFileOperations::moveToTrash(const QString &path, FileError *error, QString *)
{
    return refuse(error, path);
}

bool ReadOnlyFileOperations::writeFileAtomically(const QString &path, const QByteArray &,
                                                 FileError *error)
{
    return refuse(error, path);
}

} // namespace korvane
