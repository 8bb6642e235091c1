#include "gui/windows/GroupEditorWindow.h"

#include "core/GroupRegistry.h"
#include "core/Texts.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace korvane {

GroupEditorWindow::GroupEditorWindow(GroupRegistry &groups, QWidget *parent)
    : QWidget(parent, Qt::Window), m_groups(groups)
{
    setWindowTitle(korvane::tr("Groups"));
    setAccessibleName(korvane::tr("Groups"));

    m_table = new QTableWidget(0, 1, this);
    m_table->setObjectName(QStringLiteral("tfGroup"));
    m_table->setAccessibleName(korvane::tr("Group names"));
    m_table->setHorizontalHeaderLabels({korvane::tr("Group")});
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->verticalHeader()->hide();
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                             | QAbstractItemView::AnyKeyPressed);

    m_add = new QPushButton(korvane::tr("Add"), this);
    m_add->setObjectName(QStringLiteral("pbGroupAdd"));
    m_add->setAccessibleName(korvane::tr("Add a group"));
    m_delete = new QPushButton(korvane::tr("Delete"), this);
    m_delete->setObjectName(QStringLiteral("pbGroupDel"));
    m_delete->setAccessibleName(korvane::tr("Delete the selected group"));

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_add);
    buttons->addWidget(m_delete);
    buttons->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    layout->addLayout(buttons);

    connect(m_add, &QPushButton::clicked, this, &GroupEditorWindow::add);
    connect(m_delete, &QPushButton::clicked, this, &GroupEditorWindow::remove);
    connect(m_table, &QTableWidget::itemChanged, this, &GroupEditorWindow::rename);
    connect(&groups, &GroupRegistry::groupsChanged, this, [this] {
        // A rename in place leaves the table as the person edits it.
        if (!m_renaming)
            reload();
    });
    connect(&groups, &GroupRegistry::groupEditorShown, this, &GroupEditorWindow::showGroups);
    reload();
    resize(320, 360);
}

void GroupEditorWindow::showGroups()
{
    show();
    raise();
    activateWindow();
}

void GroupEditorWindow::reload()
{
    m_reloading = true;
    const int current = m_table->currentRow();
    const int rows = m_groups.groupCount();
    m_table->setRowCount(rows);
    for (int row = 0; row < rows; ++row) {
        QTableWidgetItem *item = m_table->item(row, 0);
        if (!item) {
            item = new QTableWidgetItem;
            m_table->setItem(row, 0, item);
        }
        item->setText(m_groups.groupAt(row));
    }
    if (current >= rows)
        m_table->clearSelection();
    m_reloading = false;
}

void GroupEditorWindow::rename(QTableWidgetItem *item)
{
    if (m_reloading)
        return;
    m_renaming = true;
    m_groups.setGroupAt(item->row(), item->text());
    m_renaming = false;
}

void GroupEditorWindow::add()
{
    m_groups.addGroup();
    // The new group is named at once.
    const int row = m_table->rowCount() - 1;
    if (row < 0)
        return;
    m_table->setCurrentCell(row, 0);
    m_table->editItem(m_table->item(row, 0));
}

void GroupEditorWindow::remove()
{
    const QModelIndexList selected = m_table->selectionModel()->selectedRows();
    // Without a selection nothing goes: the registry's position 0 is no group, not a row.
    if (selected.isEmpty())
        return;
    m_groups.removeGroup(selected.first().row());
}

} // namespace korvane
