#pragma once

#include <QList>
#include <QStringList>

class QTextStream;

namespace korvane {

// Rows of text printed in aligned columns, two spaces apart; the last column is not padded.
// With named columns a table can show a header and fit a width: a column that is empty in every
// row goes where the column says so, then, while the line is too wide, the first columns to drop
// go, the shortenable ones are cut (with "…") and the rest drop in their order. The last column
// is never cut: it is what a person copies (a path).
class TextTable {
public:
    struct Column {
        QString title;
        int dropOrder = 0;        // 1 drops first when the width is short; 0: never dropped
        int minWidth = 0;         // cut down to this at most; 0: never cut
        bool hideIfEmpty = false; // left out when no row has anything but "-" or nothing
    };

    void setColumns(const QList<Column> &columns) { m_columns = columns; }
    void addRow(const QStringList &cells) { m_rows << cells; }
    bool isEmpty() const { return m_rows.isEmpty(); }
    // width 0: as wide as the cells; header: the titles first.
    void print(QTextStream &out, int width = 0, bool header = false) const;

private:
    QList<Column> m_columns;
    QList<QStringList> m_rows;
};

} // namespace korvane
