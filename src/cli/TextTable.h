#pragma once

#include <QList>
#include <QStringList>

class QTextStream;

namespace korvane {

// Rows of text printed in aligned columns, two spaces apart; the last column is not padded.
class TextTable {
public:
    void addRow(const QStringList &cells) { m_rows << cells; }
    bool isEmpty() const { return m_rows.isEmpty(); }
    void print(QTextStream &out) const;

private:
    QList<QStringList> m_rows;
};

} // namespace korvane
