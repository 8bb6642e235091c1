#include "gui/main/AllPluginsModel.h"

#include "core/Texts.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableSource.h"
#include "library/BulkMarks.h"
#include "library/ChangeSummary.h"
#include "library/FormatManager.h"
#include "library/TableColumns.h"
#include "os/PathBytes.h"

#include <QCollator>
#include <QFont>
#include <QLocale>
#include <QSet>
#include <QTimer>
#include <algorithm>
#include <climits>
#include <numeric>

namespace korvane {

namespace {

// Each distinct non-empty value once, in order, joined.
QString distinct(const QStringList &values)
{
    QStringList seen;
    for (const QString &value : values)
        if (!value.isEmpty() && !seen.contains(value))
            seen << value;
    return seen.join(QStringLiteral(", "));
}

// As the format's table says it: "System" or "User" for each scope's first folders, any later
// folder as written ("/usr/lib/lv2").
QString placeOf(const ProductSource &source)
{
    const Plugin &item = *source.item;
    if (source.manager)
        return PluginTableSource::shownLocationOf(source.manager->traits(), item);
    return item.isGlobal() ? korvane::tr("System") : korvane::tr("User");
}

} // namespace

AllPluginsModel::AllPluginsModel(const QList<FormatManager *> &managers, const QStringList &columns,
                                 QObject *parent)
    : QAbstractItemModel(parent), m_all(managers), m_managers(managers), m_columns(columns)
{
    for (FormatManager *manager : managers) {
        connect(manager, &FormatManager::itemsReset, this, &AllPluginsModel::goneStale);
        connect(manager, &FormatManager::itemRemoved, this, &AllPluginsModel::goneStale);
        connect(manager, &FormatManager::itemsChanged, this,
                [this, manager](const QList<int> &rows) { changed(manager, rows); });
    }
}

QStringList AllPluginsModel::defaultColumns()
{
    // The tables' layout; a product's plug-ins may lie in either scope, so no Global column.
    QStringList columns = TableColumn::Order;
    columns.removeOne(TableColumn::Global);
    return columns;
}

QString AllPluginsModel::title(const QString &identifier)
{
    return PluginTableModel::title(identifier);
}

void AllPluginsModel::setManagers(const QList<FormatManager *> &managers)
{
    if (managers == m_managers)
        return;
    m_managers = managers;
    goneStale();
}

void AllPluginsModel::setLive(bool live)
{
    m_live = live;
    if (live)
        refresh();
}

void AllPluginsModel::goneStale()
{
    m_stale = true;
    // A rescan announces a reset per format: the grouping is made once, after the last.
    if (m_live && !m_regroupQueued) {
        m_regroupQueued = true;
        QTimer::singleShot(0, this, [this] {
            m_regroupQueued = false;
            if (m_live)
                refresh();
        });
    }
}

void AllPluginsModel::refresh()
{
    if (!m_stale)
        return;
    beginResetModel();
    m_products = ProductCatalog::of(m_managers);
    m_severalFormats = int(std::count_if(m_products.cbegin(), m_products.cend(),
                                         [](const Product &p) { return p.inSeveralFormats(); }));
    m_stale = false;
    // In the order last chosen; placeAll() runs there.
    const int column = m_sortColumn;
    const Qt::SortOrder order = m_sortOrder;
    m_sortColumn = -1;
    endResetModel();
    sort(column, order);
    emit regrouped();
}

void AllPluginsModel::placeAll()
{
    m_where.clear();
    m_where.reserve(m_products.size() * 2);
    for (int p = 0; p < m_products.size(); ++p) {
        const QList<ProductSource> &members = m_products.at(p).members;
        for (int m = 0; m < members.size(); ++m)
            m_where.insert(members.at(m).item.get(), {p, m});
    }
}

void AllPluginsModel::sort(int column, Qt::SortOrder order)
{
    const QString id = m_columns.value(column);
    if (id.isEmpty() || (column == m_sortColumn && order == m_sortOrder && !m_stale))
        return;
    m_sortColumn = column;
    m_sortOrder = order;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    QList<const Plugin *> held;
    held.reserve(before.size());
    for (const QModelIndex &index : before)
        held << (index.isValid() ? sourceAt(index).item.get() : nullptr);

    // One collation key per product, made once: comparing through the collator is what costs.
    // The C locale's collator compares code points and knows no numbers.
    QLocale locale;
    if (locale.language() == QLocale::C)
        locale = QLocale(QLocale::English, QLocale::UnitedStates);
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // QList rather than std::vector: its indexes are the products' own signed positions.
    QList<QCollatorSortKey> keys;
    QList<int> ons(m_products.size(), 0);
    keys.reserve(m_products.size());
    for (qsizetype i = 0; i < m_products.size(); ++i) {
        const Product &product = m_products.at(i);
        keys.push_back(
            collator.sortKey(id == TableColumn::Active ? product.name : text(product, id)));
        for (const ProductSource &member : product.members)
            ons[i] += member.item->isActive() ? 1 : 0;
    }
    QList<qsizetype> order_(m_products.size());
    std::iota(order_.begin(), order_.end(), qsizetype(0));
    const bool ascending = order == Qt::AscendingOrder;
    std::stable_sort(order_.begin(), order_.end(), [&](qsizetype a, qsizetype b) {
        if (id == TableColumn::Active && ons.at(a) != ons.at(b))
            return ascending ? ons.at(a) < ons.at(b) : ons.at(a) > ons.at(b);
        const int compared = keys.at(a).compare(keys.at(b));
        return ascending ? compared < 0 : compared > 0;
    });
    QList<Product> sorted;
    sorted.reserve(m_products.size());
    for (qsizetype i : order_)
        sorted << std::move(m_products[i]);
    m_products = std::move(sorted);
    placeAll();

    QModelIndexList after;
    after.reserve(before.size());
    for (qsizetype i = 0; i < before.size(); ++i) {
        const auto where = m_where.constFind(held.at(i));
        if (!held.at(i) || where == m_where.cend()) {
            after << QModelIndex();
            continue;
        }
        const bool productRow = !before.at(i).parent().isValid();
        after << (productRow ? index(where->first, before.at(i).column())
                             : index(where->second, before.at(i).column(), index(where->first, 0)));
    }
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

const Product *AllPluginsModel::productAt(const QModelIndex &index) const
{
    if (!index.isValid())
        return nullptr;
    const int row = index.internalId() == 0 ? index.row() : int(index.internalId()) - 1;
    return row >= 0 && row < m_products.size() ? &m_products.at(row) : nullptr;
}

ProductSource AllPluginsModel::sourceAt(const QModelIndex &index) const
{
    const Product *product = productAt(index);
    if (!product || product->members.isEmpty())
        return {};
    if (index.internalId() == 0)
        return product->members.first();
    return product->members.value(index.row());
}

QList<ProductSource> AllPluginsModel::sourcesOf(const QModelIndexList &rows) const
{
    QList<ProductSource> sources;
    QSet<const Plugin *> seen;
    const auto add = [&](const ProductSource &source) {
        if (source.item && !seen.contains(source.item.get())) {
            seen.insert(source.item.get());
            sources << source;
        }
    };
    for (const QModelIndex &row : rows) {
        const Product *product = productAt(row);
        if (!product)
            continue;
        if (row.internalId() == 0)
            for (const ProductSource &member : product->members)
                add(member);
        else
            add(sourceAt(row));
    }
    return sources;
}

QModelIndex AllPluginsModel::indexOf(const Plugin *item) const
{
    const auto where = m_where.constFind(item);
    return where == m_where.cend() ? QModelIndex() : index(where->first, 0);
}

QModelIndex AllPluginsModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= m_columns.size())
        return {};
    if (!parent.isValid())
        return row < m_products.size() ? createIndex(row, column, quintptr(0)) : QModelIndex();
    if (parent.internalId() != 0 || parent.row() >= m_products.size()
        || row >= m_products.at(parent.row()).members.size())
        return {};
    return createIndex(row, column, quintptr(parent.row()) + 1);
}

