#pragma once

#include "app/AppServices.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

class MyPrefObj;
class FormatManager;

// The application controller: start-up and shut-down, the tab of each format in the main window,
// and the routing of every plug-in command to the manager whose tab is in front. The registries,
// log and undo it inherits from AppServices; the installed MyMainObj is also the installed
// AppServices, so lower layers reach the same object.
//
// The tab view is kept as a model: the ordered identifiers of the tabs present, their labels and
// the selected index. The GUI shows one page per format and keeps every page alive itself; the
// kept-view flags say which formats' pages have been set aside by a removal.
class MyMainObj : public AppServices {
    Q_OBJECT
public:
    // Menu items whose state validateMenuItem decides.
    enum class MenuItem { ShowLog, HideLog, Undo, Redo, Delete, Other };
    enum class Window { Log, Other };

    explicit MyMainObj(const RunParts &parts); // the registries (AppServices)
    ~MyMainObj() override;

    static MyMainObj *getMainObj(); // the installed controller
    // Installs into both slots, so getMainObj() here and below the shell answer the same object.
    static void install(MyMainObj *main);

    // The preferences and one manager per format, by type index, once AppContext has made them;
    // the preferences window's architecture-column requests go to showPlattform.
    void setControllers(MyPrefObj *pref, const QList<FormatManager *> &managers);
    FormatManager *managerOf(int type) const; // nullptr outside the table
    const QList<FormatManager *> &managers() const { return m_managers; }

    // --- Lifecycle -----------------------------------------------------------------------------
    // The front end calls these where the platform would notify: once its event loop runs, and
    // before it quits. Nothing subscribes on its own, so the command-line tool never saves by
    // accident.
    void awakeFromNib(); // initTabView, then the group submenu
    void applicationDidFinishLaunching();
    void applicationWillTerminate();

    // --- Tabs ----------------------------------------------------------------------------------
    QString tabIdentifier(int type) const;                 // "tabAU" ...; empty for others
    QString tabLabel(int type) const;                      // "AudioUnits" ...; empty for others
    int typeOfIdentifier(const QString &identifier) const; // -1 for none

    void initTabView();
    void setTabView(int state); // the On check box of the preferences tab in front
    int getActiveType() const override;
    void setActiveType(int type) override;

    QStringList tabIdentifiers() const;
    QString labelAt(int index) const;
    int tabCount() const { return int(m_tabs.size()); }
    int selectedTabIndex() const { return m_selected; }
    void selectTabAtIndex(int index); // the user clicked a tab
    bool hasKeptView(int type) const;

    // --- Commands routed by the selected tab's identifier ----------------------------------------
    void newButton();
    void open();
    void save();
    void saveAs();

    // --- Commands routed by getActiveType ------------------------------------------------------
    void deleteItem(); // asks first; only "move to trash" continues
    void setAllActive();
    void setAllInactive();
    void setGroupActive();
    void setGroupInactive();
    void setSelectedActive();
    void setSelectedInactive();
    void setGroup(const QString &title);
    void setArchitectureActive(int plattform, bool active);
    void setPPCActive() { setArchitectureActive(1, true); }
    void setPPCInactive() { setArchitectureActive(1, false); }
    void setIntelActive() { setArchitectureActive(2, true); }
    void setIntelInactive() { setArchitectureActive(2, false); }
    void setUBActive() { setArchitectureActive(3, true); }
    void setUBInactive() { setArchitectureActive(3, false); }

    // Routed by the type given, not by the tab in front.
    void showPlattform(int type, bool show);

    void functionNotImplemented(const QString &title);
    bool validateMenuItem(MenuItem item) const;
    void windowWillClose(Window window);

    void checkForUpdate();

signals:
    void tabsChanged();
    void selectedTabChanged(int index);

private:
    struct TabItem {
        QString identifier;
        QString label;
    };

    int indexOfIdentifier(const QString &identifier) const;
    void removeTabAt(int index);
    void insertTab(int index, int type);
    void keepView(int type);
    void selectIndex(int index);
    FormatManager *managerByIdentifier() const;
    FormatManager *activeManager() const;

    MyPrefObj *m_pref = nullptr;
    QList<FormatManager *> m_managers;
    QList<TabItem> m_tabs;
    int m_selected = 0;
    // tabAUView, tabRTASView, tabMASView, tabVSTView, ...: set aside once, kept for the process.
    QList<bool> m_keptView;
};

} // namespace korvane
