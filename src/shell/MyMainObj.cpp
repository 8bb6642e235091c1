#include "shell/MyMainObj.h"

#include "managers/FormatManager.h"
#include "panels/MyPrefObj.h"
#include "platform/FileOperations.h"
#include "platform/FormatTable.h"
#include "platform/Locations.h"
#include "platform/SharedInstances.h"
#include "platform/Texts.h"
#include "shell/UpdateCheck.h"
#include "ui/UserInterface.h"

namespace korvane {

MyMainObj::MyMainObj(const RunParts &parts) : AppServices(parts)
{
    // The tab view as the main window lays it out: every format, the first in front.
    for (const Format &format : formats()) {
        m_tabs.append({format.tabIdentifier(), format.tabLabel});
        m_keptView.append(false);
    }
}

MyMainObj::~MyMainObj()
{
    SharedInstance<MyMainObj>::uninstall(this);
}

MyMainObj *MyMainObj::getMainObj()
{
    return SharedInstance<MyMainObj>::get();
}

void MyMainObj::install(MyMainObj *main)
{
    SharedInstance<MyMainObj>::install(main);
    AppServices::install(main);
}

void MyMainObj::setControllers(MyPrefObj *pref, const QList<FormatManager *> &managers)
{
    m_pref = pref;
    m_managers = managers;
    connect(pref, &MyPrefObj::showPlattformRequested, this, &MyMainObj::showPlattform,
            Qt::UniqueConnection);
}

FormatManager *MyMainObj::managerOf(int type) const
{
    return type >= 0 && type < m_managers.size() ? m_managers.at(type) : nullptr;
}

// --- Lifecycle
// ------------------------------------------------------------------------------------

void MyMainObj::awakeFromNib()
{
    initTabView();
    createGroupSubmenu();
}

void MyMainObj::applicationDidFinishLaunching()
{
    MyPrefObj *pref = m_pref;
    for (FormatManager *manager : std::as_const(m_managers)) {
        const int type = manager->type();
        if (!pref->isTypeActive(type))
            continue;
        manager->rescan();
        const QString set = pref->getDefaultSet(type).value_or(QString());
        if (!set.isEmpty() && files().exists(set))
            manager->openDefaultSet(set);
        else
            pref->setDefaultSet(type, QStringLiteral("no set"));
    }
}

void MyMainObj::applicationWillTerminate()
{
    saveGroupRegistry();
    // Every format saves, switched on or not: a format's files outlive its tab.
    for (FormatManager *manager : std::as_const(m_managers))
        manager->saveGroups();
    for (FormatManager *manager : std::as_const(m_managers))
        manager->saveSetList();
    m_pref->setDefaultType(getActiveType());
}

// --- Tabs
// -----------------------------------------------------------------------------------------

QString MyMainObj::tabIdentifier(int type) const
{
    const Format *format = formats().find(type);
    return format ? format->tabIdentifier() : QString();
}

QString MyMainObj::tabLabel(int type) const
{
    const Format *format = formats().find(type);
    return format ? format->tabLabel : QString();
}

int MyMainObj::typeOfIdentifier(const QString &identifier) const
{
    return formats().typeOfTabIdentifier(identifier);
}

void MyMainObj::initTabView()
{
    MyPrefObj *pref = m_pref;
    for (int type = 0; type < formats().count(); ++type) {
        if (pref->isTypeActive(type))
            continue;
        const int index = indexOfIdentifier(tabIdentifier(type));
        if (index < 0)
            continue;
        keepView(type);
        removeTabAt(index);
    }
    setActiveType(pref->getDefaultType());
}

void MyMainObj::setTabView(int state)
{
    MyPrefObj *pref = m_pref;
    const int position = pref->getSelectedTab();
    const int type = formats().isValid(position - 1) ? position - 1 : -1;

    if (state == 0) {
        for (int t = 0; t < formats().count(); ++t)
            if (indexOfIdentifier(tabIdentifier(t)) >= 0)
                keepView(t);
        const int index = type >= 0 ? indexOfIdentifier(tabIdentifier(type)) : 0;
        if (index >= 0 && index < tabCount())
            removeTabAt(index);
    } else if (state == 1 && type >= 0 && indexOfIdentifier(tabIdentifier(type)) < 0) {
        // The nearest switched-on predecessor's type index plus one, not the number of tabs
        // before it: with AU off and RTAS on, MAS asks for index 2 while one tab stands before it.
        int index = 0;
        for (int before = type - 1; before >= 0; --before) {
            if (pref->isTypeActive(before)) {
                index = before + 1;
                break;
            }
        }
        insertTab(index, type);
    }
    pref->updatePrefs();
}

int MyMainObj::getActiveType() const
{
    if (m_selected < 0 || m_selected >= tabCount())
        return 0;
    const int type = typeOfIdentifier(m_tabs.at(m_selected).identifier);
    return type < 0 ? 0 : type;
}

void MyMainObj::setActiveType(int type)
{
    const int index = formats().isValid(type) ? indexOfIdentifier(tabIdentifier(type)) : -1;
    if (index >= 0)
        selectIndex(index);
    else if (m_selected < 0 && !m_tabs.isEmpty())
        selectIndex(0); // some tab must be in front
}

QStringList MyMainObj::tabIdentifiers() const
{
    QStringList identifiers;
    for (const TabItem &tab : m_tabs)
        identifiers << tab.identifier;
    return identifiers;
}

QString MyMainObj::labelAt(int index) const
{
    return index >= 0 && index < tabCount() ? m_tabs.at(index).label : QString();
}

void MyMainObj::selectTabAtIndex(int index)
{
    if (index >= 0 && index < tabCount())
        selectIndex(index);
}

bool MyMainObj::hasKeptView(int type) const
{
    return formats().isValid(type) && m_keptView.at(type);
}

int MyMainObj::indexOfIdentifier(const QString &identifier) const
{
    for (int i = 0; i < tabCount(); ++i)
        if (m_tabs.at(i).identifier == identifier)
            return i;
    return -1;
}

void MyMainObj::removeTabAt(int index)
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

void MyMainObj::insertTab(int index, int type)
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

void MyMainObj::keepView(int type)
{
    m_keptView[type] = true;
}

void MyMainObj::selectIndex(int index)
{
    if (index == m_selected)
        return;
    m_selected = index;
    emit selectedTabChanged(index);
}

// --- Routing
// --------------------------------------------------------------------------------------

FormatManager *MyMainObj::managerByIdentifier() const
{
    int type = -1;
    if (m_selected >= 0 && m_selected < tabCount())
        type = typeOfIdentifier(m_tabs.at(m_selected).identifier);
    return managerOf(type < 0 ? TypeAU : type);
}

FormatManager *MyMainObj::activeManager() const
{
    return managerOf(getActiveType());
}

void MyMainObj::newButton()
{
    if (FormatManager *manager = managerByIdentifier())
        manager->newSet();
}

void MyMainObj::open()
{
    if (FormatManager *manager = managerByIdentifier())
        manager->openSet();
}

void MyMainObj::save()
{
    if (FormatManager *manager = managerByIdentifier())
        manager->saveSet();
}

void MyMainObj::saveAs()
{
    if (FormatManager *manager = managerByIdentifier())
        manager->saveSetAs();
}

void MyMainObj::deleteItem()
{
    Alert alert;
    alert.style = Alert::Informational;
    alert.messageText = korvane::tr("Move to trash");
    alert.informativeText = korvane::tr("Do you want to move the selected Plug-Ins to trash?");
    // The safe answer is the default one.
    alert.buttons = {korvane::tr("cancel"), korvane::tr("move to trash")};
    if (ui().runAlert(alert) != AlertAlternate)
        return;
    if (FormatManager *manager = activeManager())
        manager->moveSelectedToTrash();
}

void MyMainObj::setAllActive()
{
    if (FormatManager *manager = activeManager())
        manager->setAllActive();
}

void MyMainObj::setAllInactive()
{
    if (FormatManager *manager = activeManager())
        manager->setAllInactive();
}

void MyMainObj::setGroupActive()
{
    if (FormatManager *manager = activeManager())
        manager->setGroupActive();
}

void MyMainObj::setGroupInactive()
{
    if (FormatManager *manager = activeManager())
        manager->setGroupInactive();
}

void MyMainObj::setSelectedActive()
{
    if (FormatManager *manager = activeManager())
        manager->setSelectedActive();
}

void MyMainObj::setSelectedInactive()
{
    if (FormatManager *manager = activeManager())
        manager->setSelectedInactive();
}

void MyMainObj::setGroup(const QString &title)
{
    if (FormatManager *manager = activeManager())
        manager->setGroup(title);
}

void MyMainObj::setArchitectureActive(int plattform, bool active)
{
    if (FormatManager *manager = activeManager())
        manager->setArchitectureActive(plattform, active);
}

void MyMainObj::showPlattform(int type, bool show)
{
    if (FormatManager *manager = managerOf(type))
        manager->showArchitectureColumn(show);
}

void MyMainObj::functionNotImplemented(const QString &title)
{
    Alert alert;
    alert.messageText = title;
    alert.informativeText = korvane::tr("This function will be implemented in a future version");
    alert.buttons = {korvane::tr("Ok")};
    ui().runAlert(alert);
}

bool MyMainObj::validateMenuItem(MenuItem item) const
{
    if (item == MenuItem::ShowLog)
        return !isLogVisible();
    return true;
}

void MyMainObj::windowWillClose(Window window)
{
    if (window != Window::Log)
        return;
    if (m_logVisible)
        hideLog();
    else
        m_showLogEnabled = true;
}

void MyMainObj::checkForUpdate()
{
    UpdateCheck(ui()).run();
}

} // namespace korvane
