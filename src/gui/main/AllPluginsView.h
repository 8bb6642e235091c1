#pragma once

#include "gui/table/PluginFilter.h"
#include "library/ProductCatalog.h"

#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QWidget>
#include <optional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace korvane {

class AllPluginsModel;
class FormatManager;
class QuickFilterBar;

// Leaves out the products the search and the filters do not want. The search looks at the
// product's name and vendor and at its plug-ins' names and groups, never at a folder. The quick
// filters look at each plug-in: a product shows when any of its plug-ins passes them, and shows
// only those beneath it; its box then stands for those alone. The order is the model's.
class AllPluginsFilter : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit AllPluginsFilter(AllPluginsModel &source, QObject *parent = nullptr);
    void setFilterText(const QString &text);
    void setSeveralFormatsOnly(bool only);
    bool severalFormatsOnly() const { return m_severalOnly; }
    // The quick filters' choices (their search text is not looked at).
    void setQuickFilter(const PluginFilter &filter);
    // Whether the quick filters let the plug-in through.
    bool passes(const ProductSource &source) const;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    void sort(int column, Qt::SortOrder order) override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    AllPluginsModel &m_source;
    // The passing plug-ins of a product row, while the quick filters filter; else null.
    std::optional<QList<ProductSource>> passingOf(const QModelIndex &index) const;

    QString m_text;
    bool m_severalOnly = false;
    PluginFilter m_quick;
};

// The list of every plug-in across the formats shown, a product per row: the tabs' quick filters
// with a format filter, a filter for the products in more than one format, a search as on the
// tabs, and Switch Off Unused Formats.
class AllPluginsView : public QWidget {
    Q_OBJECT
public:
    AllPluginsView(const QList<FormatManager *> &managers, QWidget *parent = nullptr);

    AllPluginsModel &model() const { return *m_model; }
    AllPluginsFilter &filter() const { return *m_filter; }
    QTreeView *tree() const { return m_tree; }
    QLineEdit *searchField() const { return m_search; }
    QCheckBox *severalFormats() const { return m_several; }
    QuickFilterBar *filters() const { return m_filters; }
    QPushButton *unusedFormatsButton() const { return m_unused; }
    QLabel *statusLine() const { return m_status; }
    // Where the window's switch between this list and the format tabs sits.
    void setSwitch(QToolButton *button);

    void setManagers(const QList<FormatManager *> &managers);
    // Grouped and followed while shown; only noted as out of date while hidden.
    void setInUse(bool inUse);
    void focusSearch();
    // The plug-ins of the selected rows (a product's row: all of its plug-ins).
    QList<ProductSource> selectedSources() const;
    ProductSource currentSource() const;
    // The plug-ins of every product the search and the filter show.
    QList<ProductSource> shownSources() const;
    void refreshStatus();

signals:
    // The current row changed: its plug-in (a product's row: its first) for the details.
    void currentChanged(const korvane::ProductSource &source);
    void unusedFormatsRequested();
    void detailsRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showRowMenu(const QPoint &pos);
    void offerChoices();
    // Of the plug-ins the rows stand for, those the quick filters show.
    QList<ProductSource> passingOf(const QModelIndexList &rows) const;

    AllPluginsModel *m_model = nullptr;
    AllPluginsFilter *m_filter = nullptr;
    QTreeView *m_tree = nullptr;
    QLineEdit *m_search = nullptr;
    QCheckBox *m_several = nullptr;
    QuickFilterBar *m_filters = nullptr;
    QPushButton *m_unused = nullptr;
    QLabel *m_status = nullptr;
    QWidget *m_bar = nullptr;
};

} // namespace korvane
