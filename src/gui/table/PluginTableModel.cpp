#include "gui/table/PluginTableModel.h"

#include "core/Texts.h"
#include "gui/table/PluginTableSource.h"
#include "library/ChangeSummary.h"
#include "library/FormatManager.h"
#include "library/RightsApply.h"
#include "library/TableColumns.h"
#include "os/PathBytes.h"

#include <QFont>
#include <QIcon>
#include <QMimeData>
#include <QPainter>
#include <QPixmap>
#include <QSet>
#include <QUrl>

namespace korvane {

namespace {

// The Location column's words for the first system and user folders are the core's English;
// the window shows them translated. Architectures keep the names their binaries give them.
[[maybe_unused]] const char *const kLocationWords[] = {QT_TRANSLATE_NOOP("korvane", "System"),
                                                       QT_TRANSLATE_NOOP("korvane", "User")};

// A plug-in in a folder the distribution's packages own: it is never moved, so its row says so
// before anyone clicks.
bool isDistributions(const FormatManager &manager, const Plugin &item)
{
    const FormatTraits &format = manager.traits();
    return format.isDistributionOwned(item.locationCode(format));
}

// The row marks: a pending change (a filled orange circle) and a plug-in that changes only with
// administrator rights (a small padlock). Drawn here, so no icon theme is needed.
QIcon markIcon(bool lock)
{
    static const QIcon icons[2] = {[] {
                                       QPixmap pixmap(16, 16);
                                       pixmap.fill(Qt::transparent);
                                       QPainter painter(&pixmap);
                                       painter.setRenderHint(QPainter::Antialiasing);
                                       painter.setPen(Qt::NoPen);
                                       painter.setBrush(QColor(0xe0, 0x80, 0x10));
                                       painter.drawEllipse(QRectF(3, 3, 10, 10));
                                       return QIcon(pixmap);
                                   }(),
                                   [] {
                                       QPixmap pixmap(16, 16);
                                       pixmap.fill(Qt::transparent);
                                       QPainter painter(&pixmap);
                                       painter.setRenderHint(QPainter::Antialiasing);
                                       painter.setPen(QPen(QColor(0x60, 0x60, 0x60), 1.6));
                                       painter.setBrush(Qt::NoBrush);
                                       painter.drawArc(QRectF(4.5, 1.5, 7, 8), 0, 180 * 16);
                                       painter.drawLine(QPointF(4.5, 5.5), QPointF(4.5, 7.5));
                                       painter.drawLine(QPointF(11.5, 5.5), QPointF(11.5, 7.5));
                                       painter.setPen(Qt::NoPen);
                                       painter.setBrush(QColor(0x60, 0x60, 0x60));
                                       painter.drawRoundedRect(QRectF(3, 7, 10, 8), 1.5, 1.5);
                                       return QIcon(pixmap);
                                   }()};
    return icons[lock ? 1 : 0];
}

} // namespace

PluginTableModel::PluginTableModel(FormatManager &manager, QObject *parent)
    : QAbstractTableModel(parent), m_manager(manager),
      m_columns(TableColumn::inOrder(manager.table().columns()))
{
    connect(&manager, &FormatManager::itemsAboutToBeReset, this,
            &PluginTableModel::beginResetModel);
    connect(&manager, &FormatManager::itemsReset, this, &PluginTableModel::endResetModel);
    connect(&manager, &FormatManager::itemsChanged, this, &PluginTableModel::rowsChanged);
    connect(&manager, &FormatManager::itemsAboutToBeReordered, this,
            &PluginTableModel::aboutToReorder);
    connect(&manager, &FormatManager::itemsReordered, this, &PluginTableModel::reordered);
    connect(&manager, &FormatManager::itemAboutToBeRemoved, this,
            [this](int row) { beginRemoveRows(QModelIndex(), row, row); });
    connect(&manager, &FormatManager::itemRemoved, this, &PluginTableModel::endRemoveRows);
    connect(&manager, &FormatManager::columnsChanged, this, &PluginTableModel::followColumns);
}

bool PluginTableModel::isCheckColumn(const QString &identifier)
{
    return identifier == TableColumn::Active || identifier == TableColumn::Global;
}

QString PluginTableModel::title(const QString &identifier)
{
    static const QList<QPair<QString, const char *>> titles{
        {TableColumn::Active, QT_TRANSLATE_NOOP("korvane", "Active")},
        {TableColumn::Name, QT_TRANSLATE_NOOP("korvane", "Name")},
        {TableColumn::Global, QT_TRANSLATE_NOOP("korvane", "Global")},
        {TableColumn::Group, QT_TRANSLATE_NOOP("korvane", "Group")},
        {TableColumn::Architecture, QT_TRANSLATE_NOOP("korvane", "Architecture")},
        {TableColumn::Location, QT_TRANSLATE_NOOP("korvane", "Location")},
        {TableColumn::Vendor, QT_TRANSLATE_NOOP("korvane", "Vendor")},
        {TableColumn::Version, QT_TRANSLATE_NOOP("korvane", "Version")},
        {TableColumn::Package, QT_TRANSLATE_NOOP("korvane", "Package")},
        {TableColumn::Format, QT_TRANSLATE_NOOP("korvane", "Format")}};
    for (const auto &[id, english] : titles)
        if (id == identifier)
            return korvane::tr(english);
    return identifier;
}

int PluginTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_manager.rowCount();
}

int PluginTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_columns.size());
}

QVariant PluginTableModel::cell(const Plugin &item, const QString &column) const
{
    return PluginTableSource::valueOf(m_manager, item, column);
}

QVariant PluginTableModel::data(const QModelIndex &index, int role) const
{
    const PluginPtr item = m_manager.itemAt(index.row());
    if (!item || !index.isValid())
        return QVariant();
    const QString &id = m_columns.at(index.column());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        if (isCheckColumn(id) && role == Qt::DisplayRole)
            return QVariant(); // the box says it
        if (isCheckColumn(id))
            return cell(*item, id).toBool() ? korvane::tr("on") : korvane::tr("off");
        if (id == TableColumn::Location)
            return PluginTableSource::shownLocationOf(m_manager.traits(), *item);
        return displayName(cell(*item, id).toString());
    case Qt::EditRole:
        if (isCheckColumn(id))
            return QVariant();
        return cell(*item, id).toString();
    case Qt::CheckStateRole:
        if (!isCheckColumn(id))
            return QVariant();
        return cell(*item, id).toBool() ? Qt::Checked : Qt::Unchecked;
    case Qt::ToolTipRole: {
        // Where the plug-in lies now, also for a row marked but not applied yet.
        QString tip = displayName(m_manager.plugins().pathOnDisk(*item));
        if (ChangeSummary::isMarked(m_manager, *item))
            tip += QLatin1Char('\n')
                   + (item->isActive() ? korvane::tr("Switched on at the next Apply")
                                       : korvane::tr("Switched off at the next Apply"));
        if (isDistributions(m_manager, *item))
            tip += QLatin1Char('\n')
                   + korvane::tr("Belongs to the distribution: Korvane does not switch it");
        else if (RightsApply::needsRights(m_manager.traits(), m_manager.locations(),
                                          m_manager.files(), *item))
            tip += QLatin1Char('\n')
                   + korvane::tr("Changes only with administrator rights: you cannot write in "
                                 "its system folder");
        // Why its files could not be read, in the reader's own words.
        if (const PluginMetadata *metadata = item->metadata();
            metadata && !metadata->unreadable.isEmpty())
            tip += QLatin1Char('\n') + displayName(metadata->unreadable);
        return tip;
    }
    case Qt::DecorationRole:
        if (id != TableColumn::Name)
            return QVariant();
        if (ChangeSummary::isMarked(m_manager, *item))
            return markIcon(false);
        if (isDistributions(m_manager, *item)
            || RightsApply::needsRights(m_manager.traits(), m_manager.locations(),
                                        m_manager.files(), *item))
            return markIcon(true);
        return QVariant();
    case Qt::FontRole:
        if (!ChangeSummary::isMarked(m_manager, *item))
            return QVariant();
        {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
    default:
        return QVariant();
    }
}

