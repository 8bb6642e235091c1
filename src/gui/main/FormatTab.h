#pragma once

#include <QWidget>

class QComboBox;
class QLineEdit;
class QLabel;
class QPushButton;

namespace korvane {

class PluginTableView;
class FormatManager;

// The page of one format in the main window: the set bar (the saved sets, the current set's name,
// New, Open, Save, Save As and Apply), a search field and the plug-in table. Every control only
// hands its action to the format's manager and shows what the manager announces.
class FormatTab : public QWidget {
    Q_OBJECT
public:
    explicit FormatTab(FormatManager &manager, QWidget *parent = nullptr);

    FormatManager &manager() const { return m_manager; }
    PluginTableView *table() const { return m_table; }
    QLineEdit *searchField() const { return m_search; }
    QComboBox *setList() const { return m_sets; }
    QPushButton *applyButton() const { return m_apply; }
    QLabel *changesLine() const { return m_status; } // what Apply will do

    void focusSearch();

private:
    QPushButton *makeButton(const QString &name, const QString &text);
    void showSets();
    void showChanges();

    FormatManager &m_manager;
    QComboBox *m_sets = nullptr;
    QLineEdit *m_name = nullptr;
    QPushButton *m_apply = nullptr;
    QLabel *m_status = nullptr;
    QLineEdit *m_search = nullptr;
    PluginTableView *m_table = nullptr;
};

} // namespace korvane
