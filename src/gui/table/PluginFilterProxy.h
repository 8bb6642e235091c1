#pragma once

#include <QSortFilterProxyModel>

namespace korvane {

class PluginTableModel;

// Hides the rows whose name, group, location and architecture all lack the filter text. It
// never sorts: the order is the manager's, so a visible row maps back to the manager's row.
class PluginFilterProxy : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit PluginFilterProxy(PluginTableModel &source, QObject *parent = nullptr);

    QString filterText() const { return m_text; }
    void setFilterText(const QString &text);
    // The manager's row of a visible row, -1 for none; and back.
    int sourceRow(int row) const;
    int proxyRow(int sourceRow) const;

    void sort(int, Qt::SortOrder) override {}

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    PluginTableModel &m_source;
    QString m_text;
};

} // namespace korvane
