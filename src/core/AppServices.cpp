#include "core/AppServices.h"

#include "codec/Bundle.h"
#include "codec/PropertyList.h"
#include "core/DataFile.h"
#include "core/FormatTable.h"
#include "core/Locations.h"
#include "core/PathChecks.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "os/FileOperations.h"

#include <QCoreApplication>
#include <QStringBuilder>

namespace korvane {

namespace {

const QString kSystemContentFile =
    QStringLiteral("/Library/Application Support/Korvane/content.plist");

// Entries whose elements are not all strings, or that lack a key, are left out: one damaged
// entry should not cost the user every other companion list. complete tells whether none was.
std::optional<QList<QStringList>> readContentFile(const QString &path, bool *complete = nullptr)
{
    const std::optional<QVariantList> root = PropertyList::readArray(path);
    if (!root)
        return std::nullopt;
    QList<QStringList> registry;
    bool all = true;
    for (const QVariant &element : *root) {
        QStringList entry;
        bool valid = element.typeId() == QMetaType::QVariantList;
        if (valid) {
            for (const QVariant &value : element.toList()) {
                if (value.typeId() != QMetaType::QString) {
                    valid = false;
                    break;
                }
                entry.append(value.toString());
            }
        }
        if (valid && !entry.isEmpty())
            registry.append(entry);
        else
            all = false;
    }
    if (complete)
        *complete = all;
    return registry;
}

// A registry file is replaced only when every entry in it was read; otherwise it is kept first.
bool contentFileWhole(const QString &path)
{
    bool complete = false;
    return readContentFile(path, &complete) && complete;
}

bool stringArrayFile(const QString &path)
{
    return PropertyList::readStringArray(path).has_value();
}

QVariantList toVariantList(const QStringList &strings)
{
    QVariantList list;
    list.reserve(strings.size());
    for (const QString &s : strings)
        list.append(s);
    return list;
}

} // namespace

AppServices::AppServices(const RunParts &parts)
    : m_parts(parts), m_saver(parts.files, parts.ui, parts.locations.documentsFolder(),
                              [this](const QString &line) { appendLog(line); })
{
    m_undoTitle = korvane::tr("Undo");
    m_redoTitle = korvane::tr("Redo");
    loadGroups();
    loadContentRegistry();
}

AppServices::~AppServices()
{
    m_undoStack.clear();
}

QString AppServices::userContentFile() const
{
    return locations().dataFilePath(QStringLiteral("content.plist"));
}

QString AppServices::groupsFile() const
{
    return locations().dataFilePath(QStringLiteral("groups.plist"));
}

void AppServices::setActiveType(int type)
{
    m_activeType = type;
}

// --- Content registry ---------------------------------------------------------------------------

void AppServices::loadContentRegistry()
{
    m_content.clear();
    m_contentLoaded = true;
    if (auto registry = readContentFile(userContentFile())) {
        m_content = *registry;
        return;
    }
    // The system-wide registry is only read here; the first save copies it to the user.
    if (auto registry = readContentFile(locations().expand(kSystemContentFile))) {
        m_content = *registry;
        return;
    }
    writeContentFile();
}

std::optional<QStringList> AppServices::contentFor(const QString &key)
{
    if (!m_contentLoaded)
        loadContentRegistry();
    for (const QStringList &entry : std::as_const(m_content)) {
        if (entry.first() == key)
            return entry;
    }
    return std::nullopt;
}

void AppServices::storeContent(const QStringList &entry)
{
    if (entry.isEmpty())
        return; // nothing to file it under
    if (!m_contentLoaded)
        loadContentRegistry();
    bool replaced = false;
    for (QStringList &existing : m_content) {
        if (existing.first() == entry.first()) {
            existing = entry;
            replaced = true;
            break;
        }
    }
    if (!replaced)
        m_content.append(entry);

    writeContentFile();
}

void AppServices::writeContentFile()
{
    QVariantList root;
    root.reserve(m_content.size());
    for (const QStringList &e : std::as_const(m_content))
        root.append(QVariant(toVariantList(e)));
    createSupportFolder();
    writeDataFile(userContentFile(), root, contentFileWhole);
}

bool AppServices::writeDataFile(const QString &path, const QVariant &root,
                                const std::function<bool(const QString &)> &readable)
{
    QString report;
    const bool free = DataFile::prepareToReplace(files(), path, readable, &report);
    if (!report.isEmpty())
        appendLog(report);
    return free && m_saver.write(path, PropertyList::toXml(root));
}

QStringList AppServices::withoutContentPaths(int type, const QStringList &scanPaths)
{
    QStringList paths = scanPaths;
    const Format *format = formats().find(type);
    if (!format)
        return paths;
    if (!m_contentLoaded)
        loadContentRegistry();

    QString roots[LocationCount];
    for (int i = 0; i < LocationCount; ++i)
        roots[i] = locations().expand(format->contentRoots[size_t(i)]);
    // Every companion is measured against the system-wide active root, whichever root it is under.
    const qsizetype cut = roots[0].size() + 1;

    for (const QStringList &entry : std::as_const(m_content)) {
        for (qsizetype c = 1; c < entry.size(); ++c) {
            const QString &companion = entry.at(c);
            // A ".." step could point anywhere; such an entry hides nothing.
            if (climbsUp(companion))
                continue;
            bool underRoot = false;
            for (const QString &root : roots) {
                if (liesInside(companion, root)) {
                    underRoot = true;
                    break;
                }
            }
            // Too short to leave a relative part: an empty prefix would hide everything.
            if (!underRoot || companion.size() <= cut)
                continue;
            const QString relative = companion.mid(cut);
            // Whole steps only: a companion "Shared/Lib" hides "Shared/Lib/x", not "Shared/Lib2".
            paths.removeIf([&relative](const QString &path) {
                return path == relative || liesInside(path, relative);
            });
        }
    }
    return paths;
}

QString AppServices::fullPath(const QString &name, int type, int loc) const
{
    // Expanding standardises the path, so a ".." in the name would lead out of the folder.
    const Format *format = formats().find(type);
    if (!format || !format->hasLocation(loc) || !isContainedName(name))
        return {};
    return locations().expand(format->folder(loc) + QLatin1Char('/') + name);
}

QStringList AppServices::relevantPaths(int type, int loc, const QStringList &scanPaths,
                                       ScanCache *cache)
{
    QStringList result;
    // Listed paths hold no "." or ".." steps, so the folder is expanded once, not per path.
    const QString folder = fullPath(QString(), type, loc);
    if (folder.isEmpty())
        return withoutContentPaths(type, scanPaths);
    result.reserve(scanPaths.size());
    for (qsizetype i = 0; i < scanPaths.size();) {
        const QString &path = scanPaths.at(i);
        ++i;
        if (path.isEmpty() || climbsUp(path))
            continue; // not a place inside the folder
        result.append(path);
        if (!Bundle::isFilePackage(QString(folder % QLatin1Char('/') % path), cache))
            continue;
        // Only what lies inside the package: a sibling "Echo.vst copy" is a plug-in of its own.
        while (i < scanPaths.size() && liesInside(scanPaths.at(i), path))
            ++i;
    }
    return withoutContentPaths(type, result);
}

void AppServices::createSupportFolder()
{
    const QString folder = locations().supportFolderPath();
    if (files().isDirectory(folder))
        return;
    // A fresh home may lack "Library/Application Support" too; without it nothing could be saved.
    createFolders(folder);
    files().createDirectory(folder); // a failure shows as the write that follows failing
}

void AppServices::createFolders(const QString &path)
{
    // Most paths' folders are there already: one look instead of one per level.
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash > 0 && !climbsUp(path) && files().isDirectory(path.left(slash)))
        return;
    QStringList components;
    if (path.startsWith(QLatin1Char('/')))
        components.append(QStringLiteral("/"));
    for (const QString &part : path.split(QLatin1Char('/'), Qt::SkipEmptyParts))
        components.append(part);
    // A ".." step would create folders somewhere else than on the way to the path.
    if (components.size() < 2 || climbsUp(path))
        return;

