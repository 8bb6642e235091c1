#pragma once

#include <QTableView>

namespace korvane {

class TypeManager;

// The plug-in table of one format, bound to its manager: the manager's items are the rows, its
// change signals repaint only the rows they name, its sort and selection are the table's. Keeps
// its own column widths and order in the preferences file.
class PluginTableView : public QTableView {
    Q_OBJECT
public:
    explicit PluginTableView(TypeManager &manager, QWidget *parent = nullptr);
    ~PluginTableView() override;

    TypeManager &manager() const { return m_manager; }
    // Shows only the rows whose name, group, location or architecture contain text.
    void setFilterText(const QString &text);

private:
    TypeManager &m_manager;
};

} // namespace korvane
