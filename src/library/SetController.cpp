// Sets: the pop-up of known set documents, saving and opening them, and merging an opened set
// into the manager's list.
#include "library/SetController.h"

#include "codec/PropertyList.h"
#include "core/ActivityLog.h"
#include "core/DataFiles.h"
#include "core/Locations.h"
#include "core/PathChecks.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/FormatManager.h"
#include "library/MissingItemsPrompt.h"
#include "library/SetDocument.h"
#include "library/UnsavedWork.h"
#include "os/FileOperations.h"

#include <QFileInfo>
#include <QHash>
#include <algorithm>
#include <vector>

namespace korvane {

namespace {

// Stored in English and shown translated: one text for both.
const char *const kNoSetText = QT_TRANSLATE_NOOP("korvane", "no set");
const QString kNoSet = QLatin1String(kNoSetText);

} // namespace

QString SetController::noSetTitle()
{
    return kNoSet;
}

QString SetController::shownNoSetTitle()
{
    return korvane::tr(kNoSetText);
}

SetController::SetController(FormatManager &manager, const FormatTraits &traits,
                             const ManagerParts &parts)
    : m_manager(manager), m_traits(traits), m_parts(parts)
{
}

void SetController::selectSetIndex(int index)
{
    m_selectedSetIndex = index;
    emit setsChanged();
}

void SetController::setCurrentSetName(const QString &name)
{
    m_setName = name;
    emit currentSetNameChanged(name);
}

void SetController::noteItemChanged()
{
    m_setChanged = m_selectedSetIndex > 0;
}

void SetController::loadSetList()
{
    const std::optional<QStringList> stored =
        PropertyList::readStringArray(m_parts.run.locations.dataFilePath(m_traits.setsFile));
    QStringList titles;
    if (!stored) {
        titles << kNoSet;
    } else {
        // Titles identify entries, so a repeated one keeps only its last place.
        for (const QString &title : *stored) {
            titles.removeAll(title);
            titles << title;
        }
        if (!titles.contains(kNoSet))
            titles.prepend(kNoSet);
    }
    m_setTitles = titles;
    emit setsChanged();
    selectSetIndex(0);
    setCurrentSetName(m_traits.windowLoadName);
    m_manager.setApplyEnabled(false);
}

void SetController::newSet()
{
    m_manager.rescan();
    setCurrentSetName(m_traits.untitledName);
}

bool SetController::saveSet()
{
    if (m_setName == m_traits.untitledName)
        return saveSetAs();
    // A relative name lands in the current folder.
    FileError error;
    if (!writeSet(m_setName, &error)) {
        UnsavedWork::reportSetNotSaved(m_parts.log, m_parts.run.ui,
                                       error); // the edits stay unsaved
        return false;
    }
    m_setChanged = false;
    return true;
}

bool SetController::saveSetAs()
{
    SavePanelRequest request;
    request.directory = m_parts.run.locations.documentsFolder();
    request.fileName = m_traits.savePanelName;
    UserInterface &ui = m_parts.run.ui;
    // After a failure the panel comes back: the set is saved somewhere or consciously not.
    while (const std::optional<QString> path = ui.runSavePanel(request)) {
        if (saveSetAs(*path))
            return true;
        if (!ui.isInteractive())
            break;
        request.directory = QFileInfo(*path).absolutePath();
        request.fileName = QFileInfo(*path).fileName();
    }
    return false;
}

bool SetController::saveSetAs(const QString &path)
{
    FileError error;
    if (!writeSet(path, &error)) {
        // Neither the pop-up nor the name field takes a set that is not on disk.
        UnsavedWork::reportSetNotSaved(m_parts.log, m_parts.run.ui, error);
        return false;
    }
    setCurrentSetName(path);
    if (!m_setTitles.contains(path)) {
        m_setTitles << path;
        emit setsChanged();
    }
    selectSetIndex(int(m_setTitles.indexOf(path)));
    m_setChanged = false;
    return true;
}

void SetController::openSet()
{
    OpenPanelRequest request;
    request.directory = m_parts.run.locations.documentsFolder();
    request.allowedTypes = m_traits.documentExtension.split(QLatin1Char(' '));
    const std::optional<QString> path = m_parts.run.ui.runOpenPanel(request);
    if (path)
        openSet(*path);
}

void SetController::openSet(const QString &path)
{
    // Loaded first and selected afterwards: a "no set" chosen by loadSet is overridden.
    loadSet(path);
    if (!m_setTitles.contains(path)) {
        m_setTitles << path;
        emit setsChanged();
    }
    selectSetIndex(int(m_setTitles.indexOf(path)));
}

void SetController::openDefaultSet(const QString &path)
{
    if (!m_setTitles.contains(path)) {
        m_setTitles << path;
        emit setsChanged();
    }
    selectSetIndex(int(m_setTitles.indexOf(path)));
    loadSet(path);
}

QStringList SetController::mergeSet(const QString &path)
{
    // Only names, places and flags are taken.
    return mergeEntries(SetDocument::read(path));
}

void SetController::loadSet(const QString &path)
{
    MissingItemsPrompt &missingItems = m_parts.missingItems;
    missingItems.clear();
    const QStringList missing = mergeSet(path);
    for (const QString &name : missing)
        missingItems.add(name);

    setCurrentSetName(path);

    if (!missing.isEmpty()) {
        if (missingItems.ask() == MissingItemsAnswer::Remove)
            saveSet(); // rewrites the document from the current list, without the missing entries
        else
            selectSetIndex(std::max(0, int(m_setTitles.indexOf(kNoSet))));
    }

    if (m_parts.settings.appliesSetAfterLoading(m_traits.type))
        m_manager.apply();
}

void SetController::selectSet(int index)
{
    selectSetIndex(index);
    for (;;) {
        if (m_selectedSetIndex < 1) {
            m_setChanged = false;
            return;
        }
        const QString path = m_setTitles.value(m_selectedSetIndex);
        if (m_parts.run.files.exists(path)) {
            loadSet(path);
            return;
        }

        Alert alert;
        alert.style = Alert::Informational;
        alert.messageText = korvane::tr("Selected Set not found");
        // Cancel comes first, so Return and Escape both leave the entry and ask no more; "try
        // again" once was the default, and Return asked again for as long as it was pressed.
        alert.buttons = {korvane::tr("Cancel"), korvane::tr("try again"), korvane::tr("remove")};
        alert.addedButtons = true;
        alert.informativeText = korvane::tr("The set \"%1\" not longer exist.").arg(path);
        const AlertAnswer answer = m_parts.run.ui.runAlert(alert);
        if (answer == AlertAnswer::Third) {
            m_setTitles.removeAll(path);
            emit setsChanged();
            selectSetIndex(std::max(0, int(m_setTitles.indexOf(kNoSet))));
            return;
        }
        // Nobody there to put the file back would be asked for ever: the entry stays for a
        // person to decide on later.
        if (answer != AlertAnswer::Second || !m_parts.run.ui.isInteractive()) {
            selectSetIndex(std::max(0, int(m_setTitles.indexOf(kNoSet))));
            m_setChanged = false;
            return;
        }
    }
}

bool SetController::offerToSaveSet()
{
    return UnsavedWork::settleSetEdits(*this, m_parts.run.ui);
}

void SetController::forgetSetEdits()
{
    // The marks no longer match the set: it is no longer the one shown.
    selectSetIndex(0);
    m_setChanged = false;
}

void SetController::saveSetList()
{
    const QString path = m_parts.run.locations.dataFilePath(m_traits.setsFile);
    m_parts.dataFiles.createSupportFolder(); // a fresh home has none yet
    QVariantList titles;
    for (const QString &title : std::as_const(m_setTitles))
        titles << title;
    // The list is read as names only; a file holding anything else is kept, not replaced.
    m_parts.dataFiles.write(path, titles, [](const QString &file) {
        return PropertyList::readStringArray(file).has_value();
    });
}

QString SetController::selectedSet() const
{
    QString title = m_setTitles.value(m_selectedSetIndex);
    if (m_selectedSetIndex < 0 || m_selectedSetIndex >= m_setTitles.size() || title == kNoSet)
        return QString();
    return title;
}

bool SetController::writeSet(const QString &path, FileError *error) const
{
    return SetDocument::write(m_parts.run.files, path, m_manager.items(), error);
}

QStringList SetController::mergeEntries(const QList<PluginPtr> &saved)
{
    // A document saved while a plug-in was installed twice (system and user folder) names it
    // twice. Each saved entry goes to the copy that lies where the entry says, then to a copy in
    // the same scope (system or user), then to any copy still without an entry, in list order;
    // matching by name and position alone would follow the table's sort order and send one copy
    // onto the other's place. An entry left without a copy is missing like an unknown name.
    const QStringList folders = m_manager.locations().allFolderPaths(m_traits);
    const QList<PluginPtr> &plugins = m_manager.m_list.items();

    // The installed copies of each name in list order, where each lies on disk (the folder its
    // record was scanned in) and whether that is a system-wide folder.
    QHash<QString, QList<qsizetype>> copies;
    copies.reserve(plugins.size());
    std::vector<QString> where(size_t(plugins.size()));
    std::vector<bool> global(size_t(plugins.size()));
    for (qsizetype i = 0; i < plugins.size(); ++i) {
        const Plugin &item = *plugins.at(i);
        copies[item.name()].append(i);
        const QString folder = m_manager.m_list.folderOnDisk(item);
        where[size_t(i)] = folder;
        const int loc = int(folders.indexOf(folder));
        global[size_t(i)] = loc >= 0 ? m_traits.isSystem(loc) : item.isGlobal();
    }

    std::vector<qsizetype> match(size_t(saved.size()), -1);
    std::vector<bool> taken(size_t(plugins.size()), false);
    const auto pass = [&](const auto &fits) {
        for (qsizetype s = 0; s < saved.size(); ++s) {
            if (match[size_t(s)] >= 0)
                continue;
            const Plugin &entry = *saved.at(s);
            // A name that leaves its folder never names an installed plug-in.
            if (!isContainedName(entry.name()))
                continue;
            const auto candidates = copies.constFind(entry.name());
            if (candidates == copies.cend())
                continue;
            for (const qsizetype index : *candidates) {
                if (!taken[size_t(index)] && fits(entry, index)) {
                    match[size_t(s)] = index;
                    taken[size_t(index)] = true;
                    break;
                }
            }
        }
    };
    pass([&](const Plugin &entry, qsizetype index) {
        return where[size_t(index)] == entry.location();
    });
    pass([&](const Plugin &entry, qsizetype index) {
        return global[size_t(index)] == entry.isGlobal();
    });
    pass([](const Plugin &, qsizetype) { return true; });

    QStringList missing;
    QList<PluginPtr> changed;
    for (qsizetype s = 0; s < saved.size(); ++s) {
        const Plugin &entry = *saved.at(s);
        if (match[size_t(s)] < 0) {
            missing << entry.name();
            continue;
        }
        const PluginPtr item = plugins.at(match[size_t(s)]);
        item->setName(entry.name());
        item->setLocation(entry.location());
        item->setGlobal(entry.isGlobal());
        item->setActive(entry.isActive());
        // The entry's folder finds its pair; one no pair has keeps the copy's pair in that scope.
        const int loc = int(folders.indexOf(entry.location()));
        if (loc >= 0 && m_traits.isSystem(loc) == entry.isGlobal())
            item->setPair(loc / 2);
        item->updateLocation(m_traits, folders);
        m_manager.marking().updateRecord(item);
        changed << item;
    }
    m_manager.announceChanged(changed);
    return missing;
}

} // namespace korvane
