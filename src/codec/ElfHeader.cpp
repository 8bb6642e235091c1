#include "codec/ElfHeader.h"

#include "codec/FileBytes.h"

namespace korvane {

namespace {

constexpr int kIdentSize = 16;
constexpr unsigned char kHardFloat = 0x04; // EF_ARM_ABI_FLOAT_HARD is 0x400: byte 1 of e_flags

quint32 field(QByteArrayView bytes, qsizetype offset, int size, bool bigEndian)
{
    quint32 value = 0;
    for (int i = 0; i < size; ++i) {
        const quint32 byte = quint8(bytes[offset + (bigEndian ? i : size - 1 - i)]);
        value = (value << 8) | byte;
    }
    return value;
}

QString machineName(quint16 machine, int bits, bool bigEndian, quint32 flags)
{
    switch (machine) {
    case ElfHeader::X86_64:
        return bits == 64 ? QStringLiteral("x86_64") : QStringLiteral("x32");
    case ElfHeader::AArch64:
        return bigEndian ? QStringLiteral("aarch64_be") : QStringLiteral("aarch64");
    case ElfHeader::I386:
        return QStringLiteral("i386");
    case ElfHeader::Arm:
        return (flags & (quint32(kHardFloat) << 8)) ? QStringLiteral("armhf")
                                                    : QStringLiteral("armel");
    case ElfHeader::RiscV:
        return bits == 64 ? QStringLiteral("riscv64") : QStringLiteral("riscv32");
    case ElfHeader::PowerPC64:
        return bigEndian ? QStringLiteral("ppc64") : QStringLiteral("ppc64le");
    case ElfHeader::PowerPC:
        return QStringLiteral("powerpc");
    default:
        return {};
    }
}

} // namespace

ElfHeader ElfHeader::parse(QByteArrayView bytes)
{
    ElfHeader header;
    if (bytes.size() < 4
        || !bytes.startsWith(QByteArrayView("\x7f"
                                            "ELF",
                                            4))) {
        header.reason = QStringLiteral("not an ELF file");
        return header;
    }
    if (bytes.size() < kIdentSize) {
        header.reason = QStringLiteral("truncated ELF header (%1 bytes)").arg(bytes.size());
        return header;
    }
    const quint8 elfClass = quint8(bytes[4]);
    const quint8 data = quint8(bytes[5]);
    if (elfClass != 1 && elfClass != 2) {
        header.reason = QStringLiteral("malformed ELF header: unknown class %1").arg(elfClass);
        return header;
    }
    if (data != 1 && data != 2) {
        header.reason = QStringLiteral("malformed ELF header: unknown byte order %1").arg(data);
        return header;
    }
    header.bits = elfClass == 1 ? 32 : 64;
    header.bigEndian = data == 2;
    // e_flags follows e_entry, e_phoff and e_shoff, whose size is the class's word size.
    const qsizetype flagsOffset = header.bits == 64 ? 48 : 36;
    const qsizetype needed = header.bits == 64 ? 64 : 52;
    if (bytes.size() < needed) {
        header.reason =
            QStringLiteral("truncated ELF header (%1 of %2 bytes)").arg(bytes.size()).arg(needed);
        return header;
    }
    header.type = quint16(field(bytes, 16, 2, header.bigEndian));
    header.machine = quint16(field(bytes, 18, 2, header.bigEndian));
    header.flags = field(bytes, flagsOffset, 4, header.bigEndian);
    header.architecture = machineName(header.machine, header.bits, header.bigEndian, header.flags);
    header.valid = true;
    return header;
}

ElfHeader ElfHeader::read(const QString &path)
{
    const FileBytes file = FileBytes::read(path, BytesNeeded, FileBytes::Prefix);
    if (!file.error.isEmpty()) {
        ElfHeader header;
        header.reason = file.error;
        return header;
    }
    return parse(file.bytes);
}

QString ElfHeader::describe() const
{
    if (!valid)
        return reason;
    if (!architecture.isEmpty())
        return architecture;
    return QStringLiteral("machine %1").arg(machine);
}

QString ElfHeader::typeText() const
{
    if (!valid)
        return reason;
    switch (type) {
    case SharedObject:
        return QStringLiteral("shared object");
    case Executable:
        return QStringLiteral("not a shared object: an executable");
    case Relocatable:
        return QStringLiteral("not a shared object: an object file");
    case Core:
        return QStringLiteral("not a shared object: a core dump");
    default:
        return QStringLiteral("not a shared object: type %1").arg(type);
    }
}

} // namespace korvane
