#include "gui/main/MainWindow.h"

#include "app/AboutText.h"
#include "app/AppContext.h"
#include "app/AppController.h"
#include "app/LaunchScript.h"
#include "app/PreferenceStore.h"
#include "app/Preferences.h"
#include "core/Locations.h"
#include "core/PreferenceKeys.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "gui/dialogs/DuplicatesDialog.h"
#include "gui/dialogs/UnusedFormatsDialog.h"
#include "gui/main/AllPluginsModel.h"
#include "gui/main/AllPluginsView.h"
#include "gui/main/DetailsPane.h"
#include "gui/main/FormatTab.h"
#include "gui/main/WindowState.h"
#include "gui/table/PluginTableView.h"
#include "gui/windows/AboutPanel.h"
#include "gui/windows/GroupEditorWindow.h"
#include "gui/windows/InfoPanel.h"
#include "gui/windows/LaunchScriptPanel.h"
#include "gui/windows/LogWindow.h"
#include "gui/windows/PreferencesWindow.h"
#include "gui/windows/UpdateCheckCommand.h"
#include "gui/windows/WindowKeys.h"
#include "library/AudioUnitSolo.h"
#include "library/BulkMarks.h"
#include "library/DuplicateReport.h"
#include "library/FormatManager.h"
#include "library/UnsavedWork.h"

#include <QCloseEvent>
#include <QHeaderView>
#include <QMenuBar>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

