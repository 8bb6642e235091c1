#pragma once

#include "core/Plugin.h"

#include <QList>
#include <QPair>
#include <QString>

namespace korvane {

// The plug-ins of one format installed more than once under the same name.
class DuplicateReport {
public:
    // Every name held by more than one item, in the order of its first item, with its count.
    static QList<QPair<QString, int>> counts(const QList<PluginPtr> &items);
};

} // namespace korvane
