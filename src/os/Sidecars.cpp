#include "os/Sidecars.h"

#include "os/PathBytes.h"
#include "os/PosixFiles.h"
#include "os/SystemLog.h"

#include <dirent.h>

namespace korvane {

using namespace posix;

namespace {

// Only the AppleDouble names, picked from the raw bytes: a batch lists big plug-in folders in
// which such names are rare, and decoding every other name cost as much as the moves.
QSet<QString> sidecarNamesIn(const QString &folder)
{
    QSet<QString> names;
    DIR *dir = ::opendir(pathBytes(folder).constData());
    if (!dir)
        return names;
    while (const dirent *entry = ::readdir(dir))
        if (entry->d_name[0] == '.' && entry->d_name[1] == '_')
            names.insert(pathFromBytes(entry->d_name));
    ::closedir(dir);
    return names;
}

} // namespace

QString Sidecars::nameOf(const QString &path)
{
    return QStringLiteral("._") + posix::nameOf(path);
}

QString Sidecars::pathOf(const QString &path)
{
    return childOf(parentOf(path), nameOf(path));
}

bool Sidecars::exists(const QString &path)
{
    struct stat info;
    return lstatPath(pathOf(path), &info) && !S_ISDIR(info.st_mode);
}

void Sidecars::reportStays(const QString &path, const QString &ownerTarget,
                           const FileError &failure)
{
    systemLog(QStringLiteral("Sidecar %1 did not follow to %2 and stays: %3")
                  .arg(pathOf(path), ownerTarget, failure.reason));
}

bool Sidecars::beside(const QString &path)
{
    if (!m_listed)
        return exists(path);
    const QString folder = parentOf(path);
    auto listed = m_listed->find(folder);
    if (listed == m_listed->end())
        listed = m_listed->insert(folder, sidecarNamesIn(folder));
    return !listed->isEmpty() && listed->contains(nameOf(path)) && exists(path);
}

void Sidecars::followed(const QString &from, const QString &to, bool moved)
{
    if (!m_listed)
        return;
    if (const auto source = m_listed->find(parentOf(from)); moved && source != m_listed->end())
        source->remove(nameOf(from));
    if (const auto target = m_listed->find(parentOf(to)); target != m_listed->end())
        target->insert(nameOf(to));
}

} // namespace korvane
