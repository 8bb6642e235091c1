#pragma once

#include "library/ChangeSummary.h"

#include <QLabel>
#include <QTimer>

namespace korvane {

class FormatManager;
class PluginFilterProxy;

// The line under the set bar: how many plug-ins the format has, how many are on, what the next
// Apply will do and how many rows the search and filters show, e.g.
// "2,431 plug-ins · 2,102 on · 12 changes pending: 9 off, 3 on · 38 shown". Numbers are grouped
// as the locale groups them. Changes arrive in bursts (a bulk mark, a rescan): the line is
// counted once after each burst.
class StatusLine : public QLabel {
    Q_OBJECT
public:
    StatusLine(FormatManager &manager, PluginFilterProxy &shown, QWidget *parent = nullptr);

    // The text for these figures; "shown" is left out when every plug-in is shown.
    static QString compose(int total, int on, int off, int offOn, int needRights, int shown);

    void refresh(); // at once, for tests and for the first show

private:
    FormatManager &m_manager;
    PluginFilterProxy &m_shown;
    QTimer m_later;
    bool m_countsStale = true; // the library changed since the counts were taken
    int m_on = 0;
    ChangeSummary m_changes;
};

} // namespace korvane
