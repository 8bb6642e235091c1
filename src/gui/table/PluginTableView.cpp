#include "gui/table/PluginTableView.h"

#include "app/Preferences.h"
#include "core/PreferenceKeys.h"
#include "core/Texts.h"
#include "gui/table/ColumnMenu.h"
#include "gui/table/EmptyTableNote.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginItemDelegate.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableSource.h"
#include "gui/table/RowMenu.h"
#include "library/DropInstall.h"
#include "library/FormatManager.h"
#include "library/TableColumns.h"

#include <QClipboard>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QStyle>
#include <QUrl>
#include <algorithm>

namespace korvane {

namespace {

const QString kIdentifier = QStringLiteral("Identifier");
const QString kWidth = QStringLiteral("Width");
const QString kHidden = QStringLiteral("Hidden");
const QString kAscending = QStringLiteral("Ascending");
constexpr int MaxColumnWidth = 4000;

int defaultWidth(const QString &identifier)
{
    if (PluginTableModel::isCheckColumn(identifier))
        return 64;
    if (identifier == TableColumn::Name)
        return 280;
    if (identifier == TableColumn::Vendor || identifier == TableColumn::Package)
        return 160;
    if (identifier == TableColumn::Version || identifier == TableColumn::Format)
        return 90;
    return 140;
}

// Only a drag over the table sets a style sheet: one in place all the time draws the check boxes
// through the style sheet's style, whose empty box vanished in a dark palette.
QString gridSheet(bool highlighted)
{
    return highlighted ? QStringLiteral("QTableView { gridline-color: #2f6fdf; }") : QString();
}

QStringList localPaths(const QMimeData *data)
{
    QStringList paths;
    if (!data)
        return paths;
    for (const QUrl &url : data->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    return paths;
}

} // namespace

PluginTableView::PluginTableView(FormatManager &manager, Preferences *prefs, QWidget *parent)
    : QTableView(parent), m_manager(manager), m_prefs(prefs)
{
    // The view stops listening before the model hears of a change, so that what the selection
    // model does on the way never reaches the manager; afterwards the manager's selection is
    // shown again.
    const auto hold = [this] { m_managerChanging = true; };
    connect(&manager, &FormatManager::itemsAboutToBeReset, this, hold);
    connect(&manager, &FormatManager::itemsAboutToBeReordered, this, hold);
    connect(&manager, &FormatManager::itemAboutToBeRemoved, this, hold);
    m_model = new PluginTableModel(manager, this);
    m_proxy = new PluginFilterProxy(*m_model, this);
    connect(m_proxy, &PluginFilterProxy::filterChanged, this, &PluginTableView::selectInManager);
    const auto release = [this] {
        m_managerChanging = false;
        selectFromManager();
    };
    connect(&manager, &FormatManager::itemsReset, this, release);
    connect(&manager, &FormatManager::itemRemoved, this, release);
    connect(&manager, &FormatManager::itemsReordered, this, [this, release] {
        release();
        showSortIndicator();
        if (currentIndex().isValid())
            scrollTo(currentIndex());
    });
    connect(&manager, &FormatManager::selectionChanged, this, &PluginTableView::selectFromManager);

    const QString label = manager.traits().tabLabel;
    setObjectName(QStringLiteral("tf") + manager.traits().prefix);
    setAccessibleName(korvane::tr("Plug-ins of %1").arg(label));
    setModel(m_proxy);
    setItemDelegate(new PluginItemDelegate(manager, this));
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked | SelectedClicked | EditKeyPressed);
    setWordWrap(false);
    // One stop in the window's Tab order: the arrows move between the rows.
    setTabKeyNavigation(false);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint &pos) {
        const QModelIndex index = indexAt(pos);
        if (index.isValid() && !selectionModel()->isRowSelected(index.row()))
            selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect
                                                         | QItemSelectionModel::Rows);
        QMenu *menu = RowMenu::make(m_manager, this, [this] { emit moveToTrashRequested(); });
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(viewport()->mapToGlobal(pos));
    });
    // A double click on a cell that cannot be edited opens the info, as Enter does.
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex &index) {
        if (index.isValid() && !(index.flags() & Qt::ItemIsEditable)
            && !(index.flags() & Qt::ItemIsUserCheckable))
            m_manager.maintenance().requestInfo();
    });
    setSortingEnabled(false);
    setStyleSheet(gridSheet(false));

    // One fixed row height: nothing measures rows that are not on screen.
    QHeaderView *rows = verticalHeader();
    rows->hide();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(fontMetrics().height() + 8);

    QHeaderView *header = horizontalHeader();
    header->setAccessibleName(korvane::tr("Columns of %1").arg(label));
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setHighlightSections(false);
    header->setStretchLastSection(false);
    connect(header, &QHeaderView::sortIndicatorChanged, this, &PluginTableView::sortByHeader);
    connect(header, &QHeaderView::sectionResized, this, &PluginTableView::scheduleColumnsSave);
    // A hidden section's size reads 0: the width it had is kept for the preferences. Qt sizes
    // a section to 0 just before it marks it hidden, and never otherwise.
    connect(header, &QHeaderView::sectionResized, this, [this](int logical, int old, int now) {
        if (now == 0 && old > 0)
            m_hiddenWidths.insert(m_model->identifier(logical), old);
    });
    connect(header, &QHeaderView::sectionMoved, this, &PluginTableView::scheduleColumnsSave);

    // A column shown, hidden or rebuilt takes its place and width from the preferences again.
    const auto columnsChanging = [this] {
        if (m_saveColumns.isActive()) {
            m_saveColumns.stop();
            saveColumns();
        }
        m_restoring = true;
    };
    const auto columnsChanged = [this] {
        restoreColumns();
        showSortIndicator();
    };
    connect(m_proxy, &QAbstractItemModel::columnsAboutToBeInserted, this, columnsChanging);
    connect(m_proxy, &QAbstractItemModel::columnsAboutToBeRemoved, this, columnsChanging);
    connect(m_proxy, &QAbstractItemModel::modelAboutToBeReset, this, columnsChanging);
    connect(m_proxy, &QAbstractItemModel::columnsInserted, this, columnsChanged);
    connect(m_proxy, &QAbstractItemModel::columnsRemoved, this, columnsChanged);
    connect(m_proxy, &QAbstractItemModel::modelReset, this, columnsChanged);
    m_saveColumns.setSingleShot(true);
    m_saveColumns.setInterval(400);
    connect(&m_saveColumns, &QTimer::timeout, this, &PluginTableView::saveColumns);

    setDragEnabled(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(DragDrop);
    setDefaultDropAction(Qt::CopyAction);
    setDropIndicatorShown(false);

    ColumnMenu::attach(*this);
    restoreSort();
    new EmptyTableNote(manager, *m_proxy, viewport());

    restoreColumns();
    showSortIndicator();
    selectFromManager();
}

