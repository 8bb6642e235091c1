#include "cli/TextTable.h"

#include <QTextStream>

namespace korvane {

void TextTable::print(QTextStream &out) const
{
    QList<qsizetype> widths;
    for (const QStringList &row : m_rows) {
        for (qsizetype c = 0; c < row.size(); ++c) {
            if (c == widths.size())
                widths << 0;
            widths[c] = qMax(widths[c], row.at(c).size());
        }
    }
    for (const QStringList &row : m_rows) {
        QString line;
        for (qsizetype c = 0; c < row.size(); ++c) {
            if (c + 1 < row.size())
                line += row.at(c).leftJustified(widths.at(c)) + QStringLiteral("  ");
            else
                line += row.at(c);
        }
        out << line << '\n';
    }
    out.flush();
}

} // namespace korvane
