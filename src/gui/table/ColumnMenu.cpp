#include "gui/table/ColumnMenu.h"

#include "core/Texts.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"
#include "library/TableColumns.h"

#include <QHeaderView>
#include <QMenu>

namespace korvane {

void ColumnMenu::attach(PluginTableView &table)
{
    QHeaderView *header = table.horizontalHeader();
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(
        header, &QWidget::customContextMenuRequested, &table, [&table, header](const QPoint &pos) {
            const PluginTableModel &model = table.tableModel();
            auto *menu = new QMenu(&table);
            menu->setObjectName(QStringLiteral("menuColumns"));
            menu->setAttribute(Qt::WA_DeleteOnClose);
            for (int visual = 0; visual < header->count(); ++visual) {
                const int logical = header->logicalIndex(visual);
                QAction *item =
                    menu->addAction(model.headerData(logical, Qt::Horizontal).toString());
                item->setCheckable(true);
                item->setChecked(!header->isSectionHidden(logical));
                // Without the name no row could be told from another.
                item->setEnabled(model.identifier(logical) != TableColumn::Name);
                QObject::connect(item, &QAction::toggled, header, [header, logical](bool on) {
                    header->setSectionHidden(logical, !on);
                });
            }
            const int clicked = header->logicalIndexAt(pos);
            if (clicked >= 0) {
                menu->addSeparator();
                const int at = header->visualIndex(clicked);
                QAction *left = menu->addAction(korvane::tr("Move Left"));
                left->setEnabled(at > 0);
                QObject::connect(left, &QAction::triggered, header,
                                 [header, at] { header->moveSection(at, at - 1); });
                QAction *right = menu->addAction(korvane::tr("Move Right"));
                right->setEnabled(at + 1 < header->count());
                QObject::connect(right, &QAction::triggered, header,
                                 [header, at] { header->moveSection(at, at + 1); });
            }
            menu->popup(header->mapToGlobal(pos));
        });
}

} // namespace korvane
