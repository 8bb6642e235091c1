#include "gui/dialogs/DuplicatesDialog.h"

#include "core/Texts.h"
#include "gui/windows/WindowKeys.h"
#include "library/FormatManager.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace korvane {

namespace {

constexpr int CopyRole = Qt::UserRole + 1; // the copy's index in m_copies; none on a name's row

} // namespace

DuplicatesDialog::DuplicatesDialog(FormatManager &manager,
                                   const QList<DuplicateReport::Name> &names, QWidget *parent)
    : QDialog(parent), m_manager(&manager), m_list(new QTreeWidget(this))
{
    setWindowTitle(korvane::tr("Duplicates"));
    auto *message = new QLabel(
        names.isEmpty() ? korvane::tr("No plug-in is installed more than once.")
                        : korvane::tr("Plug-ins installed more than once: %1").arg(names.size()),
        this);
    message->setTextFormat(Qt::PlainText);

    m_list->setHeaderLabels({korvane::tr("Name"), korvane::tr("State"), korvane::tr("Version"),
                             korvane::tr("Location")});
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setAccessibleName(korvane::tr("Installed copies"));
    m_list->setRootIsDecorated(true);
    // A folder's end tells the copies apart more than its start does.
    m_list->setTextElideMode(Qt::ElideMiddle);
    message->setBuddy(m_list);
    // Names, versions and folders come from the disk: item texts are plain text.
    for (const DuplicateReport::Name &name : names) {
        auto *top = new QTreeWidgetItem(m_list, {name.name});
        top->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        for (const DuplicateReport::Copy &copy : name.copies) {
            auto *row = new QTreeWidgetItem(
                top, {QString(), copy.active ? korvane::tr("On") : korvane::tr("Off"), copy.version,
                      copy.folder});
            row->setToolTip(3, copy.folder);
            row->setData(0, CopyRole, int(m_copies.size()));
            m_copies << copy.item;
        }
    }
    m_list->expandAll();
    for (int column = 0; column < 3; ++column)
        m_list->resizeColumnToContents(column);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *select =
        buttons->addButton(korvane::tr("Select in Table"), QDialogButtonBox::ActionRole);
    QPushButton *close = buttons->addButton(QDialogButtonBox::Close);
    select->setObjectName(QStringLiteral("selectInTable"));
    select->setEnabled(!m_copies.isEmpty());
    select->setDefault(!m_copies.isEmpty());
    connect(select, &QPushButton::clicked, this, &DuplicatesDialog::selectInTable);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    closeWithKeys(*this);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(message);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
    resize(720, 360);
}

QList<PluginPtr> DuplicatesDialog::chosenCopies() const
{
    QList<PluginPtr> chosen;
    const auto add = [&](const QTreeWidgetItem *row) {
        const QVariant index = row->data(0, CopyRole);
        if (index.isValid() && !chosen.contains(m_copies.at(index.toInt())))
            chosen << m_copies.at(index.toInt());
    };
    // A name's row chosen stands for all its copies.
    for (const QTreeWidgetItem *row : m_list->selectedItems()) {
        add(row);
        for (int i = 0; i < row->childCount(); ++i)
            add(row->child(i));
    }
    return chosen.isEmpty() ? m_copies : chosen;
}

void DuplicatesDialog::selectInTable()
{
    if (!m_manager)
        return;
    // A rescan since the report made new items: the copies no longer in the list are passed by.
    QList<PluginPtr> present;
    for (const PluginPtr &copy : chosenCopies())
        if (m_manager->rowOf(copy) >= 0)
            present << copy;
    m_manager->table().selectItems(present);
}

} // namespace korvane
