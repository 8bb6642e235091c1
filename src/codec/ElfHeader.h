#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace korvane {

// What the first bytes of a file say about it as an ELF object, without loading it: the class,
// the byte order, the type and the machine. Malformed or short input gives a reason, never a
// guess.
struct ElfHeader {
    // The 64-bit header is 64 bytes long; every field read here lies inside it.
    static constexpr int BytesNeeded = 64;

    enum Type : quint16 { None = 0, Relocatable = 1, Executable = 2, SharedObject = 3, Core = 4 };
    enum Machine : quint16 {
        I386 = 3,
        PowerPC = 20,
        PowerPC64 = 21,
        Arm = 40,
        X86_64 = 62,
        AArch64 = 183,
        RiscV = 243,
    };

    bool valid = false; // an ELF header whose fields could all be read
    QString reason; // why not, when !valid: "not an ELF file", "truncated ELF header (12 bytes)"
    int bits = 0;   // 32 or 64
    bool bigEndian = false;
    quint16 type = None;
    quint16 machine = 0;
    quint32 flags = 0;    // e_flags; on ARM they tell hard-float from soft-float
    QString architecture; // x86_64, aarch64, i386, armhf, armel, riscv64, ppc64le, ...; empty when
                          // the machine has no name here

    bool isSharedObject() const { return valid && type == SharedObject; }
    // The architecture's name, else "machine N"; the reason when the header is not valid.
    QString describe() const;
    // "shared object", or what the file is instead, said plainly ("not a shared object: an
    // executable").
    QString typeText() const;

    // Reads the header from the first bytes of a file (more than BytesNeeded are ignored).
    static ElfHeader parse(QByteArrayView firstBytes);
    // Reads at most BytesNeeded bytes of a regular file; a folder, a pipe or a device is refused
    // without being opened for reading in a way that could block.
    static ElfHeader read(const QString &path);
};

} // namespace korvane
