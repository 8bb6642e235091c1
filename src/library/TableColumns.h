#pragma once

#include <QString>
#include <QStringList>

namespace korvane::TableColumn {

// The plug-in table's column identifiers. They are data as much as names: sort keys and the
// preferences' column order and widths are kept by them, so the first ones keep the first
// version's words and the later ones follow their pattern.
inline const QString Active = QStringLiteral("AUActive");
inline const QString Name = QStringLiteral("AUName");
inline const QString Global = QStringLiteral("AUGlobal");
inline const QString Group = QStringLiteral("AUGroup");
inline const QString Architecture = QStringLiteral("AUType");
inline const QString Location = QStringLiteral("AULocation");
inline const QString Vendor = QStringLiteral("AUVendor");
inline const QString Version = QStringLiteral("AUVersion");
inline const QString Package = QStringLiteral("AUPackage");
// The plug-in's format, where one list holds several.
inline const QString Format = QStringLiteral("AUFormat");

// Every column in the order a table lays them out when no saved order says otherwise; a table
// holds those of them it shows, each once.
inline const QStringList Order{Active,       Name,     Format, Vendor,  Version,
                               Architecture, Location, Global, Package, Group};

// A format's columns: everything but the format and the architecture, which a preference adds.
inline const QStringList Defaults{Active, Name, Vendor, Version, Location, Global, Package, Group};

// columns in the layout order, each once; identifiers it does not know keep their order at the
// end.
inline QStringList inOrder(const QStringList &columns)
{
    QStringList ordered;
    for (const QString &column : Order)
        if (columns.contains(column))
            ordered << column;
    for (const QString &column : columns)
        if (!ordered.contains(column))
            ordered << column;
    return ordered;
}

} // namespace korvane::TableColumn
