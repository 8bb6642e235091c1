#pragma once

#include "panels/UserDefaults.h"

#include <QList>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

namespace korvane {

class AppServices;
class FormatTable;

// The state of the preferences window's controls, which updatePrefs copies into the store.
struct PrefTypeControls {
    QString defaultSet;
    bool showMessage = false;
    bool activateAfterLoading = false;
    bool on = false;
    bool showContent = false;
    bool moveContent = false;
    bool scanSubfolders = false; // not shown for Audio Units
    bool type = false;
};

struct PrefControls {
    bool checkForUpdates = false;
    QList<PrefTypeControls> types; // by type index
    int selectedTab = 0;           // tab position: 1 AU, 2 RTAS, 3 MAS, 4 VST, then added formats
};

// The preferences controller: the defaults store, first-launch seeding and the typed queries.
class MyPrefObj : public QObject {
    Q_OBJECT
public:
    explicit MyPrefObj(AppServices &services); // runs checkDefaults
    static MyPrefObj *getPref();

    QString keyPrefix(int type) const; // "AU", "RTAS", "MAS", "VST"; empty for others

    void checkDefaults();
    void awakeFromNib(); // loadControls, then asks for each type's architecture column
    // The controls from the store, and nothing else: a window shown again reads the file afresh
    // without adding columns.
    void loadControls();
    void showPreferences();
    bool isWindowVisible() const { return m_visible; }
    bool windowShouldClose();
    void updatePrefs();
    void setDefault(); // the set-document chooser of a tab
    void openPanelDidEnd(int returnCode, const QString &path);

    std::optional<QString> getDefaultSet(int type) const; // nullopt for others
    void setDefaultSet(int type, const QString &set);
    bool activateDefaultSet(int type) const;
    bool isTypeActive(int type) const;
    bool showType(int type) const;
    bool showContent(int type) const;
    bool moveContent(int type) const;
    bool scanSubpaths(int type) const;
    int getDefaultType() const;
    void setDefaultType(int type);
    int getSelectedTab() const { return controls.selectedTab; }

    UserDefaults *defaults() { return prefs.get(); }
    PrefControls controls;

signals:
    // Loading the window hands each type's Type preference to the controller's
    // showArchitectureColumn.
    void showPlattformRequested(int type, bool show);

private:
    // A format's key, or nothing for a type outside the table.
    std::optional<QString> key(int type, const char *name) const;
    bool boolForType(int type, const char *name) const;

    AppServices &m_services;
    const FormatTable &m_formats;
    std::unique_ptr<UserDefaults> prefs;
    bool m_visible = false;
};

} // namespace korvane