namespace korvane {

namespace {

// Group names come from the user's file: an ampersand is a letter, not a mnemonic.
QString menuText(const QString &title)
{
    QString text = title;
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

MainWindow::MainWindow(AppContext &context, QWidget *parent)
    : QMainWindow(parent), m_context(context), m_main(*context.main())
{
    setObjectName(QStringLiteral("wnMain"));
    setWindowTitle(QStringLiteral("Korvane"));
    setAccessibleName(QStringLiteral("Korvane"));

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tvTabView"));
    m_tabs->setAccessibleName(korvane::tr("Plug-in formats"));
    m_tabs->setDocumentMode(true);
    // The format tabs, or in their place the list across formats; the details beside either.
    m_all = new AllPluginsView(context.managers(), this);
    m_stack = new QStackedWidget(this);
    m_stack->addWidget(m_tabs);
    m_stack->addWidget(m_all);
    m_details = new DetailsPane(this);
    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(QStringLiteral("spDetails"));
    m_splitter->addWidget(m_stack);
    m_splitter->addWidget(m_details);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 0);
    m_splitter->setCollapsible(0, false);
    m_splitter->setSizes({800, 300});
    m_details->hide();
    setCentralWidget(m_splitter);
    menuBar()->setAccessibleName(korvane::tr("Menu bar"));
    // Every format gets its page once; a format switched off keeps it for when it comes back.
    for (FormatManager *manager : context.managers()) {
        auto *page = new FormatTab(*manager, context.pref(), this);
        // The controller routes the command to the tab in front, which is the one clicked.
        connect(page->table(), &PluginTableView::moveToTrashRequested, this, [this, manager] {
            if (m_main.managerOf(m_main.activeType()) == manager)
                m_main.moveSelectedToTrash();
        });
        page->hide();
        m_pages << page;
        // The details follow the selection of the tab in front.
        connect(manager, &FormatManager::selectionChanged, this,
                [this, manager] { followSelection(manager); });
        connect(manager, &FormatManager::itemsReset, this,
                [this, manager] { followSelection(manager); });
        connect(manager, &FormatManager::itemsChanged, this, [this] {
            if (m_details->isVisible())
                m_details->refresh();
        });
    }
    connect(m_all, &AllPluginsView::currentChanged, this, [this](const ProductSource &source) {
        const Product *product =
            m_all->model().productAt(m_all->model().indexOf(source.item.get()));
        m_details->showPlugin(source.manager, source.item,
                              product ? product->formats() : QStringList());
    });
    connect(m_all, &AllPluginsView::detailsRequested, this, [this] { showDetails(true); });
    connect(m_all, &AllPluginsView::unusedFormatsRequested, this,
            &MainWindow::switchOffUnusedFormats);

    // The secondary windows show themselves when their controllers say so.
    m_preferences = new PreferencesWindow(*context.pref(), m_main, this);
    m_about = new AboutPanel(*context.about(), this);
    for (QWidget *window : std::initializer_list<QWidget *>{
             new LogWindow(m_main.log(), this), new GroupEditorWindow(m_main.groupRegistry(), this),
             new InfoPanel(*context.info(), this),
             new LaunchScriptPanel(*context.script(), context.formats(), this), m_preferences,
             m_about})
        closeWithKeys(*window);
    m_updates = new UpdateCheckCommand(m_main.ui(), context.settings().updateUrl,
                                       context.settings().downloadUrl, this);

    makeFileMenu();
    makeEditMenu();
    makePlugInsMenu();
    makeViewMenu();
    makeWindowMenu();
    makeHelpMenu();
    // The switch between the tabs and the list across formats, where each of them shows it.
    for (const bool inList : {false, true}) {
        auto *button = new QToolButton(this);
        button->setObjectName(inList ? QStringLiteral("tbAllPluginsBack")
                                     : QStringLiteral("tbAllPlugins"));
        button->setDefaultAction(action("miAllPlugins"));
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        if (inList)
            m_all->setSwitch(button);
        else
            m_tabs->setCornerWidget(button, Qt::TopRightCorner);
    }

    connect(&m_main, &AppController::tabsChanged, this, &MainWindow::showTabs);
    connect(&m_main, &AppController::selectedTabChanged, this, [this](int index) {
        const QSignalBlocker blocker(m_tabs);
        m_tabs->setCurrentIndex(index);
        updateMenus();
    });
    connect(m_tabs, &QTabWidget::currentChanged, this, [this](int index) {
        if (m_showingTabs)
            return;
        m_main.selectTabAtIndex(index);
        updateMenus();
        if (FormatManager *manager = frontManager())
            followSelection(manager);
    });
    connect(&m_main.groupRegistry(), &GroupRegistry::groupMenuChanged, this,
            &MainWindow::showGroupMenu);
    connect(&m_main.undoHistory(), &UndoHistory::undoTitlesChanged, this,
            &MainWindow::showUndoTitles);
    connect(&m_main.log(), &ActivityLog::logVisibilityChanged, this, &MainWindow::updateMenus);

    showTabs();
    showGroupMenu();
    showUndoTitles();
    WindowState::setMinimum(*this);
    WindowState::restore(*this, context.pref()->store());
    restoreViewState();
}

bool MainWindow::isAllPluginsInFront() const
{
    return m_stack->currentWidget() == m_all;
}

void MainWindow::showAllPlugins(bool inFront)
{
    const QSignalBlocker blocker(action("miAllPlugins"));
    action("miAllPlugins")->setChecked(inFront);
    if (inFront == isAllPluginsInFront())
        return;
    m_all->setInUse(inFront);
    m_stack->setCurrentWidget(inFront ? static_cast<QWidget *>(m_all) : m_tabs);
    updateMenus();
    if (inFront) {
        m_all->tree()->setFocus(Qt::OtherFocusReason);
        const ProductSource current = m_all->currentSource();
        m_details->showPlugin(current.manager, current.item);
    } else if (FormatManager *manager = frontManager()) {
        followSelection(manager);
    }
}

void MainWindow::showDetails(bool shown)
{
    const QSignalBlocker blocker(action("miDetails"));
    action("miDetails")->setChecked(shown);
    m_details->setVisible(shown);
    if (shown)
        m_details->refresh();
}

void MainWindow::followSelection(FormatManager *manager)
{
    if (isAllPluginsInFront() || manager != frontManager())
        return;
    m_details->showPlugin(manager, manager->itemAt(manager->table().selectedRow()));
}

QList<FormatManager *> MainWindow::shownManagers() const
{
    QList<FormatManager *> managers;
    for (const QString &identifier : m_main.tabIdentifiers())
        if (FormatManager *manager = m_context.manager(m_main.typeOfIdentifier(identifier)))
            managers << manager;
    return managers;
}

void MainWindow::switchOffUnusedFormats()
{
    m_all->model().refresh();
    UnusedFormatsDialog dialog(m_all->model().products(), this);
    dialog.exec();
}

void MainWindow::restoreViewState()
{
    PreferenceStore *store = m_context.pref()->store();
    if (!store)
        return;
    const QByteArray split = store->value(PreferenceKeys::DetailsPaneSplit).toByteArray();
    if (!split.isEmpty())
        m_splitter->restoreState(split);
    // The list's columns: order, widths and the sort, which the model makes itself.
    QHeaderView *header = m_all->tree()->header();
    if (const QByteArray columns = store->value(PreferenceKeys::AllPluginsColumns).toByteArray();
        !columns.isEmpty() && header->restoreState(columns))
        m_all->tree()->sortByColumn(header->sortIndicatorSection(), header->sortIndicatorOrder());
    showDetails(store->boolValue(PreferenceKeys::DetailsPaneShown));
    showAllPlugins(store->boolValue(PreferenceKeys::AllPluginsInFront));
}

MainWindow::~MainWindow() = default;

FormatTab *MainWindow::frontPage() const
{
    if (isAllPluginsInFront())
        return nullptr;
    return qobject_cast<FormatTab *>(m_tabs->currentWidget());
}

QAction *MainWindow::action(const char *name) const
{
    return findChild<QAction *>(QLatin1String(name));
}

void MainWindow::startWhenRunning()
{
    QTimer::singleShot(0, this, [this] {
        m_main.start();
        if (m_context.pref()->checksForUpdatesAtStartup())
            m_updates->runAtStartup();
    });
}

void MainWindow::saveState()
{
    WindowState::save(*this, m_context.pref()->store());
    if (PreferenceStore *store = m_context.pref()->store()) {
        QList<QPair<QString, QVariant>> values;
        const auto keep = [&](const QString &key, const QVariant &value) {
            if (store->value(key) != value)
                values.append({key, value});
        };
        keep(PreferenceKeys::DetailsPaneShown, !m_details->isHidden());
        keep(PreferenceKeys::DetailsPaneSplit, m_splitter->saveState());
        keep(PreferenceKeys::AllPluginsInFront, isAllPluginsInFront());
        keep(PreferenceKeys::AllPluginsColumns, m_all->tree()->header()->saveState());
        if (!values.isEmpty())
            store->setValues(values);
    }
    m_main.saveState();
}

void MainWindow::shutDown()
{
    if (m_shutDown)
        return;
    m_shutDown = true;
    saveState();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!m_shutDown && !m_main.settleUnsavedWork()) {
        event->ignore();
        return;
    }
    shutDown();
    event->accept();
    emit closed();
}

QAction *MainWindow::addItem(QMenu *menu, const char *name, const QString &text,
                             const QKeySequence &shortcut, const std::function<void()> &run)
{
    QAction *item = menu->addAction(text);
    item->setObjectName(QLatin1String(name));
    item->setShortcut(shortcut);
    connect(item, &QAction::triggered, this, run);
    return item;
}

QAction *MainWindow::addItem(QMenu *menu, const char *name, const QString &text,
                             const std::function<void()> &run)
{
    return addItem(menu, name, text, QKeySequence(), run);
}

void MainWindow::makeFileMenu()
{
    QMenu *menu = menuBar()->addMenu(korvane::tr("&File"));
    addItem(menu, "miNew", korvane::tr("New"), QKeySequence::New, [this] { m_main.newSet(); });
    addItem(menu, "miOpen", korvane::tr("Open..."), QKeySequence::Open,
            [this] { m_main.openSet(); });
    addItem(menu, "miSave", korvane::tr("Save"), QKeySequence::Save, [this] { m_main.saveSet(); });
    addItem(menu, "miSaveAs", korvane::tr("Save As..."), QKeySequence::SaveAs,
            [this] { m_main.saveSetAs(); });
    menu->addSeparator();
    addItem(menu, "miLaunchScript", korvane::tr("Launch Script..."),
            [this] { m_context.script()->openWindow(); });
    menu->addSeparator();
    addItem(menu, "miQuit", korvane::tr("&Quit"), QKeySequence::Quit, [this] { close(); });
}

void MainWindow::makeEditMenu()
{
    QMenu *menu = menuBar()->addMenu(korvane::tr("&Edit"));
    addItem(menu, "miUndo", korvane::tr("Undo"), QKeySequence::Undo,
            [this] { m_main.undoHistory().undo(); });
    addItem(menu, "miRedo", korvane::tr("Redo"), QKeySequence::Redo,
            [this] { m_main.undoHistory().redo(); });
    menu->addSeparator();
    addItem(menu, "miDelete", korvane::tr("Delete..."), QKeySequence::Delete,
            [this] { m_main.moveSelectedToTrash(); });
    menu->addSeparator();
    addItem(menu, "miFind", korvane::tr("Find"), QKeySequence::Find, [this] {
        if (isAllPluginsInFront())
            m_all->focusSearch();
        else if (FormatTab *page = frontPage())
            page->focusSearch();
    });
}

void MainWindow::makePlugInsMenu()
{
    QMenu *menu = menuBar()->addMenu(korvane::tr("&Plug-Ins"));
    AppController &main = m_main;
    // Each acts on the tab in front and on the rows it shows (BulkMarks).
    const auto bulk = [this](bool active, bool selectedOnly) {
        return [this, active, selectedOnly] {
            // In the list across formats a product's row stands for all of its plug-ins.
            if (isAllPluginsInFront()) {
                AllPluginsModel::mark(
                    selectedOnly ? m_all->selectedSources() : m_all->shownSources(), active);
                return;
            }
            FormatTab *page = frontPage();
            if (!page)
                return;
            if (selectedOnly)
                BulkMarks::selected(page->table()->manager(), active);
            else
                BulkMarks::all(page->table()->manager(), page->table()->bulkView(), active);
        };
    };
    addItem(menu, "miAllOn", korvane::tr("All On"), bulk(true, false));
    addItem(menu, "miAllOff", korvane::tr("All Off"), bulk(false, false));
    // The groups by name, never "the group of whatever row is selected".
    for (const bool active : {true, false}) {
        QMenu *groups = menu->addMenu(active ? korvane::tr("Group On") : korvane::tr("Group Off"));
        groups->setObjectName(active ? QStringLiteral("menuGroupOn")
                                     : QStringLiteral("menuGroupOff"));
        connect(groups, &QMenu::aboutToShow, this, [this, groups, active] {
            groups->clear();
            FormatTab *page = frontPage();
            const QStringList names =
                page ? BulkMarks::groupsInUse(page->table()->manager()) : QStringList();
            for (const QString &name : names) {
                QAction *item =
                    groups->addAction(QString(name).replace(u'&', QStringLiteral("&&")));
                connect(item, &QAction::triggered, this, [this, name, active] {
                    if (FormatTab *front = frontPage())
                        BulkMarks::group(front->table()->manager(), front->table()->bulkView(),
                                         name, active);
                });
            }
            if (names.isEmpty())
                groups->addAction(korvane::tr("No plug-in is in a group"))->setEnabled(false);
        });
    }
    addItem(menu, "miSelectedOn", korvane::tr("Selected On"), bulk(true, true));
    addItem(menu, "miSelectedOff", korvane::tr("Selected Off"), bulk(false, true));
    m_groupMenu = menu->addMenu(korvane::tr("Set Group"));
    m_groupMenu->setObjectName(QStringLiteral("menuGroups"));
    addItem(m_groupMenu, "miGroupNone", korvane::tr("none"),
            [&main] { main.setGroup(QStringLiteral("none")); }); // the core knows it by this title
    menu->addSeparator();
    addItem(menu, "miPPCOn", korvane::tr("PowerPC On"), [&main] { main.setPPCActive(); });
    addItem(menu, "miPPCOff", korvane::tr("PowerPC Off"), [&main] { main.setPPCInactive(); });
    addItem(menu, "miIntelOn", korvane::tr("Intel On"), [&main] { main.setIntelActive(); });
    addItem(menu, "miIntelOff", korvane::tr("Intel Off"), [&main] { main.setIntelInactive(); });
    addItem(menu, "miUBOn", korvane::tr("Universal On"), [&main] { main.setUBActive(); });
    addItem(menu, "miUBOff", korvane::tr("Universal Off"), [&main] { main.setUBInactive(); });
    addItem(menu, "miIntel64On", korvane::tr("64-bit Intel (x86_64) On"),
            [&main] { main.setIntel64Active(); });
    addItem(menu, "miIntel64Off", korvane::tr("64-bit Intel (x86_64) Off"),
            [&main] { main.setIntel64Inactive(); });
    addItem(menu, "miArm64On", korvane::tr("Apple Silicon (arm64) On"),
            [&main] { main.setAppleSiliconActive(); });
    addItem(menu, "miArm64Off", korvane::tr("Apple Silicon (arm64) Off"),
            [&main] { main.setAppleSiliconInactive(); });
    menu->addSeparator();
    // These have no routing of their own in the controller: they go where its active type says.
    auto front = [this](void (Maintenance::*command)()) {
        return [this, command] {
            if (FormatManager *manager = frontManager())
                (manager->maintenance().*command)();
        };
    };
    addItem(menu, "miRescan", korvane::tr("Rescan"), QKeySequence::Refresh, [this] {
        // A rescan reads the disk again: marks and set edits would go without a word. The list
        // across formats reads every format it shows.
        const QList<FormatManager *> managers =
            isAllPluginsInFront() ? shownManagers() : QList<FormatManager *>{frontManager()};
        for (FormatManager *manager : managers)
            if (manager && UnsavedWork::settle(*manager))
                manager->rescan();
    });
    addItem(menu, "miInfo", korvane::tr("Info"), [this] {
        if (isAllPluginsInFront())
            showDetails(true);
        else if (FormatManager *manager = frontManager())
            manager->maintenance().requestInfo();
    });
    addItem(menu, "miDuplicates", korvane::tr("Duplicates"), [this] { showDuplicates(); });
    addItem(menu, "miUnusedFormats", korvane::tr("Switch Off Unused Formats..."),
            [this] { switchOffUnusedFormats(); });
    addItem(menu, "miBackup", korvane::tr("Backup"), front(&Maintenance::backup));
    addItem(menu, "miBackupRestore", korvane::tr("Restore Backup"),
            front(&Maintenance::restoreBackup));
    menu->addSeparator();
    addItem(menu, "miSpecialEnv", korvane::tr("Examine Audio Unit Alone"),
            [this] { examineAudioUnitAlone(); });
}

void MainWindow::makeViewMenu()
{
    QMenu *menu = menuBar()->addMenu(korvane::tr("&View"));
    QAction *all = addItem(menu, "miAllPlugins", korvane::tr("All Plug-Ins"),
                           QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), [] {});
    all->setCheckable(true);
    connect(all, &QAction::toggled, this, &MainWindow::showAllPlugins);
    QAction *details = addItem(menu, "miDetails", korvane::tr("Details Pane"),
                               QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D), [] {});
    details->setCheckable(true);
    connect(details, &QAction::toggled, this, &MainWindow::showDetails);
}

