#pragma once

#include "core/PluginList.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

namespace korvane {

class FormatManager;

// One manager's item store as a table: a row per item in the manager's order, a column per
// identifier the manager shows. It holds no copy of the items; every change is the manager's and
// arrives as one of its signals, so only the rows named repaint and only a rescan resets.
class PluginTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit PluginTableModel(FormatManager &manager, QObject *parent = nullptr);

    FormatManager &manager() const { return m_manager; }
    QString identifier(int column) const { return m_columns.value(column); }
    int columnOf(const QString &identifier) const { return int(m_columns.indexOf(identifier)); }
    static bool isCheckColumn(const QString &identifier);
    // The column's title in this run's language.
    static QString title(const QString &identifier);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    QStringList mimeTypes() const override;
    // The dragged rows' files as local file URLs, each row once, in the order given.
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }
    Qt::DropActions supportedDropActions() const override { return Qt::CopyAction; }

private:
    QVariant cell(const Plugin &item, const QString &column) const;
    void aboutToReorder();
    void reordered();
    void rowsChanged(const QList<int> &rows);
    void followColumns();

    FormatManager &m_manager;
    QStringList m_columns;
    // The items under the persistent indexes while the manager reorders its list.
    QModelIndexList m_movingIndexes;
    QList<PluginPtr> m_movingItems;
};

} // namespace korvane
