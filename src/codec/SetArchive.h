#pragma once

#include "codec/TypedStream.h"

#include <QByteArray>
#include <QList>
#include <QStringList>
#include <optional>

namespace korvane {

// The bytes of a set document: a typed-stream archive of an array of objects of the class
// "AUItem", one per plug-in, each holding its four strings (name, location, then "YES" or "NO"
// for global and active). The class name and the layout are what existing documents hold.
class SetArchive {
public:
    // Each item as its four strings; the flag strings are archived once and referenced after.
    static QByteArray encode(const QList<QStringList> &items);
    // Each item object's elements, as archived; nullopt when the bytes hold no array of item
    // objects (a damaged document is unreadable as a whole).
    static std::optional<QList<QList<ArchivedObjectPtr>>> decode(const QByteArray &bytes);
};

} // namespace korvane
