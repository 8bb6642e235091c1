#pragma once

#include "core/Format.h"

#include <QList>
#include <QString>
#include <optional>

namespace korvane {

// The formats a run of the program knows, by type index.
class FormatTable {
public:
    // Audio Units, RTAS, MAS, VST.
    static const FormatTable &builtIn();

    int count() const { return int(m_rows.size()); }
    bool isValid(int type) const { return type >= 0 && type < count(); }
    const Format &at(int type) const { return m_rows.at(type); }
    const Format *find(int type) const { return isValid(type) ? &m_rows.at(type) : nullptr; }
    QList<Format>::const_iterator begin() const { return m_rows.cbegin(); }
    QList<Format>::const_iterator end() const { return m_rows.cend(); }

    // The format whose prefix is name, in any case ("au", "-AU" without the dash); nullopt for
    // none.
    std::optional<int> typeOfName(const QString &name) const;
    // The type whose tab identifier is given; -1 for none.
    int typeOfTabIdentifier(const QString &identifier) const;

    // This table with one more row, which gets the next type index.
    FormatTable with(Format format) const;

private:
    QList<Format> m_rows;
};

} // namespace korvane
