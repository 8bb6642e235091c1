#include "gui/main/AllPluginsView.h"

#include "core/Texts.h"
#include "core/UserInterface.h"
#include "gui/main/AllPluginsModel.h"
#include "gui/table/QuickFilterBar.h"
#include "gui/table/RowMenu.h"
#include "library/FormatManager.h"
#include "library/TableColumns.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QSet>
#include <QToolButton>
#include <QVBoxLayout>

namespace korvane {

namespace {

// A source built by hand (without its manager) has no group.
QString groupOf(const ProductSource &source)
{
    return source.manager ? source.manager->groupName(*source.item) : QString();
}

} // namespace

AllPluginsFilter::AllPluginsFilter(AllPluginsModel &source, QObject *parent)
    : QSortFilterProxyModel(parent), m_source(source)
{
    setSourceModel(&source);
}

void AllPluginsFilter::setFilterText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    invalidateRowsFilter();
}

void AllPluginsFilter::setSeveralFormatsOnly(bool only)
{
    if (only == m_severalOnly)
        return;
    m_severalOnly = only;
    invalidateRowsFilter();
}

void AllPluginsFilter::setQuickFilter(const PluginFilter &filter)
{
    PluginFilter quick = filter;
    quick.text.clear(); // the search here looks at products, not at each plug-in
    if (quick == m_quick)
        return;
    m_quick = quick;
    invalidateRowsFilter();
    // The product rows' boxes count only the plug-ins shown.
    if (const int rows = rowCount(); rows > 0)
        emit dataChanged(index(0, 0), index(rows - 1, 0), {Qt::CheckStateRole});
}

bool AllPluginsFilter::passes(const ProductSource &source) const
{
    return source.item && m_quick.accepts(*source.item, source.type, groupOf(source));
}

std::optional<QList<ProductSource>> AllPluginsFilter::passingOf(const QModelIndex &index) const
{
    const QModelIndex row = mapToSource(index);
    if (!m_quick.isFiltering() || !row.isValid() || row.internalId() != 0)
        return std::nullopt;
    const Product *product = m_source.productAt(row);
    QList<ProductSource> passing;
    if (product)
        for (const ProductSource &member : product->members)
            if (passes(member))
                passing << member;
    return passing;
}

QVariant AllPluginsFilter::data(const QModelIndex &index, int role) const
{
    if (role == Qt::CheckStateRole || role == Qt::AccessibleTextRole) {
        const std::optional<QList<ProductSource>> passing = passingOf(index);
        if (passing && m_source.identifier(index.column()) == TableColumn::Active
            && !passing->isEmpty()) {
            const auto on =
                std::count_if(passing->cbegin(), passing->cend(),
                              [](const ProductSource &s) { return s.item->isActive(); });
            if (role == Qt::AccessibleTextRole)
                return on == 0 ? korvane::tr("off") : korvane::tr("on");
            return on == 0 ? Qt::Unchecked
                           : (on == passing->size() ? Qt::Checked : Qt::PartiallyChecked);
        }
    }
    return QSortFilterProxyModel::data(index, role);
}

bool AllPluginsFilter::setData(const QModelIndex &index, const QVariant &value, int role)
{
    // A product's box marks only the plug-ins the filters show: the hidden ones stay as they are.
    const std::optional<QList<ProductSource>> passing = passingOf(index);
    if (passing && role == Qt::CheckStateRole
        && m_source.identifier(index.column()) == TableColumn::Active) {
        AllPluginsModel::mark(*passing, value.toInt() == Qt::Checked);
        return true;
    }
    return QSortFilterProxyModel::setData(index, value, role);
}

void AllPluginsFilter::sort(int column, Qt::SortOrder order)
{
    // The model sorts its products itself, with one collation key each.
    m_source.sort(column, order);
}

bool AllPluginsFilter::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    const bool quick = m_quick.isFiltering();
    if (sourceParent.isValid()) {
        const Product *product = quick ? m_source.productAt(sourceParent) : nullptr;
        return !quick || (product && passes(product->members.value(sourceRow)));
    }
    if (!m_severalOnly && m_text.isEmpty() && !quick)
        return true;
    const Product *product = m_source.productAt(m_source.index(sourceRow, 0));
    if (!product || (m_severalOnly && !product->inSeveralFormats()))
        return false;
    if (quick
        && std::none_of(product->members.cbegin(), product->members.cend(),
                        [this](const ProductSource &member) { return passes(member); }))
        return false;
    if (m_text.isEmpty() || product->name.contains(m_text, Qt::CaseInsensitive)
        || product->vendor.contains(m_text, Qt::CaseInsensitive))
        return true;
    return std::any_of(product->members.cbegin(), product->members.cend(),
                       [this](const ProductSource &member) {
                           return member.item->name().contains(m_text, Qt::CaseInsensitive)
                                  || groupOf(member).contains(m_text, Qt::CaseInsensitive);
                       });
}

