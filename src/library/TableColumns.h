#pragma once

#include <QString>

namespace korvane::TableColumn {

// The plug-in table's column identifiers. They are data as much as names: sort keys and the
// preferences' column order and widths are kept by them, so they keep the first version's words.
inline const QString Active = QStringLiteral("AUActive");
inline const QString Name = QStringLiteral("AUName");
inline const QString Global = QStringLiteral("AUGlobal");
inline const QString Group = QStringLiteral("AUGroup");
inline const QString Architecture = QStringLiteral("AUType");
inline const QString Location = QStringLiteral("AULocation");

} // namespace korvane::TableColumn
