#include "app/AppController.h"

#include "app/Preferences.h"
#include "core/FormatTable.h"
#include "core/Locations.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/FormatManager.h"
#include "library/UnsavedWork.h"
#include "os/FileOperations.h"

namespace korvane {

AppController::AppController(const RunParts &parts) : AppServices(parts)
{
    // The tab view as the main window lays it out: every format, the first in front.
    for (const Format &format : formats()) {
        m_tabs.append({format.tabIdentifier(), format.tabLabel});
    }
}

AppController::~AppController() = default;

void AppController::setControllers(Preferences *pref, const QList<FormatManager *> &managers)
{
    m_pref = pref;
    m_managers = managers;
    connect(pref, &Preferences::architectureColumnRequested, this,
            &AppController::showArchitectureColumn, Qt::UniqueConnection);
    connect(&groupRegistry(), &GroupRegistry::groupRemoved, this, &AppController::renumberGroups,
            Qt::UniqueConnection);
    groupRegistry().setMemberCounter([this](int position) { return groupMemberCount(position); });
}

int AppController::groupMemberCount(int position) const
{
    int count = 0;
    for (const FormatManager *manager : m_managers)
        for (const PluginPtr &item : manager->items())
            count += item->groupId() == position ? 1 : 0;
    return count;
}

void AppController::renumberGroups(int position)
{
    for (FormatManager *manager : std::as_const(m_managers)) {
        QList<int> rows;
        for (int row = 0; row < manager->rowCount(); ++row) {
            const PluginPtr item = manager->itemAt(row);
            if (item->groupId() < position)
                continue;
            item->groupRemoved(position);
            rows << row;
        }
        if (!rows.isEmpty())
            emit manager->itemsChanged(rows);
    }
}

FormatManager *AppController::managerOf(int type) const
{
    return type >= 0 && type < m_managers.size() ? m_managers.at(type) : nullptr;
}

// --- Lifecycle ---------------------------------------------------------------------------------

void AppController::prepareWindow()
{
    initTabs();
    groupRegistry().updateGroupMenu();
}

void AppController::start()
{
    Preferences *pref = m_pref;
    for (FormatManager *manager : std::as_const(m_managers)) {
        const int type = manager->type();
        if (!pref->isFormatOn(type))
            continue;
        manager->rescan();
        const QString set = pref->defaultSet(type).value_or(QString());
        if (!set.isEmpty() && files().exists(set))
            manager->sets().openDefaultSet(set);
        else
            pref->setDefaultSet(type, SetController::noSetTitle());
    }
}

void AppController::saveState()
{
    groupRegistry().save();
    // Every format saves, switched on or not: a format's files outlive its tab.
    for (FormatManager *manager : std::as_const(m_managers))
        manager->groups().save();
    for (FormatManager *manager : std::as_const(m_managers))
        manager->sets().saveSetList();
    m_pref->setDefaultType(activeType());
}

// --- Tabs --------------------------------------------------------------------------------------

QString AppController::tabIdentifier(int type) const
{
    const Format *format = formats().find(type);
    return format ? format->tabIdentifier() : QString();
}

QString AppController::tabLabel(int type) const
{
    const Format *format = formats().find(type);
    return format ? format->tabLabel : QString();
}

int AppController::typeOfIdentifier(const QString &identifier) const
{
    return formats().typeOfTabIdentifier(identifier);
}

void AppController::initTabs()
{
    Preferences *pref = m_pref;
    for (int type = 0; type < formats().count(); ++type) {
        if (pref->isFormatOn(type))
            continue;
        const int index = indexOfIdentifier(tabIdentifier(type));
        if (index < 0)
            continue;
        removeTabAt(index);
    }
    setActiveType(pref->defaultType());
}

void AppController::showSelectedFormatTab(bool shown)
{
    Preferences *pref = m_pref;
    const int position = pref->selectedTab();
    const int type = formats().isValid(position - 1) ? position - 1 : -1;

    if (!shown) {
        const int index = type >= 0 ? indexOfIdentifier(tabIdentifier(type)) : 0;
        if (index >= 0 && index < tabCount())
            removeTabAt(index);
    } else if (type >= 0 && indexOfIdentifier(tabIdentifier(type)) < 0) {
        // The nearest switched-on predecessor's type index plus one, not the number of tabs
        // before it: with AU off and RTAS on, MAS asks for index 2 while one tab stands before it.
        int index = 0;
        for (int before = type - 1; before >= 0; --before) {
            if (pref->isFormatOn(before)) {
                index = before + 1;
                break;
            }
        }
        insertTab(index, type);
    }
    pref->storeForm();
}

int AppController::activeType() const
{
    if (m_selected < 0 || m_selected >= tabCount())
        return 0;
    const int type = typeOfIdentifier(m_tabs.at(m_selected).identifier);
    return type < 0 ? 0 : type;
}

void AppController::setActiveType(int type)
{
    const int index = formats().isValid(type) ? indexOfIdentifier(tabIdentifier(type)) : -1;
    if (index >= 0)
        selectIndex(index);
    else if (m_selected < 0 && !m_tabs.isEmpty())
        selectIndex(0); // some tab must be in front
}

QStringList AppController::tabIdentifiers() const
{
    QStringList identifiers;
    for (const TabItem &tab : m_tabs)
        identifiers << tab.identifier;
    return identifiers;
}

QString AppController::labelAt(int index) const
{
    return index >= 0 && index < tabCount() ? m_tabs.at(index).label : QString();
}

void AppController::selectTabAtIndex(int index)
{
    if (index >= 0 && index < tabCount())
        selectIndex(index);
}

int AppController::indexOfIdentifier(const QString &identifier) const
{
    for (int i = 0; i < tabCount(); ++i)
        if (m_tabs.at(i).identifier == identifier)
            return i;
    return -1;
}

void AppController::removeTabAt(int index)
{
    m_tabs.removeAt(index);
    int selected = m_selected;
    if (m_tabs.isEmpty())
        selected = -1;
    else if (index < m_selected)
        selected = m_selected - 1;
    else if (index == m_selected)
        selected = qMin(index, tabCount() - 1); // the neighbour takes the front
    emit tabsChanged();
    if (selected != m_selected || index == m_selected) {
        m_selected = selected;
        emit selectedTabChanged(m_selected);
    }
}

void AppController::insertTab(int index, int type)
{
    index = qBound(0, index, tabCount()); // the insertion rule can point past the last tab
    m_tabs.insert(index, {tabIdentifier(type), tabLabel(type)});
    const bool wasEmpty = m_selected < 0;
    if (wasEmpty)
        m_selected = index;
    else if (index <= m_selected)
        ++m_selected;
    emit tabsChanged();
    if (wasEmpty)
        emit selectedTabChanged(m_selected);
}

void AppController::selectIndex(int index)
{
    if (index == m_selected)
        return;
    m_selected = index;
    emit selectedTabChanged(index);
}

// --- Routing -----------------------------------------------------------------------------------

FormatManager *AppController::managerByIdentifier() const
{
    int type = -1;
    if (m_selected >= 0 && m_selected < tabCount())
        type = typeOfIdentifier(m_tabs.at(m_selected).identifier);
    return managerOf(type < 0 ? TypeAU : type);
}

FormatManager *AppController::activeManager() const
{
    return managerOf(activeType());
}

void AppController::newSet()
{
    // A new set starts from the disk: marks and set edits would go without a word.
    if (FormatManager *manager = managerByIdentifier(); manager && UnsavedWork::settle(*manager))
        manager->sets().newSet();
}

bool AppController::settleUnsavedWork()
{
    for (FormatManager *manager : std::as_const(m_managers)) {
        if (manager && manager->hasScanned() && !UnsavedWork::settle(*manager))
            return false;
    }
    return true;
}

void AppController::openSet()
{
    if (FormatManager *manager = managerByIdentifier())
        manager->sets().openSet();
}

void AppController::saveSet()
{
    if (FormatManager *manager = managerByIdentifier())
        manager->sets().saveSet();
}

void AppController::saveSetAs()
{
    if (FormatManager *manager = managerByIdentifier())
        manager->sets().saveSetAs();
}

void AppController::moveSelectedToTrash()
{
    Alert alert;
    alert.style = Alert::Informational;
    alert.messageText = korvane::tr("Move to trash");
    alert.informativeText = korvane::tr("Do you want to move the selected Plug-Ins to trash?");
    // The safe answer is the default one.
    alert.buttons = {korvane::tr("cancel"), korvane::tr("move to trash")};
    if (ui().runAlert(alert) != AlertAnswer::Alternate)
        return;
    if (FormatManager *manager = activeManager())
        manager->maintenance().moveSelectedToTrash();
}

void AppController::setAllActive()
{
    if (FormatManager *manager = activeManager())
        manager->marking().setAllActive();
}

void AppController::setAllInactive()
{
    if (FormatManager *manager = activeManager())
        manager->marking().setAllInactive();
}

void AppController::setGroupActive()
{
    if (FormatManager *manager = activeManager())
        manager->marking().setGroupActive();
}

void AppController::setGroupInactive()
{
    if (FormatManager *manager = activeManager())
        manager->marking().setGroupInactive();
}

void AppController::setSelectedActive()
{
    if (FormatManager *manager = activeManager())
        manager->marking().setSelectedActive();
}

void AppController::setSelectedInactive()
{
    if (FormatManager *manager = activeManager())
        manager->marking().setSelectedInactive();
}

void AppController::setGroup(const QString &title)
{
    if (FormatManager *manager = activeManager())
        manager->groups().setGroup(title);
}

void AppController::setArchitectureActive(int architecture, bool active)
{
    if (FormatManager *manager = activeManager())
        manager->maintenance().setArchitectureActive(architecture, active);
}

void AppController::showArchitectureColumn(int type, bool show)
{
    if (FormatManager *manager = managerOf(type))
        manager->table().showArchitectureColumn(show);
}

bool AppController::isMenuItemEnabled(MenuItem item) const
{
    if (item == MenuItem::ShowLog)
        return !log().isVisible();
    return true;
}

} // namespace korvane