AllPluginsView::AllPluginsView(const QList<FormatManager *> &managers, QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("AllPlugins"));
    setAccessibleName(korvane::tr("All Plug-Ins"));
    m_model = new AllPluginsModel(managers, AllPluginsModel::defaultColumns(), this);
    m_filter = new AllPluginsFilter(*m_model, this);

    m_several = new QCheckBox(korvane::tr("Only products in more than one format"), this);
    m_several->setObjectName(QStringLiteral("cbSeveralFormats"));
    m_search = new QLineEdit(this);
    m_search->setObjectName(QStringLiteral("etSearchAll"));
    m_search->setAccessibleName(korvane::tr("Search"));
    m_search->setPlaceholderText(korvane::tr("Search"));
    m_search->setClearButtonEnabled(true);
    // The tabs' quick filters, with the format among them; the choices follow what is listed.
    m_filters = new QuickFilterBar(QStringLiteral("All"), this);
    m_unused = new QPushButton(korvane::tr("Switch Off Unused Formats..."), this);
    m_unused->setObjectName(QStringLiteral("pbUnusedFormats"));
    m_unused->setAutoDefault(false);

    m_tree = new QTreeView(this);
    m_tree->setObjectName(QStringLiteral("tvAllPlugins"));
    m_tree->setAccessibleName(korvane::tr("All plug-ins"));
    m_tree->setModel(m_filter);
    m_tree->setUniformRowHeights(true); // nothing measures rows that are not on screen
    m_tree->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->setSortingEnabled(true);
    m_tree->sortByColumn(1, Qt::AscendingOrder);
    m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tree->installEventFilter(this);
    QHeaderView *header = m_tree->header();
    header->setStretchLastSection(false);
    header->setSectionsMovable(true);
    const QList<int> widths{76, 240, 150, 140, 80, 110, 100, 104, 100};
    for (int column = 0; column < widths.size() && column < m_model->columnCount(); ++column)
        header->resizeSection(column, widths.at(column));

    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lbStatusAll"));
    m_status->setTextFormat(Qt::PlainText);
    m_status->setAccessibleName(korvane::tr("Status"));
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    m_bar = new QWidget(this);
    auto *bar = new QHBoxLayout(m_bar);
    bar->setContentsMargins(0, 0, 0, 0);
    bar->addWidget(m_filters);
    bar->addStretch(1);
    // The search on a line of its own, after the multi-format box: beside the filters either
    // would be squeezed once the details pane takes its share of the width.
    auto *search = new QHBoxLayout;
    search->addWidget(m_several);
    search->addWidget(m_search, 1);
    search->addWidget(m_unused);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_bar);
    layout->addLayout(search);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_status);
    // As read: the filters, the multi-format box, the search, the button, then the list (one stop).
    QList<QWidget *> order = m_filters->focusOrder();
    order << m_several << m_search << m_unused << m_tree;
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));

    connect(m_search, &QLineEdit::textChanged, m_filter, &AllPluginsFilter::setFilterText);
    connect(m_several, &QCheckBox::toggled, m_filter, &AllPluginsFilter::setSeveralFormatsOnly);
    connect(m_filters, &QuickFilterBar::changed, this,
            [this] { m_filter->setQuickFilter(m_filters->applied({})); });
    connect(m_model, &AllPluginsModel::regrouped, this, &AllPluginsView::offerChoices);
    connect(m_unused, &QPushButton::clicked, this, &AllPluginsView::unusedFormatsRequested);
    connect(m_tree, &QWidget::customContextMenuRequested, this, &AllPluginsView::showRowMenu);
    connect(m_tree, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex &index) {
        if (index.isValid() && m_model->identifier(index.column()) != TableColumn::Active)
            emit detailsRequested();
    });
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this] { emit currentChanged(currentSource()); });
    const auto status = [this] { refreshStatus(); };
    connect(m_filter, &QAbstractItemModel::rowsInserted, this, status);
    connect(m_filter, &QAbstractItemModel::rowsRemoved, this, status);
    connect(m_filter, &QAbstractItemModel::modelReset, this, status);
    connect(m_filter, &QAbstractItemModel::layoutChanged, this, status);
}

void AllPluginsView::setSwitch(QToolButton *button)
{
    static_cast<QHBoxLayout *>(m_bar->layout())->insertWidget(0, button);
    setTabOrder(button, m_filters->focusOrder().constFirst());
}

