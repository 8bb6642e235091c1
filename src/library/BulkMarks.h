#pragma once

#include "core/Plugin.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

class FormatManager;

// The commands that mark many plug-ins at once, as the window runs them. They act on the rows
// shown: a search or filter hides the rest, and All Off with a search active once switched off
// the whole library. Only Group On and Off, where the person names the group, reach members the
// filter hides, and then the question says how many are not shown. Whatever marks more than a
// screenful asks first with the count; each command is one undo step with its name and count.
class BulkMarks {
public:
    // What the view shows: its rows (in any order) and how many fit on the screen.
    struct View {
        QList<PluginPtr> shown;
        int screenful = 0;
    };

    // The items marked; none when nothing was to change or the person cancelled.
    static QList<PluginPtr> all(FormatManager &manager, const View &view, bool active);
    static QList<PluginPtr> selected(FormatManager &manager, bool active);
    static QList<PluginPtr> group(FormatManager &manager, const View &view, const QString &group,
                                  bool active);
    // The groups Group On and Off offer: every named group some plug-in of the format is in.
    static QStringList groupsInUse(const FormatManager &manager);

    // "Switch Off 12 Plug-Ins", the undo step's name.
    static QString actionName(int count, bool active);

private:
    static QList<PluginPtr> mark(FormatManager &manager, const QList<PluginPtr> &items,
                                 const View *view, bool active);
};

} // namespace korvane
