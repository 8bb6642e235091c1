// Sets: the pop-up of known set documents, saving and opening them, and merging an opened set
// into the manager's list.
#include "library/SetController.h"

#include "codec/PropertyList.h"
#include "core/AppServices.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/FormatManager.h"
#include "library/MissingItemsPrompt.h"
#include "library/SetDocument.h"
#include "library/UnsavedWork.h"
#include "os/FileOperations.h"

#include <QFileInfo>
#include <algorithm>

namespace korvane {

namespace {

const QString kNoSet = SetController::noSetTitle();

} // namespace

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
        PropertyList::readStringArray(m_parts.services.locations().dataFilePath(m_traits.setsFile));
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
        UnsavedWork::reportSetNotSaved(m_manager, error); // the edits stay unsaved
        return false;
    }
    m_setChanged = false;
    return true;
}

bool SetController::saveSetAs()
{
    SavePanelRequest request;
    request.directory = m_parts.services.locations().documentsFolder();
    request.fileName = m_traits.savePanelName;
    UserInterface &ui = m_parts.services.ui();
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
        UnsavedWork::reportSetNotSaved(m_manager, error);
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
    request.directory = m_parts.services.locations().documentsFolder();
    request.allowedTypes = m_traits.documentExtension.split(QLatin1Char(' '));
    const std::optional<QString> path = m_parts.services.ui().runOpenPanel(request);
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
    return m_manager.mergeItems(SetDocument::read(path));
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
        if (m_parts.services.files().exists(path)) {
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
        alert.informativeText =
            korvane::tr("The set \"%@\" not longer exist.").replace(QLatin1String("%@"), path);
        const AlertAnswer answer = m_parts.services.ui().runAlert(alert);
        if (answer == AlertAnswer::Third) {
            m_setTitles.removeAll(path);
            emit setsChanged();
            selectSetIndex(std::max(0, int(m_setTitles.indexOf(kNoSet))));
            return;
        }
        // Nobody there to put the file back would be asked for ever: the entry stays for a
        // person to decide on later.
        if (answer != AlertAnswer::Second || !m_parts.services.ui().isInteractive()) {
            selectSetIndex(std::max(0, int(m_setTitles.indexOf(kNoSet))));
            m_setChanged = false;
            return;
        }
    }
}

bool SetController::offerToSaveSet()
{
    return UnsavedWork::settleSetEdits(m_manager);
}

void SetController::forgetSetEdits()
{
    // The marks no longer match the set: it is no longer the one shown.
    selectSetIndex(0);
    m_setChanged = false;
}

void SetController::saveSetList()
{
    const QString path = m_parts.services.locations().dataFilePath(m_traits.setsFile);
    m_parts.services.createSupportFolder(); // a fresh home has none yet
    QVariantList titles;
    for (const QString &title : std::as_const(m_setTitles))
        titles << title;
    // The list is read as names only; a file holding anything else is kept, not replaced.
    m_parts.services.writeDataFile(path, titles, [](const QString &file) {
        return PropertyList::readStringArray(file).has_value();
    });
}

QString SetController::selectedSet() const
{
    const QString title = m_setTitles.value(m_selectedSetIndex);
    if (m_selectedSetIndex < 0 || m_selectedSetIndex >= m_setTitles.size() || title == kNoSet)
        return QString();
    return title;
}

bool SetController::writeSet(const QString &path, FileError *error) const
{
    return SetDocument::write(m_parts.services.files(), path, m_manager.items(), error);
}

} // namespace korvane
