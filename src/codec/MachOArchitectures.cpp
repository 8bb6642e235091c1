#include "codec/MachOArchitectures.h"

#include <QtEndian>

namespace korvane {

namespace {

constexpr quint32 kFat = 0xCAFEBABE;   // big-endian slice table
constexpr quint32 kFat64 = 0xCAFEBABF; // the same with 64-bit offsets (32-byte entries)
constexpr quint32 kThin32 = 0xFEEDFACE;
constexpr quint32 kThin64 = 0xFEEDFACF;
constexpr quint32 kAbi64 = 0x01000000;
// More slices than any real universal file has: a Java class file starts with the same bytes
// and gives its version there, a number far larger.
constexpr quint32 kMaxSlices = 32;

quint32 big(QByteArrayView bytes, qsizetype at)
{
    return qFromBigEndian<quint32>(bytes.data() + at);
}

} // namespace

QString MachOArchitectures::cpuName(quint32 cpuType, quint32 cpuSubtype)
{
    switch (cpuType) {
    case 7:
        return QStringLiteral("i386");
    case 7 | kAbi64:
        return QStringLiteral("x86_64");
    case 12:
        return QStringLiteral("arm");
    case 12 | kAbi64:
        return (cpuSubtype & 0xff) == 2 ? QStringLiteral("arm64e") : QStringLiteral("arm64");
    case 18:
        return QStringLiteral("ppc");
    case 18 | kAbi64:
        return QStringLiteral("ppc64");
    default:
        return QStringLiteral("cpu %1").arg(cpuType);
    }
}

MachOArchitectures MachOArchitectures::parse(QByteArrayView bytes)
{
    MachOArchitectures result;
    if (bytes.size() < 8) {
        result.reason = QStringLiteral("truncated Mach-O header (%1 bytes)").arg(bytes.size());
        return result;
    }
    const quint32 magic = big(bytes, 0);
    if (magic == kFat || magic == kFat64) {
        const quint32 count = big(bytes, 4);
        const qsizetype entry = magic == kFat ? 20 : 32;
        if (count == 0 || count > kMaxSlices) {
            result.reason = QStringLiteral("not a Mach-O file");
            return result;
        }
        if (bytes.size() < 8 + qsizetype(count) * entry) {
            result.reason = QStringLiteral("truncated universal header");
            return result;
        }
        for (quint32 i = 0; i < count; ++i) {
            const qsizetype at = 8 + qsizetype(i) * entry;
            const QString name = cpuName(big(bytes, at), big(bytes, at + 4));
            if (!result.architectures.contains(name))
                result.architectures << name;
        }
        return result;
    }
    // A thin file in either byte order: the CPU type follows the magic in the same order.
    const quint32 little = qFromLittleEndian<quint32>(bytes.data());
    if (little == kThin32 || little == kThin64) {
        result.architectures << cpuName(
            qFromLittleEndian<quint32>(bytes.data() + 4),
            bytes.size() >= 12 ? qFromLittleEndian<quint32>(bytes.data() + 8) : 0);
        return result;
    }
    if (magic == kThin32 || magic == kThin64) {
        result.architectures << cpuName(big(bytes, 4), bytes.size() >= 12 ? big(bytes, 8) : 0);
        return result;
    }
    result.reason = QStringLiteral("not a Mach-O file");
    return result;
}

} // namespace korvane