void MainWindow::makeWindowMenu()
{
    QMenu *menu = menuBar()->addMenu(korvane::tr("&Window"));
    addItem(menu, "miShowLog", korvane::tr("Show Log"), [this] { m_main.log().show(); });
    addItem(menu, "miHideLog", korvane::tr("Hide Log"), [this] { m_main.log().hide(); });
    menu->addSeparator();
    addItem(menu, "miGroups", korvane::tr("Groups"),
            [this] { m_main.groupRegistry().showGroups(); });
    addItem(menu, "miPreferences", korvane::tr("&Preferences"), QKeySequence::Preferences,
            [this] { m_preferences->showPreferences(); });
}

void MainWindow::makeHelpMenu()
{
    QMenu *menu = menuBar()->addMenu(korvane::tr("&Help"));
    addItem(menu, "miCheckForUpdate", korvane::tr("Check for Update"),
            [this] { m_updates->run(); });
    addItem(menu, "miAbout", korvane::tr("About Korvane"), [this] { m_about->openAbout(); });
}

void MainWindow::showTabs()
{
    // The pages stay; only which of them the tab view holds, and in what order, changes.
    m_showingTabs = true;
    while (m_tabs->count() > 0)
        m_tabs->removeTab(0);
    const QStringList identifiers = m_main.tabIdentifiers();
    for (int index = 0; index < identifiers.size(); ++index) {
        FormatTab *page = m_pages.value(m_main.typeOfIdentifier(identifiers.at(index)));
        if (page)
            m_tabs->addTab(page, m_main.labelAt(index));
    }
    m_tabs->setCurrentIndex(m_main.selectedTabIndex());
    m_showingTabs = false;
    m_all->setManagers(shownManagers());
    updateMenus();
}

