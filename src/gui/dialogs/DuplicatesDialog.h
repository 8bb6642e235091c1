#pragma once

#include "library/DuplicateReport.h"

#include <QDialog>
#include <QPointer>

class QTreeWidget;

namespace korvane {

class FormatManager;

// The duplicate report of one format: each name installed more than once, with every copy's
// folder, version and state, and a button that selects the copies in the table (the ones chosen
// here, or all of them) so they can be switched or trashed from there.
class DuplicatesDialog : public QDialog {
    Q_OBJECT
public:
    DuplicatesDialog(FormatManager &manager, const QList<DuplicateReport::Name> &names,
                     QWidget *parent = nullptr);

    // The copies chosen in the list, or every copy when none is.
    QList<PluginPtr> chosenCopies() const;
    // Selects the chosen copies in the format's table.
    void selectInTable();

private:
    QPointer<FormatManager> m_manager; // the tab may go while the report is open
    QTreeWidget *m_list;
    QList<PluginPtr> m_copies; // by the list's rows' data
};

} // namespace korvane
