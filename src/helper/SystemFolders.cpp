#include "helper/SystemFolders.h"

#include "core/FormatTable.h"
#include "core/Locations.h"
#include "os/LibraryLock.h"
#include "os/PathBytes.h"

#include <QSet>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>

namespace korvane::helper {

namespace {

const QLatin1Char kSlash('/');

// Strictly below folder, by whole steps.
bool liesInside(const QString &path, const QString &folder)
{
    const qsizetype length = folder == QLatin1String("/") ? 0 : folder.size();
    return path.size() > length + 1 && path.startsWith(folder) && path.at(length) == kSlash;
}

bool isOrLiesInside(const QString &path, const QString &folder)
{
    return path == folder || liesInside(path, folder);
}

QString parentOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(kSlash);
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

// Absolute, whole steps only, and the name of real bytes: a path that means what it says.
bool isWellFormed(const QString &path)
{
    if (!path.startsWith(kSlash) || path.contains(QChar(0)))
        return false;
    const QByteArray bytes = pathBytes(path);
    if (bytes.size() > MaxPathBytes || pathFromBytes(bytes) != path)
        return false;
    if (path == QLatin1String("/"))
        return true;
    for (const QStringView step : QStringView(path).mid(1).split(kSlash))
        if (step.isEmpty() || step == u"." || step == u"..")
            return false;
    return true;
}

bool lstatPath(const QString &path, struct stat *info)
{
    return ::lstat(pathBytes(path).constData(), info) == 0;
}

std::optional<QString> realPath(const QString &path)
{
    char resolved[PATH_MAX];
    if (!::realpath(pathBytes(path).constData(), resolved))
        return std::nullopt;
    return pathFromBytes(resolved);
}

FileError failure(const QString &path, int code, const QString &reason = {})
{
    return {path, reason.isEmpty() ? QString::fromLocal8Bit(std::strerror(code)) : reason, code};
}

const QString kLinkOnTheWay = QStringLiteral("a folder on the way is a link; nothing moves "
                                             "through it");
const QString kOthersMayChange = QStringLiteral("the folder can be changed by others than root");

// Whether anyone but root may add, rename or remove entries in the folder. A sticky folder (/tmp)
// lets others add their own entries but never touch root's, which is enough above the plug-in
// folders; in them and below, others could place the very names a move is about to use.
bool othersMayChange(const struct stat &info, bool stickyAllowed)
{
    if (info.st_uid != 0)
        return true;
    if ((info.st_mode & S_IWGRP) && info.st_gid != 0)
        return true;
    return (info.st_mode & S_IWOTH) && !(stickyAllowed && (info.st_mode & S_ISVTX));
}

// Every folder from "/" down to a folder without links in its path.
std::optional<FileError> checkRealChain(const QString &canonical, bool strictLast)
{
    QString at;
    const QStringList steps = canonical.split(kSlash, Qt::SkipEmptyParts);
    for (qsizetype i = -1; i < steps.size(); ++i) {
        at = i < 0 ? QStringLiteral("/") : (i == 0 ? QString() : at) + kSlash + steps.at(i);
        struct stat info;
        if (!lstatPath(at, &info))
            return failure(at, errno);
        if (!S_ISDIR(info.st_mode))
            return failure(at, ENOTDIR);
        const bool last = i == steps.size() - 1;
        if (othersMayChange(info, !(last && strictLast)))
            return failure(at, EPERM, kOthersMayChange);
    }
    return std::nullopt;
}

// A format folder as written, which may itself be a link or lie behind links: every folder
// consulted on the way to it, and the folder it comes to, may be changed by root alone. A folder
// that does not exist yet is judged by its parent, which must.
std::optional<FileError> checkFormatFolder(const QString &folder)
{
    struct stat info;
    const bool exists = lstatPath(folder, &info);
    const QString judged = exists ? folder : parentOf(folder);
    QString prefix;
    const QStringList steps = judged.split(kSlash, Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < steps.size(); ++i) {
        prefix += kSlash + steps.at(i);
        const std::optional<QString> real = realPath(prefix);
        if (!real)
            return failure(prefix, errno);
        if (auto refused = checkRealChain(*real, exists && i == steps.size() - 1))
            return refused;
    }
    return std::nullopt;
}

// One step below a format folder: a real folder only root may change, or nothing yet.
std::optional<FileError> checkStep(const QString &at, bool *missing)
{
    struct stat info;
    if (!lstatPath(at, &info)) {
        if (errno != ENOENT)
            return failure(at, errno);
        *missing = true;
        return std::nullopt;
    }
    *missing = false;
    if (S_ISLNK(info.st_mode))
        return failure(at, ELOOP, kLinkOnTheWay);
    if (!S_ISDIR(info.st_mode))
        return failure(at, ENOTDIR);
    if (othersMayChange(info, false))
        return failure(at, EPERM, kOthersMayChange);
    return std::nullopt;
}

// The steps between a format folder and an item, the item's own name left out.
QStringList stepsBelow(const QString &folder, const QString &path)
{
    QStringList steps = path.mid(folder.size() + 1).split(kSlash);
    steps.removeLast();
    return steps;
}

// Every folder inside an item, when the item is a folder: its copy reads them all.
std::optional<FileError> checkTree(FileOperations &files, const QString &item)
{
    struct stat info;
    if (!lstatPath(item, &info))
        return failure(item, errno);
    if (!S_ISDIR(info.st_mode))
        return std::nullopt;
    if (othersMayChange(info, false))
        return failure(item, EPERM, kOthersMayChange);
    for (const QString &relative : files.subpaths(item)) {
        const QString path = item + kSlash + relative;
        if (!lstatPath(path, &info))
            return failure(path, errno);
        if (S_ISDIR(info.st_mode) && othersMayChange(info, false))
            return failure(path, EPERM, kOthersMayChange);
    }
    return std::nullopt;
}

std::optional<quint64> deviceOf(const QString &folder)
{
    struct stat info;
    if (::stat(pathBytes(folder).constData(), &info) != 0)
        return std::nullopt;
    return quint64(info.st_dev);
}

} // namespace

OwnedPrefixes OwnedPrefixes::distribution()
{
    return {{QStringLiteral("/usr")}, {QStringLiteral("/usr/local")}};
}

bool OwnedPrefixes::owns(const QString &path) const
{
    const auto within = [&path](const QString &prefix) { return isOrLiesInside(path, prefix); };
    return std::any_of(owned.cbegin(), owned.cend(), within)
           && std::none_of(exceptions.cbegin(), exceptions.cend(), within);
}

SystemFolders::SystemFolders(const FormatTable &formats, const Roots &roots, OwnedPrefixes owned)
    : m_formats(formats), m_roots(roots), m_owned(std::move(owned))
{
    const Locations locations(m_roots);
    // Every system pair of the row, not only the first: a Linux format may list several. Those
    // under the distribution's prefixes are refused before their place is looked up.
    for (const Format &format : formats)
        for (int loc = 0; loc < format.locationCount(); ++loc)
            if (format.isSystem(loc))
                m_folders.append({format.type, loc, locations.folderPath(format, loc)});
}

std::optional<SystemFolders::Place> SystemFolders::placeOf(const QString &path) const
{
    std::optional<Place> found;
    for (const Place &place : m_folders)
        if (liesInside(path, place.folder)
            && (!found || place.folder.size() > found->folder.size()))
            found = place;
    return found;
}

std::optional<Refusal> SystemFolders::checkPath(const QString &path) const
{
    const auto refuse = [&path](const char *reason) {
        return Refusal{path, QString::fromLatin1(reason)};
    };
    if (!isWellFormed(path))
        return refuse("not an absolute path of whole steps (no \".\", \"..\" or empty step, no "
                      "NUL byte)");
    if (isOrLiesInside(path, m_roots.home))
        return refuse("the path lies in the user's own folders");
    // The distribution's folders, whether a format's folder is written below the system root or
    // (as a Linux format's may be) at the real one.
    const QString &root = m_roots.systemRoot;
    const QString underRoot =
        root == QLatin1String("/") || !liesInside(path, root) ? path : path.mid(root.size());
    if (m_owned.owns(underRoot) || m_owned.owns(path))
        return refuse("the path lies in folders the distribution's packages own");
    if (!placeOf(path))
        return refuse("the path lies outside the system plug-in folders");
    return std::nullopt;
}

std::optional<Refusal> SystemFolders::check(const QList<Move> &moves) const
{
    QHash<QString, std::optional<FileError>> folderChecks;
    const auto checkSide = [&](const QString &path, const Place &place) -> std::optional<Refusal> {
        auto known = folderChecks.constFind(place.folder);
        if (known == folderChecks.cend()) {
            struct stat info;
            const bool exists = lstatPath(place.folder, &info);
            known = folderChecks.insert(place.folder, checkFormatFolder(place.folder));
            // A folder judged by its parent is judged again once it is made.
            if (exists && !*known)
                m_trusted.insert(place.folder);
        }
        if (const std::optional<FileError> &refused = *known)
            return Refusal{refused->path, refused->reason};
        QString at = place.folder;
        for (const QString &step : stepsBelow(place.folder, path)) {
            at += kSlash + step;
            bool missing = false;
            if (const std::optional<FileError> refused = checkStep(at, &missing))
                return Refusal{refused->path, refused->reason};
            if (missing)
                break; // the move fails then, or makes the rest as real folders
        }
        return std::nullopt;
    };
    for (const Move &move : moves) {
        for (const QString *path : {&move.from, &move.to})
            if (std::optional<Refusal> refused = checkPath(*path))
                return refused;
        const Place from = *placeOf(move.from);
        const Place to = *placeOf(move.to);
        // Switching on or off and nothing else: the same place in the format's other folder.
        if (from.type != to.type)
            return Refusal{move.to, QStringLiteral("the target lies in another format's folders "
                                                   "than its source")};
        if (from.location / 2 != to.location / 2 || from.folder == to.folder
            || move.from.mid(from.folder.size()) != move.to.mid(to.folder.size()))
            return Refusal{move.to, QStringLiteral("the target is not the source's place in the "
                                                   "format's other system folder")};
        for (const auto &[path, place] : {std::pair{move.from, from}, std::pair{move.to, to}})
            if (std::optional<Refusal> refused = checkSide(path, place))
                return refused;
    }
    return std::nullopt;
}

QStringList SystemFolders::lockFolders(const QList<Move> &moves) const
{
    QSet<int> types;
    for (const Move &move : moves)
        if (const std::optional<Place> place = placeOf(move.from))
            types.insert(place->type);
    // Only the system folders: the user's movers lock these too, and the user's own folders are
    // no business of root's.
    const Locations locations(m_roots);
    QStringList folders;
    for (const Format &format : m_formats) {
        if (!types.contains(format.type))
            continue;
        for (int loc = 0; loc < format.locationCount(); ++loc) {
            if (!format.isSystem(loc))
                continue;
            folders << locations.folderPath(format, loc);
            if (loc < LocationCount && !format.contentRoots[size_t(loc)].isEmpty())
                folders << locations.expand(format.contentRoots[size_t(loc)]);
        }
    }
    folders.removeDuplicates();
    return folders;
}

std::optional<FileError> SystemFolders::prepare(FileOperations &files, const Move &move) const
{
    const std::optional<Place> from = placeOf(move.from);
    const std::optional<Place> to = placeOf(move.to);
    if (!from || !to)
        return failure(move.from, EINVAL);
    // The source's side as it is now: a step gone means the plug-in is not there any more.
    QString at = from->folder;
    for (const QString &step : stepsBelow(from->folder, move.from)) {
        at += kSlash + step;
        bool missing = false;
        if (std::optional<FileError> refused = checkStep(at, &missing))
            return refused;
        if (missing)
            return failure(at, ENOENT);
    }
    // The target's: its format folder and each step made where missing, then looked at again.
    const auto makeFolder = [&files](const QString &path) -> std::optional<FileError> {
        struct stat info;
        if (lstatPath(path, &info))
            return std::nullopt;
        FileError error;
        if (!files.createDirectory(path, &error) && error.code != EEXIST)
            return error;
        return std::nullopt;
    };
    if (std::optional<FileError> error = makeFolder(to->folder))
        return error;
    if (!m_trusted.contains(to->folder)) {
        if (std::optional<FileError> refused = checkFormatFolder(to->folder))
            return refused;
        m_trusted.insert(to->folder);
    }
    at = to->folder;
    for (const QString &step : stepsBelow(to->folder, move.to)) {
        at += kSlash + step;
        if (std::optional<FileError> error = makeFolder(at))
            return error;
        bool missing = false;
        if (std::optional<FileError> refused = checkStep(at, &missing))
            return refused;
        if (missing)
            return failure(at, ENOENT);
    }
    const std::optional<quint64> source = deviceOf(parentOf(move.from));
    const std::optional<quint64> target = deviceOf(parentOf(move.to));
    if (source && target && *source != *target)
        return checkTree(files, move.from);
    return std::nullopt;
}

} // namespace korvane::helper
