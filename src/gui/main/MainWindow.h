#pragma once

#include <QKeySequence>
#include <QList>
#include <QMainWindow>
#include <functional>

class QAction;
class QMenu;
class QSplitter;
class QStackedWidget;
class QTabWidget;

namespace korvane {

class AboutPanel;
class AllPluginsView;
class AppContext;
class DetailsPane;
class FormatTab;
class AppController;
class PreferencesWindow;
class UpdateCheckCommand;
class FormatManager;

// The main window: one tab per format the controller shows, in its order, or in their place the
// list of every plug-in across those formats (View > All Plug-Ins), the details pane beside them,
// and the menus. Every plug-in command goes to the manager of the tab in front, as the controller
// routes it; the secondary windows hang off the Window and Help menus. Closing the window runs
// the controller's shut-down once.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(AppContext &context, QWidget *parent = nullptr);
    ~MainWindow() override;

    QTabWidget *tabs() const { return m_tabs; }
    FormatTab *page(int type) const { return m_pages.value(type); } // kept while its tab is out
    FormatTab *frontPage() const; // null while the all-formats view is in front
    AllPluginsView *allPlugins() const { return m_all; }
    DetailsPane *details() const { return m_details; }
    QSplitter *splitter() const { return m_splitter; }
    bool isAllPluginsInFront() const;
    void showAllPlugins(bool inFront);
    void showDetails(bool shown);
    // Switch Off Unused Formats: the dialog, modal; what it applied follows in the lists.
    void switchOffUnusedFormats();
    QAction *action(const char *name) const; // a menu item by its object name
    UpdateCheckCommand *updates() const { return m_updates; }

    // The controller's start once the event loop runs: scans and default sets.
    void startWhenRunning();
    // Groups, sets and the front tab written, as at quit; the program goes on.
    void saveState();
    // The controller's shut-down, once however many ways the program ends.
    void shutDown();

signals:
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QAction *addItem(QMenu *menu, const char *name, const QString &text,
                     const QKeySequence &shortcut, const std::function<void()> &run);
    QAction *addItem(QMenu *menu, const char *name, const QString &text,
                     const std::function<void()> &run);
    void makeFileMenu();
    void makeEditMenu();
    void makePlugInsMenu();
    void makeViewMenu();
    void makeWindowMenu();
    void makeHelpMenu();
    void showTabs();
    void showGroupMenu();
    void showUndoTitles();
    void updateMenus();
    FormatManager *frontManager() const; // by the controller's active type
    void examineAudioUnitAlone();
    QList<FormatManager *> shownManagers() const;
    void followSelection(FormatManager *manager);
    void restoreViewState();
    // The front format's duplicates in the log and in a report that selects them in the table.
    void showDuplicates();

    AppContext &m_context;
    AppController &m_main;
    QTabWidget *m_tabs = nullptr;
    QStackedWidget *m_stack = nullptr;
    QSplitter *m_splitter = nullptr;
    AllPluginsView *m_all = nullptr;
    DetailsPane *m_details = nullptr;
    QList<FormatTab *> m_pages; // by type index
    QMenu *m_groupMenu = nullptr;
    QList<QAction *> m_groupItems;
    PreferencesWindow *m_preferences = nullptr;
    AboutPanel *m_about = nullptr;
    UpdateCheckCommand *m_updates = nullptr;
    bool m_shutDown = false;
    bool m_showingTabs = false;
};

} // namespace korvane