bool PluginTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const PluginPtr item = index.isValid() ? m_manager.itemAt(index.row()) : PluginPtr();
    if (!item)
        return false;
    const QString &id = m_columns.at(index.column());
    // The manager toggles on every call, so a call is made only when the value really differs.
    if (role == Qt::CheckStateRole && isCheckColumn(id)) {
        const bool on = value.toInt() == Qt::Checked;
        if (cell(*item, id).toBool() == on)
            return false;
        m_manager.marking().changeItem(item, id, on);
        return true;
    }
    if (role == Qt::EditRole && id == TableColumn::Group) {
        const QString group = value.toString();
        if (cell(*item, id).toString() == group)
            return false;
        m_manager.marking().changeItem(item, id, group);
        return true;
    }
    return false;
}

Qt::ItemFlags PluginTableModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
    const QString &id = m_columns.at(index.column());
    if (isCheckColumn(id))
        flags |= Qt::ItemIsUserCheckable;
    else if (id == TableColumn::Group)
        flags |= Qt::ItemIsEditable;
    return flags;
}

QVariant PluginTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_columns.size())
        return QAbstractTableModel::headerData(section, orientation, role);
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return title(m_columns.at(section));
    return QVariant();
}

QStringList PluginTableModel::mimeTypes() const
{
    return {QStringLiteral("text/uri-list")};
}

QMimeData *PluginTableModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    QSet<int> seen;
    for (const QModelIndex &index : indexes)
        if (index.isValid() && !seen.contains(index.row())) {
            seen.insert(index.row());
            rows << index.row();
        }
    QList<QUrl> urls;
    for (const QString &path : PluginTableSource::pathsOfRows(m_manager, rows))
        urls << QUrl::fromLocalFile(path);
    if (urls.isEmpty())
        return nullptr;
    auto *data = new QMimeData;
    data->setUrls(urls);
    return data;
}

void PluginTableModel::rowsChanged(const QList<int> &rows)
{
    if (m_columns.isEmpty())
        return;
    // The rows come sorted; each run of neighbours is one notice.
    const int last = int(m_columns.size()) - 1;
    for (qsizetype i = 0; i < rows.size();) {
        qsizetype j = i;
        while (j + 1 < rows.size() && rows.at(j + 1) == rows.at(j) + 1)
            ++j;
        emit dataChanged(index(rows.at(i), 0), index(rows.at(j), last));
        i = j + 1;
    }
}

void PluginTableModel::aboutToReorder()
{
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    m_movingIndexes = persistentIndexList();
    m_movingItems.clear();
    m_movingItems.reserve(m_movingIndexes.size());
    for (const QModelIndex &index : std::as_const(m_movingIndexes))
        m_movingItems << m_manager.itemAt(index.row());
}

void PluginTableModel::reordered()
{
    QModelIndexList moved;
    moved.reserve(m_movingIndexes.size());
    for (qsizetype i = 0; i < m_movingIndexes.size(); ++i) {
        const int row = m_manager.rowOf(m_movingItems.at(i));
        moved << (row < 0 ? QModelIndex() : index(row, m_movingIndexes.at(i).column()));
    }
    changePersistentIndexList(m_movingIndexes, moved);
    m_movingIndexes.clear();
    m_movingItems.clear();
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void PluginTableModel::followColumns()
{
    const QStringList wanted = TableColumn::inOrder(m_manager.table().columns());
    // Showing or hiding one column is a column change the view can follow; anything else resets.
    for (int i = int(m_columns.size()) - 1; i >= 0; --i) {
        if (m_columns.count(m_columns.at(i)) > wanted.count(m_columns.at(i))) {
            beginRemoveColumns(QModelIndex(), i, i);
            m_columns.removeAt(i);
            endRemoveColumns();
        }
    }
    for (int i = 0; i < wanted.size(); ++i) {
        if (m_columns.count(wanted.at(i)) < wanted.count(wanted.at(i))) {
            const int at = std::min(i, int(m_columns.size()));
            beginInsertColumns(QModelIndex(), at, at);
            m_columns.insert(at, wanted.at(i));
            endInsertColumns();
        }
    }
    if (m_columns != wanted) {
        beginResetModel();
        m_columns = wanted;
        endResetModel();
    }
}

} // namespace korvane