PluginTableView::~PluginTableView()
{
    if (m_saveColumns.isActive())
        saveColumns();
}

BulkMarks::View PluginTableView::bulkView() const
{
    BulkMarks::View view;
    const int rows = m_proxy->rowCount();
    view.shown.reserve(rows);
    for (int row = 0; row < rows; ++row)
        if (PluginPtr item = m_manager.itemAt(m_proxy->mapToSource(m_proxy->index(row, 0)).row()))
            view.shown << item;
    // A table not laid out yet counts as the screen a person would see: about thirty rows.
    const int rowHeight = std::max(1, verticalHeader()->defaultSectionSize());
    view.screenful = viewport()->height() > rowHeight ? viewport()->height() / rowHeight : 30;
    return view;
}

void PluginTableView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy) && state() != EditingState) {
        QGuiApplication::clipboard()->setText(selectedRowsText());
        return;
    }
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && event->key() == Qt::Key_Space && state() != EditingState) {
        toggleSelected();
        return;
    }
    if (plain && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        && state() != EditingState) {
        m_manager.maintenance().requestInfo();
        return;
    }
    QTableView::keyPressEvent(event);
}

QString PluginTableView::selectedRowsText() const
{
    const QHeaderView *header = horizontalHeader();
    QList<int> columns;
    for (int visual = 0; visual < header->count(); ++visual)
        if (const int logical = header->logicalIndex(visual); !header->isSectionHidden(logical))
            columns << logical;
    const auto line = [&](auto cell) {
        QStringList cells;
        for (int column : std::as_const(columns))
            cells << cell(column).simplified(); // a tab or line break in a name stays one cell
        return cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    };
    QString text =
        line([this](int column) { return m_proxy->headerData(column, Qt::Horizontal).toString(); });
    QModelIndexList rows = selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    for (const QModelIndex &row : std::as_const(rows))
        text += line([&](int column) {
            return m_proxy->index(row.row(), column).data(Qt::AccessibleTextRole).toString();
        });
    return text;
}