    QString current;
    for (qsizetype i = 0; i + 1 < components.size(); ++i) {
        const QString &part = components.at(i);
        if (current.isEmpty())
            current = part;
        else if (current.endsWith(QLatin1Char('/')))
            current += part;
        else
            current += QLatin1Char('/') + part;
        if (!files().exists(current))
            files().createDirectory(current); // a failure is left to the move that follows
    }
}

// --- Group registry -----------------------------------------------------------------------------

void AppServices::loadGroups()
{
    // A file holding anything but strings reads as absent, like an unreadable one.
    const std::optional<QStringList> stored = PropertyList::readStringArray(groupsFile());
    if (!stored || stored->isEmpty()) {
        m_groups = QStringList{QString()};
    } else {
        m_groups = *stored;
        m_groups[0] = QString();
    }
    emit groupsChanged();
}

void AppServices::saveGroupRegistry()
{
    createSupportFolder();
    writeDataFile(groupsFile(), toVariantList(m_groups), stringArrayFile);
}

QString AppServices::groupAt(int i) const
{
    return m_groups.value(qsizetype(i) + 1);
}

void AppServices::setGroupAt(int i, const QString &name)
{
    const qsizetype position = qsizetype(i) + 1;
    if (position < 0)
        return;
    if (position < m_groups.size())
        m_groups[position] = name;
    else
        m_groups.append(name);
    emit groupsChanged();
    updateGroupMenu();
}