QModelIndex AllPluginsModel::parent(const QModelIndex &child) const
{
    if (!child.isValid() || child.internalId() == 0)
        return {};
    return createIndex(int(child.internalId()) - 1, 0, quintptr(0));
}

int AllPluginsModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return int(m_products.size());
    if (parent.internalId() != 0 || parent.column() != 0 || parent.row() >= m_products.size())
        return 0;
    // A product in one place has nothing to unfold.
    const qsizetype members = m_products.at(parent.row()).members.size();
    return members > 1 ? int(members) : 0;
}

int AllPluginsModel::columnCount(const QModelIndex &) const
{
    return int(m_columns.size());
}

QString AllPluginsModel::text(const ProductSource &source, const QString &column)
{
    if (column == TableColumn::Name)
        return displayName(source.item->name());
    if (column == TableColumn::Format)
        return source.format;
    if (column == TableColumn::Location)
        return placeOf(source);
    // The other texts are the tables' own.
    const QVariant value = PluginTableSource::formatFreeValueOf(
        *source.item, column, source.manager ? source.manager->groupName(*source.item) : QString());
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

QString AllPluginsModel::text(const Product &product, const QString &column) const
{
    if (column == TableColumn::Name)
        return displayName(product.name);
    if (column == TableColumn::Vendor)
        return product.vendor;
    if (column == TableColumn::Format)
        return product.formats().join(QStringLiteral(", "));
    QStringList values;
    values.reserve(product.members.size());
    for (const ProductSource &member : product.members)
        values << text(member, column);
    return distinct(values);
}

QVariant AllPluginsModel::data(const QModelIndex &index, int role) const
{
    const Product *product = productAt(index);
    if (!product)
        return {};
    const bool productRow = index.internalId() == 0;
    const ProductSource source = sourceAt(index);
    const QString &id = m_columns.at(index.column());
    const bool check = id == TableColumn::Active;
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (check)
            return {};
        return productRow ? text(*product, id) : text(source, id);
    case Qt::CheckStateRole: {
        if (!check)
            return {};
        if (!productRow)
            return source.item->isActive() ? Qt::Checked : Qt::Unchecked;
        int on = 0;
        for (const ProductSource &member : product->members)
            on += member.item->isActive() ? 1 : 0;
        return on == 0 ? Qt::Unchecked
                       : (on == product->members.size() ? Qt::Checked : Qt::PartiallyChecked);
    }
    case Qt::ToolTipRole:
        if (!productRow || product->members.size() == 1)
            return source.manager ? displayName(source.manager->plugins().pathOnDisk(*source.item))
                                  : QVariant();
        return korvane::tr("%1 plug-ins in %2")
            .arg(product->members.size())
            .arg(product->formats().join(QStringLiteral(", ")));
    case Qt::FontRole: {
        // A pending mark shows bold, as on the format's own table.
        const auto marked = [](const ProductSource &member) {
            return member.manager && ChangeSummary::isMarked(*member.manager, *member.item);
        };
        const bool any =
            productRow ? std::any_of(product->members.cbegin(), product->members.cend(), marked)
                       : marked(source);
        if (!any)
            return {};
        QFont bold;
        bold.setBold(true);
        return bold;
    }
    case Qt::AccessibleTextRole:
        if (check)
            return data(index, Qt::CheckStateRole).toInt() == Qt::Unchecked ? korvane::tr("off")
                                                                            : korvane::tr("on");
        return data(index, Qt::DisplayRole);
    default:
        return {};
    }
}

