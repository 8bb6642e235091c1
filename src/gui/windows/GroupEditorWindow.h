#pragma once

#include <QWidget>

class QPushButton;
class QTableWidget;
class QTableWidgetItem;

namespace korvane {

class GroupRegistry;

// The group editor: the group registry from its first real group on, one editable row per group,
// with Add and Delete. Every change goes to the registry at once, so the Groups submenu and the
// tables' group lists follow; the registry file is written at quit.
class GroupEditorWindow : public QWidget {
    Q_OBJECT
public:
    explicit GroupEditorWindow(GroupRegistry &groups, QWidget *parent = nullptr);

    void showGroups(); // brings the window to the front
    QTableWidget *table() const { return m_table; }

private:
    void reload();
    void rename(QTableWidgetItem *item);
    void add();
    void remove();

    GroupRegistry &m_groups;
    QTableWidget *m_table = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_delete = nullptr;
    bool m_reloading = false;
    bool m_renaming = false;
};

} // namespace korvane