void PluginTableView::toggleSelected()
{
    QList<int> rows = m_manager.table().selectedRows();
    // Tabbed into, the table may have a current row and no selection: Space acts on that row.
    if (rows.isEmpty() && currentIndex().isValid())
        rows << m_proxy->mapToSource(currentIndex()).row();
    if (rows.isEmpty())
        return;
    if (rows.size() == 1) {
        // One row is the same undo step a click on its box makes.
        const PluginPtr item = m_manager.itemAt(rows.first());
        if (item)
            m_manager.marking().changeItem(item, TableColumn::Active, !item->isActive());
        return;
    }
    const PluginPtr current = m_manager.itemAt(m_manager.table().selectedRow());
    const PluginPtr lead = current ? current : m_manager.itemAt(rows.first());
    BulkMarks::selected(m_manager, !(lead && lead->isActive()));
}

void PluginTableView::setFilterText(const QString &text)
{
    m_proxy->setFilterText(text);
}

QString PluginTableView::columnsKey() const
{
    return PreferenceKeys::forFormat(m_manager.traits(), PreferenceKeys::FormatKey::TableColumns);
}

// --- Selection ---------------------------------------------------------------------------------

void PluginTableView::selectionChanged(const QItemSelection &selected,
                                       const QItemSelection &deselected)
{
    QTableView::selectionChanged(selected, deselected);
    selectInManager();
}

// The manager's selection is the rows selected here: what a filter hides leaves it.
void PluginTableView::selectInManager()
{
    if (m_syncing || m_managerChanging)
        return;
    QList<int> rows;
    const QModelIndexList indexes = selectionModel()->selectedRows();
    rows.reserve(indexes.size());
    for (const QModelIndex &index : indexes)
        rows << m_proxy->mapToSource(index).row();
    const QModelIndex current = currentIndex();
    const int last = current.isValid() && selectionModel()->isRowSelected(current.row())
                         ? m_proxy->mapToSource(current).row()
                         : -1;
    m_syncing = true;
    m_manager.table().selectRows(rows, last);
    m_syncing = false;
}

void PluginTableView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTableView::currentChanged(current, previous);
    if (m_syncing || m_managerChanging || !current.isValid())
        return;
    if (current.row() != previous.row())
        m_manager.table().setCurrentRow(m_proxy->mapToSource(current).row());
}

void PluginTableView::selectFromManager()
{
    if (m_syncing || m_managerChanging)
        return;
    const int lastColumn = m_proxy->columnCount() - 1;
    if (lastColumn < 0)
        return;
    QItemSelection selection;
    int first = -1, previous = -1;
    const auto close = [&] {
        if (first >= 0)
            selection.append(QItemSelectionRange(m_proxy->index(first, 0),
                                                 m_proxy->index(previous, lastColumn)));
    };
    // The filter keeps the manager's order, so ascending rows stay ascending and runs stay runs.
    for (int row : m_manager.table().selectedRows()) {
        const int shown = m_proxy->proxyRow(row);
        if (shown < 0)
            continue;
        if (shown != previous + 1 || first < 0) {
            close();
            first = shown;
        }
        previous = shown;
    }
    close();
    m_syncing = true;
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    const int last = m_proxy->proxyRow(m_manager.table().selectedRow());
    if (last >= 0)
        selectionModel()->setCurrentIndex(
            m_proxy->index(last, std::max(0, currentIndex().column())),
            QItemSelectionModel::NoUpdate);
    m_syncing = false;
}

// --- Sorting -----------------------------------------------------------------------------------

void PluginTableView::sortByHeader(int section, Qt::SortOrder order)
{
    if (m_syncing)
        return;
    const QString column = m_model->identifier(section);
    if (column.isEmpty())
        return;
    const bool text = !PluginTableModel::isCheckColumn(column);
    // The clicked column leads; the earlier order still breaks its ties.
    QList<SortKey> keys{{column, order == Qt::AscendingOrder, text}};
    for (const SortKey &sortKey : m_manager.table().sortKeys())
        if (sortKey.column != column)
            keys << sortKey;
    m_manager.table().sortBy(keys);
    saveSort();
}

