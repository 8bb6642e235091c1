#pragma once

#include "model/AUItem.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace korvane {

// A set document: the archive of a manager's whole item list, each item as its four objects.
class SetDocument {
public:
    static QByteArray encode(const QList<AUItemPtr> &items);
    // Anything that is not an array of items decodes as empty: damaged documents are unreadable.
    static QList<AUItemPtr> decode(const QByteArray &bytes);
    static bool write(const QString &path, const QList<AUItemPtr> &items);
    static QList<AUItemPtr> read(const QString &path);
    // Whether the file exists and holds a readable set document.
    static bool isReadable(const QString &path);
};

} // namespace korvane
