#pragma once

#include "library/ProductCatalog.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QList>
#include <QPair>
#include <QStringList>

namespace korvane {

class FormatManager;

// Every plug-in of the formats shown, as products: a product per top row, its plug-ins (one per
// format and folder) below it. It keeps no state of its own beyond the grouping: the plug-ins are
// the format managers' own items, a tick here is a mark of their manager, and each manager's
// announcements repaint the rows they name. The grouping is made again after a manager's rescan
// or removal, and only while the view is in use: a hidden view only notes that it is out of date.
class AllPluginsModel : public QAbstractItemModel {
    Q_OBJECT
public:
    AllPluginsModel(const QList<FormatManager *> &managers, const QStringList &columns,
                    QObject *parent = nullptr);

    static QStringList defaultColumns();
    static QString title(const QString &identifier);

    // The formats in the list (the shown tabs, in their order).
    void setManagers(const QList<FormatManager *> &managers);
    const QList<FormatManager *> &managers() const { return m_managers; }
    // While live, a change of the plug-ins regroups at once; else at the next refresh.
    void setLive(bool live);
    // Groups again if anything changed since the last grouping.
    void refresh();
    bool isStale() const { return m_stale; }

    const QList<Product> &products() const { return m_products; }
    // How many products are in more than one format, counted once per grouping: the status line
    // asks after every row a filter hides.
    int severalFormatsCount() const { return m_severalFormats; }
    QString identifier(int column) const { return m_columns.value(column); }
    // The product of a top row or of a plug-in's row; null for none.
    const Product *productAt(const QModelIndex &index) const;
    // The plug-in of a plug-in's row; for a product's row its first.
    ProductSource sourceAt(const QModelIndex &index) const;
    // The plug-ins the rows stand for: a product's row all of its plug-ins, each once.
    QList<ProductSource> sourcesOf(const QModelIndexList &rows) const;
    // The row of the product that holds item, invalid when it is not in the list.
    QModelIndex indexOf(const Plugin *item) const;

    QModelIndex index(int row, int column,
                      const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    // Products by a column's text, in natural order ("Bass 2" before "Bass 10").
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Marks every plug-in given on or off through its manager, as the bulk commands mark.
    static void mark(const QList<ProductSource> &sources, bool active);

signals:
    void regrouped();

private:
    QString text(const Product &product, const QString &column) const;
    static QString text(const ProductSource &source, const QString &column);
    void changed(FormatManager *manager, const QList<int> &rows);
    void goneStale();
    void placeAll();

    QList<FormatManager *> m_all;
    QList<FormatManager *> m_managers;
    QStringList m_columns;
    QList<Product> m_products;
    QHash<const Plugin *, QPair<int, int>> m_where; // product row, plug-in row
    int m_severalFormats = 0;
    int m_sortColumn = 1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    bool m_stale = true;
    bool m_live = false;
    bool m_regroupQueued = false;
};

} // namespace korvane