QString PluginTableView::sortKey() const
{
    return PreferenceKeys::forFormat(m_manager.traits(), PreferenceKeys::FormatKey::TableSort);
}

void PluginTableView::saveSort()
{
    if (!m_prefs || !m_prefs->store())
        return;
    QVariantList keys;
    for (const SortKey &key : m_manager.table().sortKeys())
        keys << QVariantMap{{kIdentifier, key.column}, {kAscending, key.ascending}};
    m_prefs->store()->setValue(sortKey(), keys);
}

void PluginTableView::restoreSort()
{
    if (!m_prefs || !m_prefs->store())
        return;
    QList<SortKey> keys;
    for (const QVariant &entry : m_prefs->store()->value(sortKey()).toList()) {
        const QVariantMap key = entry.toMap();
        const QString column = key.value(kIdentifier).toString();
        // Only the columns this table knows; a file from elsewhere sorts nothing strange.
        if (m_model->columnOf(column) < 0 && column != TableColumn::Architecture)
            continue;
        keys << SortKey{column, key.value(kAscending, true).toBool(),
                        !PluginTableModel::isCheckColumn(column)};
    }
    if (!keys.isEmpty())
        m_manager.table().sortBy(keys);
}

void PluginTableView::showSortIndicator()
{
    const QList<SortKey> keys = m_manager.table().sortKeys();
    const int section = keys.isEmpty() ? -1 : m_model->columnOf(keys.first().column);
    const Qt::SortOrder order =
        keys.isEmpty() || keys.first().ascending ? Qt::AscendingOrder : Qt::DescendingOrder;
    m_syncing = true;
    horizontalHeader()->setSortIndicator(section, order);
    m_syncing = false;
}

// --- Column layout -----------------------------------------------------------------------------

bool PluginTableView::hiddenByDefault(const QString &identifier) const
{
    // Only the distribution's folders hold plug-ins a package owns.
    if (identifier != TableColumn::Package)
        return false;
    const QList<FolderPair> &pairs = m_manager.traits().pairs;
    return std::none_of(pairs.cbegin(), pairs.cend(),
                        [](const FolderPair &pair) { return pair.distributionOwned; });
}

void PluginTableView::restoreColumns()
{
    m_restoring = true;
    QHeaderView *header = horizontalHeader();
    for (int logical = 0; logical < header->count(); ++logical) {
        // A translated title can be longer than the column's usual width; room for the sort
        // arrow too.
        const QString title = m_model->headerData(logical, Qt::Horizontal).toString();
        const int fits = header->fontMetrics().horizontalAdvance(title) + 28;
        header->resizeSection(logical, std::max(defaultWidth(m_model->identifier(logical)), fits));
    }
    QList<int> stored;
    if (m_prefs && m_prefs->store()) {
        int visual = 0;
        for (const QVariant &entry : m_prefs->store()->value(columnsKey()).toList()) {
            const QVariantMap column = entry.toMap();
            const int logical = m_model->columnOf(column.value(kIdentifier).toString());
            if (logical < 0 || stored.contains(logical))
                continue;
            stored << logical;
            header->moveSection(header->visualIndex(logical), visual++);
            // Widths are saved in whatever language ran last: a longer title here still fits.
            const QString title = m_model->headerData(logical, Qt::Horizontal).toString();
            const int fits = header->fontMetrics().horizontalAdvance(title) + 28;
            const int width = column.value(kWidth).toInt();
            if (width > 0)
                header->resizeSection(logical, std::clamp(width, fits, MaxColumnWidth));
            header->setSectionHidden(logical, column.value(kHidden).toBool());
        }
    }
    // A column the saved layout does not know (one newer than the preferences) takes its place
    // after the column that comes before it in the model's order, shown or hidden as new.
    for (int logical = 0; logical < header->count(); ++logical) {
        if (stored.contains(logical))
            continue;
        const int after = logical > 0 ? header->visualIndex(logical - 1) : -1;
        const int from = header->visualIndex(logical);
        header->moveSection(from, from > after ? after + 1 : after);
        header->setSectionHidden(logical, hiddenByDefault(m_model->identifier(logical)));
    }
    m_restoring = false;
}

void PluginTableView::scheduleColumnsSave()
{
    if (!m_restoring)
        m_saveColumns.start();
}

