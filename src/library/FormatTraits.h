#pragma once

#include "core/Format.h"

#include <QString>

namespace korvane {

// A format's row as the managers use it: the table's facts, and what the managers make of them.
struct FormatTraits : Format {
    explicit FormatTraits(const Format &format) : Format(format) {}

    // The undo action name of a table toggle, from the item's name and state after the toggle:
    // Audio Units put the word first and quote the name, the others quote the word.
    QString toggleActionName(const QString &name, bool active, bool global, bool globalFlag) const;
    // Where the drop install copies a file of this name, as written.
    QString installPath(const QString &fileName) const;
};

} // namespace korvane
