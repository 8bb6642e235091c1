#pragma once

#include <QSortFilterProxyModel>

namespace korvane {

class PluginTableModel;

// Hides the rows the search and the quick filters leave out. The search looks at the name and
// the group, never at the folder: every path holds the user's name and "Audio". It never sorts:
// the order is the manager's, so a visible row maps back to the manager's row.
class PluginFilterProxy : public QSortFilterProxyModel {
    Q_OBJECT
public:
    enum class State { Any, On, Off };
    enum class Place { Any, System, User };

    explicit PluginFilterProxy(PluginTableModel &source, QObject *parent = nullptr);

    QString filterText() const { return m_text; }
    void setFilterText(const QString &text);
    State state() const { return m_state; }
    Place place() const { return m_place; }
    void setState(State state);
    void setPlace(Place place);
    // Whether the search or a quick filter hides anything it could.
    bool isFiltering() const;
    // The manager's row of a visible row, -1 for none; and back.
    int sourceRow(int row) const;
    int proxyRow(int sourceRow) const;

    void sort(int, Qt::SortOrder) override {}

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    PluginTableModel &m_source;
    QString m_text;
    State m_state = State::Any;
    Place m_place = Place::Any;
};

} // namespace korvane