void PluginTableView::saveColumns()
{
    m_saveColumns.stop();
    if (!m_prefs || !m_prefs->store())
        return;
    PreferenceStore &store = *m_prefs->store();
    const QHeaderView *header = horizontalHeader();
    QVariantList columns;
    QStringList present;
    for (int visual = 0; visual < header->count(); ++visual) {
        const int logical = header->logicalIndex(visual);
        const QString id = m_model->identifier(logical);
        if (present.contains(id))
            continue;
        present << id;
        // A hidden section has no size of its own: the width it had is kept for its return.
        QVariantMap column{{kIdentifier, id}};
        if (header->isSectionHidden(logical)) {
            column.insert(kHidden, true);
            if (m_hiddenWidths.contains(id))
                column.insert(kWidth, m_hiddenWidths.value(id));
        } else {
            column.insert(kWidth, header->sectionSize(logical));
        }
        columns << column;
    }
    // A column hidden now keeps its width for when it is shown again.
    const QVariantList stored = store.value(columnsKey()).toList();
    for (const QVariant &entry : stored) {
        const QString id = entry.toMap().value(kIdentifier).toString();
        if (!id.isEmpty() && !present.contains(id)) {
            present << id;
            columns << entry;
        }
    }
    if (columns != stored)
        store.setValue(columnsKey(), columns);
}

void PluginTableView::hideEvent(QHideEvent *event)
{
    if (m_saveColumns.isActive())
        saveColumns();
    QTableView::hideEvent(event);
}

// --- Drag and drop -----------------------------------------------------------------------------

void PluginTableView::startDrag(Qt::DropActions)
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    QMimeData *dragged = m_proxy->mimeData(rows);
    if (!dragged)
        return;
    // Out of the table a plug-in is only ever copied; nothing here removes a dragged row.
    auto *drag = new QDrag(this);
    drag->setMimeData(dragged);
    // A bundle is a folder to the file manager that receives it; a plug-in's own icon is an
    // .icns, which Qt does not read.
    const int size = style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this);
    drag->setPixmap(style()->standardIcon(QStyle::SP_DirIcon, nullptr, this).pixmap(size, size));
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}

Qt::DropAction PluginTableView::dropActionFor(const QMimeData *dropped, const QPoint &pos,
                                              bool fromInsideApplication) const
{
    if (localPaths(dropped).isEmpty())
        return Qt::IgnoreAction;
    const QModelIndex index = indexAt(pos);
    const int row = index.isValid() ? m_proxy->mapToSource(index).row() : m_manager.rowCount();
    const PluginTableSource::DropValidation validation =
        PluginTableSource::validateDrop(row, index.isValid(), fromInsideApplication);
    return validation.operation == 0 ? Qt::IgnoreAction : Qt::CopyAction;
}

bool PluginTableView::acceptDrag(QDragMoveEvent *event)
{
    if (dropActionFor(event->mimeData(), event->position().toPoint(), event->source())
        == Qt::IgnoreAction) {
        event->ignore();
        return false;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    return true;
}

void PluginTableView::dragEnterEvent(QDragEnterEvent *event)
{
    if (acceptDrag(event))
        setDropHighlighted(true);
}

void PluginTableView::dragMoveEvent(QDragMoveEvent *event)
{
    acceptDrag(event);
}

void PluginTableView::dragLeaveEvent(QDragLeaveEvent *event)
{
    setDropHighlighted(false);
    event->accept();
}

void PluginTableView::dropEvent(QDropEvent *event)
{
    setDropHighlighted(false);
    if (dropActionFor(event->mimeData(), event->position().toPoint(), event->source())
        == Qt::IgnoreAction) {
        event->ignore();
        return;
    }
    const QStringList paths = localPaths(event->mimeData());
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // The install asks and shows progress; the file manager is not kept waiting for that.
    QPointer<FormatManager> manager(&m_manager);
    QMetaObject::invokeMethod(
        this,
        [manager, paths] {
            if (manager)
                DropInstall::install(*manager, paths);
        },
        Qt::QueuedConnection);
}

void PluginTableView::setDropHighlighted(bool on)
{
    // Only the Audio Units table shows that a drag is over it.
    if (m_manager.type() != 0 || m_dropHighlighted == on)
        return;
    m_dropHighlighted = on;
    setStyleSheet(gridSheet(on));
}

} // namespace korvane
