#include "cli/TextTable.h"

#include <QTextStream>

#include <algorithm>
#include <climits>

namespace korvane {

namespace {

constexpr qsizetype kGap = 2;
const QString kEllipsis = QStringLiteral("…");

bool isBlank(const QString &cell)
{
    return cell.isEmpty() || cell == QLatin1String("-");
}

QString cut(const QString &cell, qsizetype width)
{
    if (cell.size() <= width)
        return cell;
    return width <= 1 ? kEllipsis.left(width) : cell.left(width - 1) + kEllipsis;
}

} // namespace

void TextTable::print(QTextStream &out, int width, bool header) const
{
    qsizetype count = 0;
    for (const QStringList &row : m_rows)
        count = std::max(count, row.size());
    const bool named = !m_columns.isEmpty();
    if (named)
        count = std::max(count, m_columns.size());

    // Which columns are shown, and each one's width.
    QList<bool> shown(count, true);
    QList<qsizetype> widths(count, 0);
    for (qsizetype c = 0; c < count; ++c) {
        const Column column = c < m_columns.size() ? m_columns.at(c) : Column{};
        bool blank = true;
        for (const QStringList &row : m_rows) {
            const QString cell = row.value(c);
            widths[c] = std::max(widths[c], cell.size());
            blank = blank && isBlank(cell);
        }
        if (header)
            widths[c] = std::max(widths[c], column.title.size());
        if (column.hideIfEmpty && blank)
            shown[c] = false;
    }

    const auto lineWidth = [&] {
        qsizetype total = 0;
        qsizetype columns = 0;
        for (qsizetype c = 0; c < count; ++c) {
            if (!shown[c])
                continue;
            total += widths[c];
            ++columns;
        }
        return total + kGap * std::max<qsizetype>(columns - 1, 0);
    };
    if (named && width > 0 && count > 0) {
        const auto dropNext = [&](int from, int to) {
            int best = -1;
            for (qsizetype c = 0; c + 1 < count; ++c) {
                const int order = m_columns.value(c).dropOrder;
                if (shown[c] && order >= from && order <= to
                    && (best < 0 || order < m_columns.at(best).dropOrder))
                    best = int(c);
            }
            if (best >= 0)
                shown[best] = false;
            return best >= 0;
        };
        // The last column keeps up to half the line; the others share the rest.
        const qsizetype lastWidth = std::min<qsizetype>(widths[count - 1], width / 2);
        const QList<qsizetype> natural = widths;
        const auto fits = [&] { return lineWidth() - widths[count - 1] + lastWidth <= width; };
        // The first to drop, before anything is cut.
        while (!fits() && dropNext(1, 1)) {
        }
        for (qsizetype c = 0; c + 1 < count && !fits(); ++c) {
            const int minimum = m_columns.value(c).minWidth;
            if (!shown[c] || minimum <= 0 || widths[c] <= minimum)
                continue;
            const qsizetype excess = lineWidth() - widths[count - 1] + lastWidth - width;
            widths[c] = std::max<qsizetype>(minimum, widths[c] - excess);
        }
        while (!fits() && dropNext(2, INT_MAX)) {
        }
        // What a drop freed goes back to the columns that were cut.
        for (qsizetype c = 0; c + 1 < count; ++c) {
            const qsizetype room = width - (lineWidth() - widths[count - 1] + lastWidth);
            if (room <= 0)
                break;
            if (shown[c])
                widths[c] = std::min(natural[c], widths[c] + room);
        }
    }

    const auto printRow = [&](const QStringList &cells) {
        QString line;
        qsizetype last = count - 1;
        while (last >= 0 && !shown[last])
            --last;
        for (qsizetype c = 0; c <= last; ++c) {
            if (!shown[c])
                continue;
            const QString cell = cells.value(c);
            if (c == last) {
                line += cell;
                break;
            }
            line += cut(cell, widths[c]).leftJustified(widths[c]) + QString(kGap, u' ');
        }
        out << line << '\n';
    };
    if (header && named) {
        QStringList titles;
        for (const Column &column : m_columns)
            titles << column.title;
        printRow(titles);
    }
    for (const QStringList &row : m_rows) {
        // Rows shorter than the table end where they end, as before.
        if (!named) {
            QString line;
            for (qsizetype c = 0; c < row.size(); ++c)
                line += c + 1 < row.size()
                            ? row.at(c).leftJustified(widths.at(c)) + QStringLiteral("  ")
                            : row.at(c);
            out << line << '\n';
            continue;
        }
        printRow(row);
    }
    out.flush();
}

} // namespace korvane
