#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringList>

namespace korvane {

// The architectures a Mach-O file holds: a thin file's one, or each slice of a universal
// ("fat") file, from its first bytes. Malformed or short input gives a reason, never a guess.
struct MachOArchitectures {
    // How many bytes the header and a fat file's slice table need at most.
    static constexpr int BytesNeeded = 8 + 20 * 32;

    QStringList architectures; // "x86_64", "arm64", "i386", "ppc", "arm64e"...
    QString reason;            // why none, when architectures is empty: "not a Mach-O file"

    static MachOArchitectures parse(QByteArrayView firstBytes);
    // A CPU type's name; "cpu N" for one without a name here.
    static QString cpuName(quint32 cpuType, quint32 cpuSubtype);
};

} // namespace korvane
