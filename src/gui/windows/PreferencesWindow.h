#pragma once

#include "app/Preferences.h"

#include <QList>
#include <QWidget>

class QCheckBox;
class QLineEdit;
class QTabWidget;

namespace korvane {

struct Format;
class AppController;

// The preferences window: a first page with the update check box, then one page per format at
// position type index + 1. Each control stands for one of Preferences's controls and is stored the
// moment it changes; a format's On box also puts its tab into the main window or takes it out.
// Closing stores nothing more: it could only put back what another writer changed meanwhile.
class PreferencesWindow : public QWidget {
    Q_OBJECT
public:
    PreferencesWindow(Preferences &prefs, AppController &main, QWidget *parent = nullptr);

    // Brings the window to the front with its controls read from the file afresh.
    void showPreferences();
    QTabWidget *pages() const { return m_tabs; }

protected:
    void showEvent(QShowEvent *event) override;

private:
    struct FormatPage {
        QLineEdit *defaultSet = nullptr;
        QCheckBox *activateAfterLoading = nullptr;
        QCheckBox *on = nullptr;
        QCheckBox *showContent = nullptr;
        QCheckBox *moveContent = nullptr;
        QCheckBox *scanSubfolders = nullptr; // none for formats that never recurse
        QCheckBox *type = nullptr;
    };

    QWidget *makeGeneralPage();
    QWidget *makeFormatPage(const Format &format);
    // A check box standing for one control of the format; a click sets the control and stores it.
    QCheckBox *makeBox(const Format &format, const char *name, const QString &text,
                       bool PreferencesPage::*control);
    void loadControls(); // the file into Preferences's controls, then into the widgets
    void showControls();
    void store();
    void switchFormat(int type);
    void showTypeColumn(int type);
    void chooseDefaultSet(int type);
    void editDefaultSet(int type);

    Preferences &m_prefs;
    AppController &m_main;
    QTabWidget *m_tabs = nullptr;
    QCheckBox *m_checkForUpdates = nullptr;
    QList<FormatPage> m_pages; // by type index
};

} // namespace korvane
