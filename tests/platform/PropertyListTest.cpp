#include "platform/PropertyList.h"
#include "support/TestRoots.h"

#include <QDateTime>
#include <QDir>
#include <QtEndian>

namespace korvane {
namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A binary property list from raw objects, with four-byte offsets and references of refSize bytes.
QByteArray binaryPlist(const QList<QByteArray> &objects, quint64 top = 0, int refSize = 1)
{
    QByteArray bytes("bplist00");
    QByteArray table;
    for (const QByteArray &object : objects) {
        table += QByteArray(4, '\0');
        qToBigEndian<quint32>(quint32(bytes.size()), table.data() + table.size() - 4);
        bytes += object;
    }
    QByteArray trailer(32, '\0');
    trailer[6] = 4;
    trailer[7] = char(refSize);
    qToBigEndian<quint64>(quint64(objects.size()), trailer.data() + 8);
    qToBigEndian<quint64>(top, trailer.data() + 16);
    qToBigEndian<quint64>(quint64(bytes.size()), trailer.data() + 24);
    return bytes + table + trailer;
}

// Objects 0..count-1, each an array holding `width` references to the next one; the last is empty.
QByteArray chainOfArrays(int count, int width)
{
    QList<QByteArray> objects;
    for (int i = 0; i < count - 1; ++i) {
        QByteArray object(1 + 2 * width, char(0xA0 | width));
        for (int j = 0; j < width; ++j)
            qToBigEndian<quint16>(quint16(i + 1), object.data() + 1 + 2 * j);
        objects.append(object);
    }
    objects.append(QByteArray(1, char(0xA0)));
    return binaryPlist(objects, 0, 2);
}

class PlistReadingTest : public TestRoots {};

// Both files hold the same dictionary, written by Python's plistlib, a writer independent of ours.
TEST_F(PlistReadingTest, XmlAndBinaryReadTheSameValues)
{
    const auto xml = PropertyList::readDictionary(QStringLiteral(KORVANE_TEST_DATA "/plist/Info-xml.plist"));
    const auto binary = PropertyList::readDictionary(QStringLiteral(KORVANE_TEST_DATA "/plist/Info-binary.plist"));
    ASSERT_TRUE(xml);
    ASSERT_TRUE(binary);

    for (const QVariantMap &info : {*xml, *binary}) {
        EXPECT_EQ(info.value("Name").toString(), QString::fromUtf8("Grüße"));
        EXPECT_EQ(info.value("Enabled").typeId(), QMetaType::Bool);
        EXPECT_TRUE(info.value("Enabled").toBool());
        EXPECT_FALSE(info.value("Hidden").toBool());
        EXPECT_EQ(info.value("Count"), QVariant(qint64(42)));
        EXPECT_EQ(info.value("Offset"), QVariant(qint64(-7)));
        EXPECT_EQ(info.value("Huge"), QVariant(quint64(18446744073709551615ULL)));
        EXPECT_EQ(info.value("Gain"), QVariant(0.5));
        EXPECT_EQ(info.value("Blob").toByteArray(), QByteArray::fromHex("0001feff"));
        EXPECT_EQ(info.value("Built").toDateTime(), QDateTime(QDate(2007, 3, 4), QTime(5, 6, 7), Qt::UTC));
        const QVariantList tags = info.value("Tags").toList();
        ASSERT_EQ(tags.size(), 3);
        EXPECT_EQ(tags[1].toString(), "Acme");
        EXPECT_EQ(tags[2].typeId(), QMetaType::QVariantList);
        EXPECT_EQ(info.value("Nested").toMap().value("Depth"), QVariant(qint64(2)));
        EXPECT_EQ(info.value("Nested").toMap().value("Empty").typeId(), QMetaType::QVariantMap);
    }
    EXPECT_EQ(*xml, *binary);

    // What we write reads back unchanged, in either form.
    EXPECT_EQ(PropertyList::fromBytes(PropertyList::toXml(*xml)), QVariant(*xml));
    EXPECT_EQ(PropertyList::fromBytes(PropertyList::toBinary(*xml)), QVariant(*xml));
}

TEST_F(PlistReadingTest, TypedReadersRefuseOtherShapes)
{
    const QString path = homePath("list.plist");
    ASSERT_TRUE(PropertyList::writeXml(path, QVariantList{QStringLiteral("a"), qint64(2)}));
    EXPECT_TRUE(PropertyList::readArray(path));
    EXPECT_FALSE(PropertyList::readDictionary(path));
    EXPECT_FALSE(PropertyList::readStringArray(path));

    ASSERT_TRUE(PropertyList::writeXml(path, QStringList{"a", "b"}));
    EXPECT_EQ(PropertyList::readStringArray(path), QStringList({"a", "b"}));
    EXPECT_FALSE(PropertyList::read(homePath("missing.plist")));

    // A UID reads as its number.
    EXPECT_EQ(PropertyList::fromBytes(binaryPlist({QByteArray::fromHex("8007")})), QVariant(qint64(7)));
}

TEST_F(PlistReadingTest, MalformedBytesReadAsAbsent)
{
    const QByteArray xml = readAll(QStringLiteral(KORVANE_TEST_DATA "/plist/Info-xml.plist"));
    const QByteArray binary = readAll(QStringLiteral(KORVANE_TEST_DATA "/plist/Info-binary.plist"));
    ASSERT_FALSE(xml.isEmpty());
    ASSERT_FALSE(binary.isEmpty());

    QByteArray badOffset = binary;
    badOffset[badOffset.size() - 32 - 3] = char(0xF0); // an offset past the table
    QByteArray badTable = binary;
    qToBigEndian<quint64>(0x7FFFFFFFFFFFFFF0ULL, badTable.data() + badTable.size() - 8);
    QByteArray manyObjects = binary;
    qToBigEndian<quint64>(0xFFFFFFFFFFFFULL, manyObjects.data() + manyObjects.size() - 24);

    const QList<QByteArray> cases = {
        QByteArray(),
        QByteArray("garbage"),
        QByteArray(4096, '\xFF'),
        xml.left(xml.size() / 2),
        binary.left(binary.size() / 2),
        QByteArray("bplist00") + QByteArray(40, '\0'),
        badOffset,
        badTable,
        manyObjects,
        binaryPlist({QByteArray::fromHex("a0")}, 5),          // top object out of range
        binaryPlist({QByteArray::fromHex("a100")}),           // an array that holds itself
        binaryPlist({QByteArray::fromHex("a109")}),           // a reference to nothing
        binaryPlist({QByteArray::fromHex("af")}),             // a count that never comes
        binaryPlist({QByteArray::fromHex("526100")}),         // a NUL inside a string
        binaryPlist({QByteArray::fromHex("d10102"), QByteArray::fromHex("6200610000"), QByteArray::fromHex("09")}), // and a key
        QByteArray("<plist><string>a") + '\0' + "b</string></plist>",
        chainOfArrays(5000, 1),                               // nested deeper than the stack allows
        chainOfArrays(40, 2),                                 // 2^40 nodes once expanded
        "<plist>" + QByteArray("<array>").repeated(200000) + QByteArray("</array>").repeated(200000) + "</plist>",
    };
    for (qsizetype i = 0; i < cases.size(); ++i)
        EXPECT_FALSE(PropertyList::fromBytes(cases[i])) << "case " << i;

    // Every truncation and every single-byte change must be survived, whatever it reads as.
    for (qsizetype length = 0; length < binary.size(); ++length)
        PropertyList::fromBytes(binary.left(length));
    for (qsizetype length = 0; length < xml.size(); length += 7)
        PropertyList::fromBytes(xml.left(length));
    for (qsizetype i = 0; i < binary.size(); ++i) {
        for (const char value : {char(0x00), char(0xFF), char(0x7F), char(binary[i] ^ 0x01)}) {
            QByteArray mutated = binary;
            mutated[i] = value;
            PropertyList::fromBytes(mutated);
        }
    }
}

class PlistWritingTest : public TestRoots {};

TEST_F(PlistWritingTest, FailedWriteLeavesOldFileWhole)
{
    const QString folder = homePath("Prefs");
    const QString path = folder + "/settings.plist";
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(PropertyList::writeXml(path, QVariantMap{{"Version", qint64(1)}}));
    const QByteArray before = readAll(path);

    {
        ImmutableGuard guard(folder);
        if (!guard.ok())
            GTEST_SKIP() << "chattr +i is not available here";
        EXPECT_FALSE(PropertyList::writeXml(path, QVariantMap{{"Version", qint64(2)}}));
    }
    EXPECT_EQ(readAll(path), before);
    EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{"settings.plist"});
    EXPECT_EQ(PropertyList::readDictionary(path)->value("Version"), QVariant(qint64(1)));
}

TEST_F(PlistWritingTest, MissingFolderIsNotCreated)
{
    EXPECT_FALSE(PropertyList::writeXml(homePath("Nowhere/x.plist"), QVariantList{}));
    EXPECT_FALSE(QFileInfo::exists(homePath("Nowhere")));
}

} // namespace
} // namespace korvane
