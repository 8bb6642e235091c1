#pragma once

#include "library/MovePlan.h"
#include "library/ProductCatalog.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace korvane {

class FormatManager;

// Switching off the formats a person does not use, for the products installed in more than one:
// what would move, judged by the same planner the apply asks, before anything is marked.
namespace ProductFormats {

// One plug-in that would go off.
struct Change {
    FormatManager *manager = nullptr;
    PluginPtr item;             // the plug-in itself
    QString product;            // the product's name
    QString format;             // the format's label
    PlannedMove move;           // where it would go, and the planner's verdict
    bool takesBackMark = false; // marked on but still off on disk: only the mark goes
    bool switches() const { return takesBackMark || move.moves(); }
};

struct Preview {
    QList<Change> changes;
    // Marks made before, in the formats that change: the apply makes them too.
    int otherPending = 0;
    int switching() const;
    int refused() const;
};

// The formats of the products in more than one, in the products' order.
QStringList formatsOf(const QList<Product> &products);

// What switching off every format not in kept would do to the products in more than one format.
// A product none of whose formats is kept is left alone: it is never switched off whole.
Preview preview(const QList<Product> &products, const QStringList &kept);

// Marks the changes that switch (refused ones stay as they are), one undo step per format, and
// applies each format that changed through its manager's apply (rights, lock, log, rescan).
// The formats applied.
QStringList apply(const Preview &preview, const QString &actionName);

} // namespace ProductFormats

} // namespace korvane
