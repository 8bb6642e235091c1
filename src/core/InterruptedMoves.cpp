#include "core/InterruptedMoves.h"

#include "core/Texts.h"
#include "os/StagingFolders.h"

#include <QDir>

#include <algorithm>

#include <unistd.h>

namespace korvane {

namespace {

const QString kPartialSuffix = QStringLiteral(".korvane-partial");
const QString kRemovingSuffix = QStringLiteral(".korvane-removing");

QString folderOf(const QString &path)
{
    const QString clean = QDir::cleanPath(path);
    const qsizetype slash = clean.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QString();
    return slash == 0 ? QStringLiteral("/") : clean.left(slash);
}

QString nameOf(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString join(const QString &folder, const QString &name)
{
    if (folder.isEmpty())
        return name;
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

// The hidden name beside path.
QString beside(const QString &path, const QString &suffix)
{
    const QString clean = QDir::cleanPath(path);
    return join(folderOf(clean), QLatin1Char('.') + nameOf(clean) + suffix);
}

} // namespace

QString InterruptedMoves::partialPath(const QString &target)
{
    return beside(target, kPartialSuffix);
}

std::optional<InterruptedMoves::Leftover> InterruptedMoves::parse(const QString &name)
{
    if (!name.startsWith(QLatin1Char('.')) || name.contains(QLatin1Char('/')))
        return std::nullopt;
    if (name.endsWith(kPartialSuffix)) {
        const QString item = name.mid(1, name.size() - 1 - kPartialSuffix.size());
        if (!item.isEmpty())
            return Leftover{item, false};
        return std::nullopt;
    }
    const qsizetype at = name.lastIndexOf(kRemovingSuffix);
    if (at <= 1)
        return std::nullopt;
    const QStringView rest = QStringView(name).mid(at + kRemovingSuffix.size());
    if (!rest.isEmpty()) {
        // ".2", ".3", ...: a fresh name where an older leftover still lay.
        if (rest.size() < 2 || rest.front() != QLatin1Char('.'))
            return std::nullopt;
        for (const QChar c : rest.mid(1))
            if (!c.isDigit())
                return std::nullopt;
    }
    return Leftover{name.mid(1, at - 1), true};
}

bool InterruptedMoves::isLeftoverName(const QString &path)
{
    // The common case, a name that does not start with a dot, costs one comparison.
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (path.size() <= slash + 1 || path.at(slash + 1) != QLatin1Char('.'))
        return false;
    const QString name = path.mid(slash + 1);
    return parse(name).has_value() || StagingFolders::parse(name).has_value();
}

QString InterruptedMoves::sidecarOwner(const QString &path)
{
    // Asked of every entry a scan lists: nothing is made unless it is a sidecar.
    const qsizetype start = path.lastIndexOf(QLatin1Char('/')) + 1;
    if (path.size() - start < 3 || !QStringView(path).mid(start).startsWith(u"._"))
        return QString();
    return path.left(start) + path.mid(start + 2);
}

InterruptedMoves::InterruptedMoves(FileOperations &files, QStringList folders)
    : m_files(files), m_folders(std::move(folders))
{
}

void InterruptedMoves::add(int folder, const QString &relative)
{
    if (folder < 0 || folder >= m_folders.size())
        return;
    if (const std::optional<StagingFolders::Owner> staging =
            StagingFolders::parse(nameOf(relative))) {
        const QString path = join(m_folders.at(folder), relative);
        if (StagingFolders::isBusy(*staging)) {
            m_busy << path;
            return;
        }
        m_staging << path;
        // Each item keeps its own name inside.
        for (const QString &entry : m_files.directoryContents(path))
            m_found.append(Found{folder, join(folderOf(relative), entry), join(path, entry),
                                 staging->removing ? Kind::Removing : Kind::Partial});
        return;
    }
    const std::optional<Leftover> leftover = parse(nameOf(relative));
    if (!leftover)
        return;
    m_found.append(Found{folder, join(folderOf(relative), leftover->item),
                         join(m_folders.at(folder), relative),
                         leftover->removing ? Kind::Removing : Kind::Partial});
}

void InterruptedMoves::addLoneSidecar(int folder, const QString &relative)
{
    const QString item = sidecarOwner(relative);
    if (item.isEmpty() || folder < 0 || folder >= m_folders.size())
        return;
    m_found.append(Found{folder, item, join(m_folders.at(folder), relative), Kind::Sidecar});
}

QString InterruptedMoves::Line::in(bool translated) const
{
    const QString format = translated ? korvane::tr(text) : QString::fromUtf8(text);
    // All at once: a path holding "%1" must not be taken for a place to fill.
    switch (args.size()) {
    case 1:
        return format.arg(args.at(0));
    case 2:
        return format.arg(args.at(0), args.at(1));
    default:
        return format.arg(args.value(0), args.value(1), args.value(2));
    }
}

QList<InterruptedMoves::Line> InterruptedMoves::settle()
{
    QList<Line> lines;
    for (const Found &found : std::as_const(m_found))
        if (found.kind == Kind::Removing)
            settleRemoving(found, &lines);
    for (const Found &found : std::as_const(m_found))
        if (found.kind == Kind::Partial)
            settlePartial(found, &lines);
    for (const Found &found : std::as_const(m_found))
        if (found.kind == Kind::Sidecar)
            settleSidecar(found, &lines);
    // What could not be settled keeps its staging folder, and says so above.
    for (const QString &staging : std::as_const(m_staging))
        if (m_files.isDirectory(staging) && m_files.directoryContents(staging).isEmpty())
            m_files.remove(staging);
    return lines;
}

QString InterruptedMoves::itemIn(int folder, const Found &found) const
{
    return join(m_folders.at(folder), found.relativeItem);
}

bool InterruptedMoves::anyPartialOf(const Found &found) const
{
    for (const Found &other : m_found)
        if (other.kind == Kind::Partial && other.relativeItem == found.relativeItem
            && m_files.exists(other.path))
            return true;
    for (int folder = 0; folder < m_folders.size(); ++folder)
        if (m_files.exists(partialPath(itemIn(folder, found))))
            return true;
    return false;
}

bool InterruptedMoves::anyRemovingOf(const Found &found) const
{
    for (const Found &other : m_found)
        if (other.kind == Kind::Removing && other.relativeItem == found.relativeItem
            && m_files.exists(other.path))
            return true;
    return false;
}

void InterruptedMoves::settleRemoving(const Found &found, QList<Line> *lines)
{
    if (!m_files.exists(found.path))
        return;
    // With a partial copy still about, the new copy never took its name: the old one goes back.
    if (!anyPartialOf(found)) {
        // Otherwise a whole copy that holds everything the old one still holds (a removal cut
        // short leaves less) is the moved item.
        for (int folder = 0; folder < m_folders.size(); ++folder) {
            const QString copy = itemIn(folder, found);
            if (!m_files.exists(copy) || !m_files.holdsAllOf(copy, found.path))
                continue;
            FileError error;
            if (m_files.remove(found.path, &error))
                *lines << Line{
                    QT_TRANSLATE_NOOP("korvane",
                                      "Finished an interrupted move: %1 is whole, its old copy "
                                      "%2 is removed"),
                    {copy, found.path}};
            else
                *lines << Line{QT_TRANSLATE_NOOP("korvane", "Kept %1, the old copy of %2: %3"),
                               {found.path, copy, error.reason}};
            return;
        }
    }
    const QString home = itemIn(found.folder, found);
    if (m_files.exists(home)) {
        *lines << Line{QT_TRANSLATE_NOOP(
                           "korvane", "Kept %1, the hidden copy of an interrupted move: %2 holds a "
                                      "different item"),
                       {found.path, home}};
        return;
    }
    FileError error;
    if (m_files.move(found.path, home, &error))
        *lines << Line{
            QT_TRANSLATE_NOOP("korvane", "Undid an interrupted move: %1 is back in place"), {home}};
    else
        *lines << Line{
            QT_TRANSLATE_NOOP("korvane", "Kept %1, the hidden copy of an interrupted move: %2"),
            {found.path, error.reason}};
}

void InterruptedMoves::settlePartial(const Found &found, QList<Line> *lines)
{
    if (!m_files.exists(found.path))
        return;
    // A partial copy is made while its source stays whole; it is never the only copy unless
    // something else took that away.
    bool elsewhere = anyRemovingOf(found);
    for (int folder = 0; folder < m_folders.size() && !elsewhere; ++folder)
        elsewhere = m_files.exists(itemIn(folder, found));
    if (!elsewhere) {
        *lines << Line{
            QT_TRANSLATE_NOOP("korvane",
                              "Kept %1, the partial copy of an interrupted move: no other copy "
                              "of %2 was found"),
            {found.path, found.relativeItem}};
        return;
    }
    FileError error;
    if (m_files.remove(found.path, &error))
        *lines << Line{
            QT_TRANSLATE_NOOP("korvane", "Removed %1, the partial copy of an interrupted move"),
            {found.path}};
    else
        *lines << Line{
            QT_TRANSLATE_NOOP("korvane", "Kept %1, the partial copy of an interrupted move: %2"),
            {found.path, error.reason}};
}

void InterruptedMoves::settleSidecar(const Found &found, QList<Line> *lines)
{
    if (!m_files.exists(found.path) || m_files.exists(itemIn(found.folder, found)))
        return;
    // Only where the item is beyond doubt: one copy, and no Finder information of its own.
    int home = -1;
    for (int folder = 0; folder < m_folders.size(); ++folder) {
        if (folder == found.folder || !m_files.exists(itemIn(folder, found)))
            continue;
        if (home >= 0)
            return;
        home = folder;
    }
    if (home < 0)
        return;
    const QString item = itemIn(home, found);
    const QString target = join(folderOf(item), QStringLiteral("._") + nameOf(item));
    if (m_files.exists(target))
        return;
    FileError error;
    if (m_files.move(found.path, target, &error))
        *lines << Line{QT_TRANSLATE_NOOP("korvane", "Moved %1, the Finder information of %2, "
                                                    "beside it after an interrupted move"),
                       {found.path, item}};
    else
        *lines << Line{QT_TRANSLATE_NOOP("korvane", "Kept %1, the Finder information of %2: %3"),
                       {found.path, item, error.reason}};
}

} // namespace korvane
