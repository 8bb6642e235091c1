#pragma once

#include <QByteArray>
#include <QString>

namespace korvane {

// The first bytes of an executable and what the architecture test makes of them.
class MachOHeader {
public:
    enum Architecture { Unknown = 0, PPC = 1, Intel = 2, Universal = 3 };
    // Up to count bytes from the start of a plain file; empty when it cannot be read.
    static QByteArray firstBytes(const QString &path, int count = 8);
    // An exact match of the eight bytes against the three known patterns, else Unknown.
    static Architecture classify(const QByteArray &firstEight);
};

} // namespace korvane