void MainWindow::showGroupMenu()
{
    qDeleteAll(m_groupItems);
    m_groupItems.clear();
    AppController &main = m_main;
    for (const QString &title : m_main.groupRegistry().groupMenuTitles()) {
        QAction *item = m_groupMenu->addAction(menuText(title));
        connect(item, &QAction::triggered, this, [&main, title] { main.setGroup(title); });
        m_groupItems << item;
    }
}

void MainWindow::showUndoTitles()
{
    // Before the first edit the core has no title yet: the plain words stand.
    const QString undo = m_main.undoHistory().undoTitle();
    const QString redo = m_main.undoHistory().redoTitle();
    action("miUndo")->setText(undo.isEmpty() ? korvane::tr("Undo") : menuText(undo));
    action("miRedo")->setText(redo.isEmpty() ? korvane::tr("Redo") : menuText(redo));
}

void MainWindow::updateMenus()
{
    action("miShowLog")->setEnabled(m_main.isMenuItemEnabled(AppController::MenuItem::ShowLog));
    // The commands of one format's set, groups or files would act on a tab nobody sees while the
    // list across formats is in front.
    const bool oneFormat = !isAllPluginsInFront();
    for (const char *name :
         {"miNew", "miOpen", "miSave", "miSaveAs", "miDelete", "miDuplicates", "miBackup",
          "miBackupRestore", "miPPCOn", "miPPCOff", "miIntelOn", "miIntelOff", "miUBOn", "miUBOff"})
        action(name)->setEnabled(oneFormat);
    for (const char *name : {"menuGroupOn", "menuGroupOff", "menuGroups"})
        if (auto *menu = findChild<QMenu *>(QLatin1String(name)))
            menu->setEnabled(oneFormat);
    // Only an Audio Unit can be examined alone.
    action("miSpecialEnv")
        ->setEnabled(oneFormat && m_main.tabCount() > 0 && m_main.activeType() == TypeAU
                     && m_context.manager(TypeAU) != nullptr);
}

