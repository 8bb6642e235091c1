#pragma once

#include "core/AppServices.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

class Preferences;
class FormatManager;

// The application controller: start-up and shut-down, the tab of each format in the main window,
// and the routing of every plug-in command to the manager whose tab is in front. It owns the
// run's shared parts as an AppServices (the registries, log, undo history and data files) and
// hands each lower class the parts it uses.
//
// The tab view is kept as a model: the ordered identifiers of the tabs present, their labels and
// the selected index. The GUI shows one page per format and keeps every page alive itself.
class AppController : public AppServices {
    Q_OBJECT
public:
    // Menu items whose state isMenuItemEnabled decides.
    enum class MenuItem { ShowLog, HideLog, Undo, Redo, Delete, Other };

    explicit AppController(const RunParts &parts); // the registries (AppServices)
    ~AppController() override;

    // The preferences and one manager per format, by type index, once AppContext has made them;
    // the preferences window's architecture-column requests go to showArchitectureColumn.
    void setControllers(Preferences *pref, const QList<FormatManager *> &managers);
    FormatManager *managerOf(int type) const; // nullptr outside the table
    const QList<FormatManager *> &managers() const { return m_managers; }

    // --- Lifecycle -----------------------------------------------------------------------------
    // The window calls these: as it loads, once its event loop runs, and before it quits (or the
    // session asks it to save). Nothing subscribes on its own, so the command-line tool never
    // saves by accident.
    void prepareWindow(); // initTabs, then the group submenu
    void start();         // each format switched on scanned, and its default set opened
    void saveState();     // groups, sets and the front tab written, every format alike

    // --- Tabs ----------------------------------------------------------------------------------
    QString tabIdentifier(int type) const;                 // "tabAU" ...; empty for others
    QString tabLabel(int type) const;                      // "AudioUnits" ...; empty for others
    int typeOfIdentifier(const QString &identifier) const; // -1 for none

    void initTabs();
    // The On check box of the format whose preferences page is in front: its tab goes or comes.
    void showSelectedFormatTab(bool shown);
    int activeType() const override;
    void setActiveType(int type) override;

    QStringList tabIdentifiers() const;
    QString labelAt(int index) const;
    int tabCount() const { return int(m_tabs.size()); }
    int selectedTabIndex() const { return m_selected; }
    void selectTabAtIndex(int index); // the user clicked a tab

    // --- Commands routed by the selected tab's identifier ----------------------------------------
    void newSet();
    // Before quitting: every scanned format's set edits and marks saved, applied or let go;
    // false when the person cancelled.
    bool settleUnsavedWork();
    // How many plug-ins of every format are in the group at position; the group registry asks
    // before it removes a group.
    int groupMemberCount(int position) const;
    void openSet();
    void saveSet();
    void saveSetAs();

    // --- Commands routed by activeType ---------------------------------------------------------
    void moveSelectedToTrash(); // asks first; only "move to trash" continues
    void setAllActive();
    void setAllInactive();
    void setGroupActive();
    void setGroupInactive();
    void setSelectedActive();
    void setSelectedInactive();
    void setGroup(const QString &title);
    void setArchitectureActive(int architecture, bool active);
    void setPPCActive() { setArchitectureActive(1, true); }
    void setPPCInactive() { setArchitectureActive(1, false); }
    void setIntelActive() { setArchitectureActive(2, true); }
    void setIntelInactive() { setArchitectureActive(2, false); }
    void setUBActive() { setArchitectureActive(3, true); }
    void setUBInactive() { setArchitectureActive(3, false); }
    void setIntel64Active() { setArchitectureActive(4, true); }
    void setIntel64Inactive() { setArchitectureActive(4, false); }
    void setAppleSiliconActive() { setArchitectureActive(5, true); }
    void setAppleSiliconInactive() { setArchitectureActive(5, false); }

    // Routed by the type given, not by the tab in front.
    void showArchitectureColumn(int type, bool show);

    bool isMenuItemEnabled(MenuItem item) const;

signals:
    void tabsChanged();
    void selectedTabChanged(int index);

private:
    // Members of the group removed at position have none; later groups move up by one.
    void renumberGroups(int position);
    struct TabItem {
        QString identifier;
        QString label;
    };

    int indexOfIdentifier(const QString &identifier) const;
    void removeTabAt(int index);
    void insertTab(int index, int type);
    void selectIndex(int index);
    FormatManager *managerByIdentifier() const;
    FormatManager *activeManager() const;

    Preferences *m_pref = nullptr;
    QList<FormatManager *> m_managers;
    QList<TabItem> m_tabs;
    int m_selected = 0;
};

} // namespace korvane
