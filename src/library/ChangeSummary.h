#pragma once

#include <QString>

namespace korvane {

class FormatManager;
class Plugin;

// What the next Apply will do, as the window shows it before anyone presses it: how many marked
// plug-ins go off and on, and how many system plug-ins cannot change without administrator
// rights.
struct ChangeSummary {
    int off = 0;
    int on = 0;
    int needRights = 0; // system plug-ins in folders the person cannot write, marked or not

    static ChangeSummary of(const FormatManager &manager);
    // Whether the item is marked: where it is to be is not where it lies.
    static bool isMarked(const FormatManager &manager, const Plugin &item);
    int changes() const { return off + on; }
    // "12 changes: 9 off, 3 on", then the rights; empty when there is nothing to say.
    QString text() const;
};

} // namespace korvane