FormatManager *MainWindow::frontManager() const
{
    return m_main.managerOf(m_main.activeType());
}

void MainWindow::examineAudioUnitAlone()
{
    FormatManager *au = m_context.manager(TypeAU);
    if (!au || m_main.activeType() != TypeAU)
        return;
    const PluginPtr item = au->itemAt(au->table().selectedRow());
    if (!item) {
        Alert alert;
        alert.messageText = korvane::tr("Examine Audio Unit Alone");
        alert.informativeText = korvane::tr("Please select a AudioUnit Plug-In");
        alert.buttons = {korvane::tr("Ok")};
        m_main.ui().runAlert(alert);
        return;
    }
    // The folders are put back at once: no plug-in stays moved while the window goes on, where a
    // rescan or an apply would take the emptied folders for the truth.
    m_main.log().show();
    AudioUnitSolo solo(*au);
    solo.begin(item);
    solo.end();
}

void MainWindow::showDuplicates()
{
    FormatManager *manager = frontManager();
    if (!manager)
        return;
    manager->maintenance().reportDuplicates();
    auto *report = new DuplicatesDialog(
        *manager,
        DuplicateReport::find(manager->plugins(),
                              manager->locations().allFolderPaths(manager->traits())),
        this);
    report->setAttribute(Qt::WA_DeleteOnClose);
    report->show();
}

} // namespace korvane