bool AllPluginsModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const Product *product = productAt(index);
    if (!product || role != Qt::CheckStateRole
        || m_columns.at(index.column()) != TableColumn::Active)
        return false;
    // A product's box sets every plug-in of it; a click on a partly ticked box ticks it.
    const bool on = value.toInt() == Qt::Checked;
    if (index.internalId() == 0) {
        mark(product->members, on);
        return true;
    }
    const ProductSource source = sourceAt(index);
    if (!source.manager || source.item->isActive() == on)
        return false;
    source.manager->marking().changeItem(source.item, TableColumn::Active, on);
    return true;
}

void AllPluginsModel::mark(const QList<ProductSource> &sources, bool active)
{
    QList<FormatManager *> order;
    QHash<FormatManager *, QList<PluginPtr>> items;
    for (const ProductSource &source : sources) {
        if (!source.manager)
            continue;
        if (!items.contains(source.manager))
            order << source.manager;
        items[source.manager] << source.item;
    }
    // The person pointed at these plug-ins: no count to confirm, but the distribution's stay.
    for (FormatManager *manager : order)
        BulkMarks::all(*manager, BulkMarks::View{items.value(manager), INT_MAX}, active);
}

Qt::ItemFlags AllPluginsModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (m_columns.at(index.column()) == TableColumn::Active)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

QVariant AllPluginsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_columns.size())
        return QAbstractItemModel::headerData(section, orientation, role);
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return title(m_columns.at(section));
    return {};
}

void AllPluginsModel::changed(FormatManager *manager, const QList<int> &rows)
{
    if (m_stale || m_products.isEmpty() || m_columns.isEmpty())
        return;
    const int last = int(m_columns.size()) - 1;
    // A bulk mark of thousands repaints everything once rather than row by row.
    if (rows.size() > 256) {
        emit dataChanged(index(0, 0), index(int(m_products.size()) - 1, last));
        emit layoutAboutToBeChanged();
        emit layoutChanged();
        return;
    }
    QSet<int> products;
    for (int row : rows) {
        const PluginPtr item = manager->itemAt(row);
        const auto where = item ? m_where.constFind(item.get()) : m_where.cend();
        if (where == m_where.cend())
            continue;
        const QModelIndex product = index(where->first, 0);
        if (rowCount(product) > 0)
            emit dataChanged(index(where->second, 0, product), index(where->second, last, product));
        products.insert(where->first);
    }
    for (int product : std::as_const(products))
        emit dataChanged(index(product, 0), index(product, last));
}

} // namespace korvane