void AppServices::addGroup()
{
    m_groups.append(korvane::tr("New Group"));
    emit groupsChanged();
    updateGroupMenu();
}

void AppServices::removeGroup(int selectedRow)
{
    // Without a selection there is nothing to remove: taking out the empty entry would shift
    // every group and so every plug-in's group by one.
    const qsizetype position = qsizetype(selectedRow) + 1;
    if (position < 1 || position >= m_groups.size())
        return;
    const int members = groupMemberCount(int(position));
    Alert alert;
    alert.messageText = korvane::tr("Delete the group “%1”?").arg(m_groups.at(position));
    alert.informativeText =
        members == 1 ? korvane::tr("1 plug-in is in it and will have no group.")
                     : korvane::tr("%1 plug-ins are in it and will have no group.").arg(members);
    alert.buttons = {korvane::tr("Delete"), korvane::tr("Cancel")};
    if (members > 0 && ui().runAlert(alert) != AlertAnswer::Default)
        return;
    m_groups.removeAt(position);
    // A group is a position in the list: without this its members took the next group's.
    emit groupRemoved(int(position));
    emit groupsChanged();
    updateGroupMenu();
}

int AppServices::groupCount() const
{
    return m_groups.isEmpty() ? 0 : int(m_groups.size() - 1);
}

void AppServices::showGroups()
{
    emit groupEditorShown();
}

void AppServices::updateGroupMenu()
{
    m_groupMenuTitles = m_groups.mid(1);
    emit groupMenuChanged();
}

// --- Log window ---------------------------------------------------------------------------------

void AppServices::showLog()
{
    m_logVisible = true;
    m_showLogEnabled = false;
    emit logVisibilityChanged(true);
}

void AppServices::hideLog()
{
    m_logVisible = false;
    m_showLogEnabled = true;
    emit logVisibilityChanged(false);
}

void AppServices::appendLog(const QString &entry)
{
    m_logText += entry;
    emit logChanged();
}

// --- Undo ---------------------------------------------------------------------------------------

void AppServices::undo()
{
    m_undoStack.undo();
    updateUndoTitle();
    updateRedoTitle();
}

void AppServices::redo()
{
    m_undoStack.redo();
    updateUndoTitle();
    updateRedoTitle();
}

void AppServices::updateUndoTitle()
{
    m_undoTitle = m_undoStack.undoText();
    emit undoTitlesChanged();
}

void AppServices::updateRedoTitle()
{
    m_redoTitle = m_undoStack.redoText();
    emit undoTitlesChanged();
}

// --- File-operation errors ----------------------------------------------------------------------

FileErrorAnswer AppServices::askToProceedAfter(const FileError &error)
{
    const QByteArray reason = error.reason.toUtf8();
    Alert alert;
    alert.title = QStringLiteral("Korvane");
    alert.messageText = korvane::tr("File operation error...\n error: %1\n with file: %2")
                            .arg(korvane::tr(reason.constData()), error.path);
    alert.buttons = {korvane::tr("Proceed"), korvane::tr("Stop")};
    return ui().runAlert(alert) == AlertAnswer::Default ? FileErrorAnswer::Proceed
                                                        : FileErrorAnswer::Stop;
}

} // namespace korvane
