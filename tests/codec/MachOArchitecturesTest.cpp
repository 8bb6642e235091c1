#include "codec/MachOArchitectures.h"

#include <QtEndian>
#include <gtest/gtest.h>

namespace korvane {
namespace {

QByteArray big(std::initializer_list<quint32> words)
{
    QByteArray bytes;
    for (quint32 word : words) {
        char buffer[4];
        qToBigEndian(word, buffer);
        bytes.append(buffer, 4);
    }
    return bytes;
}

TEST(MachOArchitecturesTest, UniversalFilesNameEachSliceAndThinFilesTheirOne)
{
    const QByteArray universal = big({0xCAFEBABE, 3, 0x01000007, 3, 4096, 1, 12, 0x0100000C, 0,
                                      8192, 1, 14, 0x0100000C, 2, 12288, 1, 14});
    EXPECT_EQ(MachOArchitectures::parse(universal).architectures,
              QStringList({"x86_64", "arm64", "arm64e"}));
    // A slice named twice is named once.
    EXPECT_EQ(
        MachOArchitectures::parse(big({0xCAFEBABE, 2, 7, 3, 0, 0, 0, 7, 3, 0, 0, 0})).architectures,
        QStringList({"i386"}));

    QByteArray thin(28, '\0');
    qToLittleEndian<quint32>(0xFEEDFACF, thin.data());
    qToLittleEndian<quint32>(0x0100000C, thin.data() + 4);
    EXPECT_EQ(MachOArchitectures::parse(thin).architectures, QStringList({"arm64"}));
    EXPECT_EQ(MachOArchitectures::parse(big({0xFEEDFACE, 18, 0})).architectures,
              QStringList({"ppc"}));
}

TEST(MachOArchitecturesTest, WhatIsNoMachOFileIsRefusedWithAReason)
{
    for (const QByteArray &bytes : {QByteArray(),
                                    QByteArray("\x7f"
                                               "ELF\x02\x01\x01\x00"),
                                    big({0xCAFEBABE, 0x34}),             // a Java class file
                                    big({0xCAFEBABE, 2, 7, 3, 0, 0, 0}), // a slice table cut short
                                    big({0xCAFEBABE, 0})}) {
        const MachOArchitectures result = MachOArchitectures::parse(bytes);
        EXPECT_TRUE(result.architectures.isEmpty());
        EXPECT_FALSE(result.reason.isEmpty());
    }
}

} // namespace
} // namespace korvane
