#pragma once

#include <QWidget>

class QComboBox;
class QLineEdit;
class QLabel;
class QPushButton;

namespace korvane {

class PluginTableView;
class QuickFilterBar;
class StatusLine;
class FormatManager;
class Preferences;

// The page of one format in the main window: the set bar (the saved sets, the current set's name,
// New, Open, Save, Save As and Apply), the status line, the quick filters, a search field and the
// plug-in table. Every control only
// hands its action to the format's manager and shows what the manager announces.
class FormatTab : public QWidget {
    Q_OBJECT
public:
    FormatTab(FormatManager &manager, Preferences *prefs, QWidget *parent = nullptr);

    FormatManager &manager() const { return m_manager; }
    PluginTableView *table() const { return m_table; }
    QLineEdit *searchField() const { return m_search; }
    QComboBox *setList() const { return m_sets; }
    QPushButton *applyButton() const { return m_apply; }
    // The counts and what Apply will do.
    StatusLine *statusLine() const { return m_status; }
    QuickFilterBar *filters() const { return m_filters; }
    QComboBox *stateFilter() const; // on and off, on, off
    QComboBox *placeFilter() const; // system and user, system, user

    void focusSearch();
    // How the set pop-up shows an entry of the sets list, and the set bar a set's name.
    static QString setTitle(const QString &entry);
    QString shownSetName(const QString &name) const;

private:
    QPushButton *makeButton(const QString &name, const QString &text);
    void showSets();

    FormatManager &m_manager;
    QComboBox *m_sets = nullptr;
    QLineEdit *m_name = nullptr;
    QPushButton *m_apply = nullptr;
    StatusLine *m_status = nullptr;
    QuickFilterBar *m_filters = nullptr;
    QLineEdit *m_search = nullptr;
    PluginTableView *m_table = nullptr;
};

} // namespace korvane