void AllPluginsView::offerChoices()
{
    // The formats and architectures that something listed holds, the formats in the tabs' order.
    QSet<const FormatManager *> holding;
    QList<PluginPtr> items;
    for (const Product &product : m_model->products())
        for (const ProductSource &member : product.members) {
            holding.insert(member.manager);
            items << member.item;
        }
    QList<QPair<int, QString>> formats;
    for (const FormatManager *manager : m_model->managers())
        if (holding.contains(manager))
            formats.append({manager->type(), manager->traits().tabLabel});
    m_filters->setFormats(formats);
    m_filters->setArchitectures(PluginFilter::architecturesOf(items));
}

QList<ProductSource> AllPluginsView::passingOf(const QModelIndexList &rows) const
{
    QList<ProductSource> sources = m_model->sourcesOf(rows);
    sources.removeIf([this](const ProductSource &source) { return !m_filter->passes(source); });
    return sources;
}

void AllPluginsView::setManagers(const QList<FormatManager *> &managers)
{
    m_model->setManagers(managers);
}

void AllPluginsView::setInUse(bool inUse)
{
    m_model->setLive(inUse);
    if (inUse)
        refreshStatus();
}

void AllPluginsView::focusSearch()
{
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}

QList<ProductSource> AllPluginsView::selectedSources() const
{
    QModelIndexList rows;
    for (const QModelIndex &index : m_tree->selectionModel()->selectedRows())
        rows << m_filter->mapToSource(index);
    if (rows.isEmpty() && m_tree->currentIndex().isValid())
        rows << m_filter->mapToSource(m_tree->currentIndex());
    return passingOf(rows);
}

QList<ProductSource> AllPluginsView::shownSources() const
{
    QModelIndexList rows;
    const int count = m_filter->rowCount();
    rows.reserve(count);
    for (int row = 0; row < count; ++row)
        rows << m_filter->mapToSource(m_filter->index(row, 0));
    return passingOf(rows);
}

ProductSource AllPluginsView::currentSource() const
{
    const QModelIndex row = m_filter->mapToSource(m_tree->currentIndex());
    // A product's row: its first plug-in the filters show.
    if (const Product *product = row.internalId() == 0 ? m_model->productAt(row) : nullptr)
        for (const ProductSource &member : product->members)
            if (m_filter->passes(member))
                return member;
    return m_model->sourceAt(row);
}

void AllPluginsView::refreshStatus()
{
    const QLocale locale;
    const int several = m_model->severalFormatsCount();
    const int total = int(m_model->products().size());
    QStringList parts;
    parts << (total == 1 ? korvane::tr("1 product")
                         : korvane::tr("%1 products").arg(locale.toString(total)));
    parts << korvane::tr("%1 in more than one format").arg(locale.toString(several));
    const int shown = m_filter->rowCount();
    if (shown != total)
        parts << korvane::tr("%1 shown").arg(locale.toString(shown));
    m_status->setText(parts.join(QStringLiteral(" · ")));
}

bool AllPluginsView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_tree && event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        const bool plain = (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
        if (plain && key->key() == Qt::Key_Space) {
            // As on the tabs: the selected rows flip together, the current row decides the way.
            const QList<ProductSource> sources = selectedSources();
            const ProductSource lead = currentSource();
            if (!sources.isEmpty())
                AllPluginsModel::mark(sources, !(lead.item ? lead.item->isActive()
                                                           : sources.first().item->isActive()));
            return true;
        }
        if (plain && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)) {
            emit detailsRequested();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void AllPluginsView::showRowMenu(const QPoint &pos)
{
    const QModelIndex index = m_tree->indexAt(pos);
    if (index.isValid() && !m_tree->selectionModel()->isRowSelected(index.row(), index.parent()))
        m_tree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect
                                                             | QItemSelectionModel::Rows);
    const QList<ProductSource> sources = selectedSources();
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("menuAllRows"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *on = menu->addAction(korvane::tr("On"));
    on->setObjectName(QStringLiteral("miAllRowOn"));
    QAction *off = menu->addAction(korvane::tr("Off"));
    off->setObjectName(QStringLiteral("miAllRowOff"));
    menu->addSeparator();
    QAction *show = menu->addAction(korvane::tr("Show in File Manager"));
    show->setObjectName(QStringLiteral("miAllRowShow"));
    QAction *details = menu->addAction(korvane::tr("Details"));
    details->setObjectName(QStringLiteral("miAllRowDetails"));
    for (QAction *item : {on, off, show, details})
        item->setEnabled(!sources.isEmpty());
    connect(on, &QAction::triggered, this, [sources] { AllPluginsModel::mark(sources, true); });
    connect(off, &QAction::triggered, this, [sources] { AllPluginsModel::mark(sources, false); });
    const ProductSource current = currentSource();
    connect(show, &QAction::triggered, this, [current] {
        if (current.manager)
            RowMenu::showFolderOf(*current.manager, current.item);
    });
    connect(details, &QAction::triggered, this, &AllPluginsView::detailsRequested);
    menu->popup(m_tree->viewport()->mapToGlobal(pos));
}

} // namespace korvane
