#pragma once

#include <QLabel>

namespace korvane {

class FormatManager;
class PluginFilterProxy;

// Shown over an empty table: which folders the scan looked in (as it resolved them) and how to
// add a plug-in, so an empty tab is never a riddle. Hidden while the table has rows or a search
// or filter is what empties it.
class EmptyTableNote : public QLabel {
    Q_OBJECT
public:
    EmptyTableNote(FormatManager &manager, PluginFilterProxy &shown, QWidget *viewport);

    static QString textFor(const FormatManager &manager);
    void follow(); // shown or hidden as the rows say

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    FormatManager &m_manager;
    PluginFilterProxy &m_shown;
};

} // namespace korvane
