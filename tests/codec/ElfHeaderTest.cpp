#include "codec/ElfHeader.h"

#include "LinuxPluginFixtures.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QtEndian>

#include <sys/stat.h>

// The ELF header reader on Debian's real plug-ins (copied) and on headers of other machines.
namespace korvane {
namespace {

using F = LinuxPluginFixtures;

// A header as a linker writes it: class, byte order, type, machine and flags at their offsets.
QByteArray header(int bits, bool bigEndian, quint16 type, quint16 machine, quint32 flags = 0)
{
    QByteArray bytes(bits == 64 ? 64 : 52, '\0');
    bytes.replace(0, 4,
                  "\x7f"
                  "ELF");
    bytes[4] = char(bits == 64 ? 2 : 1);
    bytes[5] = char(bigEndian ? 2 : 1);
    bytes[6] = 1;
    auto put16 = [&](int offset, quint16 value) {
        if (bigEndian)
            qToBigEndian(value, bytes.data() + offset);
        else
            qToLittleEndian(value, bytes.data() + offset);
    };
    auto put32 = [&](int offset, quint32 value) {
        if (bigEndian)
            qToBigEndian(value, bytes.data() + offset);
        else
            qToLittleEndian(value, bytes.data() + offset);
    };
    put16(16, type);
    put16(18, machine);
    put32(20, 1);
    put32(bits == 64 ? 48 : 36, flags);
    return bytes;
}

class ElfHeaderTest : public TestRoots {};

TEST_F(ElfHeaderTest, DebiansPluginsAreSharedObjectsOfThisMachine)
{
    const QStringList sources{
        QStringLiteral("/usr/lib/ladspa/amp_1181.so"),
        QStringLiteral("/usr/lib/x86_64-linux-gnu/dssi/trivial_synth.so"),
        QStringLiteral("/usr/lib/vst/MVerb-vst.so"),
        QStringLiteral("/usr/lib/lv2/lsp-plugins.lv2/lsp-plugins-lv2-1.2.5.so")};
    int read = 0;
    for (const QString &source : sources) {
        if (!F::systemHas(source))
            continue;
        const QString copy = F::copyFromSystem(source, root());
        ASSERT_FALSE(copy.isEmpty()) << qPrintable(source);
        const ElfHeader elf = ElfHeader::read(copy);
        ASSERT_TRUE(elf.valid) << qPrintable(elf.reason);
        EXPECT_TRUE(elf.isSharedObject());
        EXPECT_EQ(elf.bits, 64);
        EXPECT_FALSE(elf.bigEndian);
        EXPECT_EQ(elf.describe(), "x86_64") << qPrintable(source);
        EXPECT_EQ(elf.typeText(), "shared object");
        ++read;
    }
    if (read == 0)
        GTEST_SKIP() << "no plug-in packages installed (tools/setup.sh)";
}

TEST_F(ElfHeaderTest, NamesTheArchitecturesAndTheFloatAbi)
{
    const struct {
        QByteArray bytes;
        const char *name;
    } cases[] = {
        {header(64, false, 3, ElfHeader::X86_64), "x86_64"},
        {header(64, false, 3, ElfHeader::AArch64), "aarch64"},
        {header(32, false, 3, ElfHeader::I386), "i386"},
        {header(32, false, 3, ElfHeader::Arm, 0x05000400), "armhf"},
        {header(32, false, 3, ElfHeader::Arm, 0x05000200), "armel"},
        {header(64, false, 3, ElfHeader::RiscV, 0x5), "riscv64"},
        {header(64, false, 3, ElfHeader::PowerPC64, 0x2), "ppc64le"},
        {header(64, true, 3, ElfHeader::PowerPC64, 0x1), "ppc64"},
        {header(64, true, 3, 22), "machine 22"}, // s390x: no name here, its number instead
    };
    for (const auto &c : cases) {
        const ElfHeader elf = ElfHeader::parse(c.bytes);
        EXPECT_TRUE(elf.valid) << c.name;
        EXPECT_EQ(elf.describe(), QString::fromLatin1(c.name));
    }
    // A big-endian header reads its fields big-endian.
    const ElfHeader big = ElfHeader::parse(header(64, true, 3, 22));
    EXPECT_EQ(big.machine, 22);
    EXPECT_TRUE(big.isSharedObject());
}

TEST_F(ElfHeaderTest, SaysPlainlyWhatIsNotASharedObject)
{
    EXPECT_EQ(ElfHeader::parse(header(64, false, 2, 62)).typeText(),
              "not a shared object: an executable");
    EXPECT_EQ(ElfHeader::parse(header(64, false, 1, 62)).typeText(),
              "not a shared object: an object file");
    EXPECT_EQ(ElfHeader::parse(header(64, false, 9, 62)).typeText(), "not a shared object: type 9");
    EXPECT_FALSE(ElfHeader::parse(header(64, false, 2, 62)).isSharedObject());
}

TEST_F(ElfHeaderTest, TruncatedAndMalformedHeadersGiveAReason)
{
    const QByteArray full = header(64, false, 3, ElfHeader::X86_64);
    for (int size = 0; size < full.size(); ++size) {
        const ElfHeader elf = ElfHeader::parse(full.left(size));
        EXPECT_FALSE(elf.valid) << size;
        EXPECT_FALSE(elf.reason.isEmpty()) << size;
        EXPECT_EQ(elf.describe(), elf.reason);
    }
    EXPECT_EQ(ElfHeader::parse(full.left(3)).reason, "not an ELF file");
    EXPECT_EQ(ElfHeader::parse(full.left(12)).reason, "truncated ELF header (12 bytes)");
    EXPECT_EQ(ElfHeader::parse(full.left(40)).reason, "truncated ELF header (40 of 64 bytes)");
    EXPECT_TRUE(ElfHeader::parse(header(32, false, 3, 3)).valid); // 52 bytes are a whole header

    QByteArray badClass = full;
    badClass[4] = 7;
    EXPECT_EQ(ElfHeader::parse(badClass).reason, "malformed ELF header: unknown class 7");
    QByteArray badOrder = full;
    badOrder[5] = 0;
    EXPECT_EQ(ElfHeader::parse(badOrder).reason, "malformed ELF header: unknown byte order 0");
    EXPECT_EQ(ElfHeader::parse("#!/bin/sh\n").reason, "not an ELF file");
}

TEST_F(ElfHeaderTest, ReadsOnlyRegularFiles)
{
    const QString file = root() + "/Plugin.so";
    writeText(file, header(64, false, 3, ElfHeader::AArch64) + QByteArray(4096, 'x'));
    EXPECT_EQ(ElfHeader::read(file).describe(), "aarch64");

    const QString fifo = root() + "/fifo.so";
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    EXPECT_EQ(ElfHeader::read(fifo).reason, "cannot be read: not a regular file"); // no blocking
    EXPECT_EQ(ElfHeader::read(root()).reason, "cannot be read: it is a folder");
    EXPECT_EQ(ElfHeader::read(root() + "/missing.so").reason,
              "cannot be read: No such file or directory");
    EXPECT_EQ(ElfHeader::read(file + "/inside.so").reason,
              "cannot be read: a file stands where a folder should be");
}

} // namespace
} // namespace korvane
