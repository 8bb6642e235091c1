#pragma once

#include "app/PreferenceStore.h"
#include "core/RunParts.h"
#include "library/FormatSettings.h"

#include <QList>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

namespace korvane {

class DataFiles;
class FormatTable;
namespace PreferenceKeys {
enum class FormatKey;
}
struct Format;

// One format's page of the preferences window, as the store holds it once storeForm ran.
struct PreferencesPage {
    QString defaultSet;
    bool activateAfterLoading = false;
    bool on = false;
    bool showContent = false;
    bool moveContent = false;
    bool scanSubfolders = false; // not shown for Audio Units
    bool typeColumn = false;     // the Type (architecture) column shown
};

// The state of the preferences window, which storeForm copies into the store.
struct PreferencesForm {
    bool checkForUpdates = false;
    QList<PreferencesPage> pages; // by type index
    int selectedTab = 0;          // tab position: 1 AU, 2 RTAS, 3 MAS, 4 VST, then added formats
};

// The preferences: the store, first-launch seeding, the typed queries, and the window's form.
class Preferences : public QObject, public FormatSettings {
    Q_OBJECT
public:
    // Runs seedDefaults; every write goes through dataFiles.
    Preferences(const RunParts &run, DataFiles &dataFiles);

    void seedDefaults();
    // Whether a format's tab is on in freshly seeded preferences.
    bool isOnByDefault(const Format &format) const;
    // loadForm, then asks for each format's architecture column once.
    void prepareWindow();
    // The form from the store, and nothing else: a window shown again reads the file afresh
    // without adding columns.
    void loadForm();
    void storeForm();
    bool closeWindow(); // stores the form; true: the window may close
    // The set-document chooser of the page in front: asks, then chooseDefaultSet(path); the
    // form is stored either way.
    void chooseDefaultSet();
    void chooseDefaultSet(const QString &path);

    std::optional<QString> defaultSet(int type) const; // nullopt for others
    void setDefaultSet(int type, const QString &set);
    bool appliesSetAfterLoading(int type) const override;
    bool isFormatOn(int type) const;
    bool showsContent(int type) const override;
    bool movesContent(int type) const override;
    bool scansSubfolders(int type) const override;
    int defaultType() const;
    void setDefaultType(int type);
    int selectedTab() const { return form.selectedTab; }
    bool checksForUpdatesAtStartup() const;

    PreferenceStore *store() { return m_store.get(); }
    PreferencesForm form;

signals:
    // Loading the window hands each format's Type preference to the controller's
    // showArchitectureColumn.
    void architectureColumnRequested(int type, bool show);

private:
    // A format's key, or nothing for a type outside the table.
    std::optional<QString> key(int type, PreferenceKeys::FormatKey name) const;
    bool boolForType(int type, PreferenceKeys::FormatKey name) const;

    RunParts m_run;
    const FormatTable &m_formats;
    std::unique_ptr<PreferenceStore> m_store;
};

} // namespace korvane
