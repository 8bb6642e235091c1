#include "codec/PropertyList.h"
#include "support/TestRoots.h"

#include <QDataStream>
#include <QDateTime>
#include <QDir>

// Property lists, XML and binary, from files other programs wrote and from damaged bytes.
namespace korvane {
namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

const QString kXml = QStringLiteral(KORVANE_TEST_DATA "/plist/Info-xml.plist");
const QString kBinary = QStringLiteral(KORVANE_TEST_DATA "/plist/Info-binary.plist");

// A binary property list from raw objects, with four-byte offsets and refSize-byte references.
QByteArray binaryPlist(const QList<QByteArray> &objects, quint64 top = 0, quint8 refSize = 1)
{
    QByteArray bytes("bplist00"), table;
    QDataStream out(&table, QIODevice::WriteOnly); // big-endian
    for (const QByteArray &object : objects) {
        out << quint32(bytes.size());
        bytes += object;
    }
    out << quint32(0) << quint16(0) << quint8(4) << refSize << quint64(objects.size()) << top
        << quint64(bytes.size());
    return bytes + table;
}

// Objects 0..count-1, each an array of `width` references to the next; the last is empty.
QByteArray chainOfArrays(int count, int width)
{
    QList<QByteArray> objects;
    for (int i = 1; i < count; ++i)
        objects.append(char(0xA0 | width)
                       + (QByteArray(1, char(i >> 8)) + char(i)).repeated(width));
    objects.append(QByteArray(1, char(0xA0)));
    return binaryPlist(objects, 0, 2);
}

class PropertyListTest : public TestRoots {};

// The fixtures were written by Python's plistlib, a writer independent of ours. Looking up one key
// gives what converting the whole dictionary gives: the last of a repeated key (only damaged or
// hand-made files repeat one), nothing for a missing one. A byte-order mark at the start of a key
// or a string is text like any other.
TEST_F(PropertyListTest, EveryReaderGivesTheSameValues)
{
    const QVariantMap values{
        {"Blob", QByteArray::fromHex("0001feff")},
        {"Built", QDateTime(QDate(2007, 3, 4), QTime(5, 6, 7), Qt::UTC)},
        {"CFBundleExecutable", "Plugin"},
        {"Count", qint64(42)},
        {"Offset", qint64(-7)},
        {"Enabled", true},
        {"Hidden", false},
        {"Gain", 0.5},
        {"Huge", quint64(18446744073709551615ULL)},
        {"Name", QString::fromUtf8("Grüße")},
        {"Nested", QVariantMap{{"Depth", qint64(2)}, {"Empty", QVariantMap()}}},
        {"Tags", QVariantList{"aumu", "Acme", QVariantList()}},
    };
    const QString bom{QChar(QChar::ByteOrderMark)};
    // {A: "first", B: "b", A: "second"}; 0x5n starts an n-character string ("Q" is 0x51).
    const QByteArray repeated =
        binaryPlist({QByteArray::fromHex("d3010201030405"), "QA", "QB", "Ufirst", "Qb", "Vsecond"});
    const QList<std::pair<QByteArray, QVariantMap>> cases = {
        {readAll(kXml), values},
        {readAll(kBinary), values},
        {PropertyList::toXml(values), values},
        {PropertyList::toBinary(values), values},
        {repeated, {{"A", "second"}, {"B", "b"}}},
        {"<plist><dict><key>\xEF\xBB\xBF"
         "A</key><string>\xEF\xBB\xBF"
         "v</string></dict></plist>",
         {{bom + "A", bom + "v"}}},
    };
    for (const auto &[bytes, expected] : cases) {
        SCOPED_TRACE(bytes.left(8).toStdString());
        const auto parsed = PropertyList::parsedDictionary(bytes);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(PropertyList::fromBytes(bytes), QVariant(expected));
        EXPECT_EQ(parsed->toMap(), expected);
        // Equality compares numbers by value, so the types are compared on their own.
        for (const QString &key : expected.keys() + QStringList{"missing"}) {
            EXPECT_EQ(parsed->value(key), expected.value(key)) << qPrintable(key);
            EXPECT_EQ(parsed->value(key).typeId(), expected.value(key).typeId()) << qPrintable(key);
        }
    }
    EXPECT_FALSE(PropertyList::parsedDictionary(PropertyList::toXml(QVariantList{"array"})));
}

TEST_F(PropertyListTest, MalformedBytesReadAsAbsent)
{
    const QByteArray xml = readAll(kXml), binary = readAll(kBinary);

    const QByteArray deepXml = "<plist>" + QByteArray("<array>").repeated(200000)
                               + QByteArray("</array>").repeated(200000) + "</plist>";
    QByteArrayList cases{"", "garbage", deepXml, QByteArray("bplist00") + QByteArray(40, '\0'),
                         QByteArray("<plist><string>a") + '\0' + "b</string></plist>"};
    cases += {
        binaryPlist({QByteArray::fromHex("a0")}, 5),  // top object out of range
        binaryPlist({QByteArray::fromHex("a100")}),   // an array that holds itself
        binaryPlist({QByteArray::fromHex("a109")}),   // a reference to nothing
        binaryPlist({QByteArray::fromHex("af")}),     // a count that never comes
        binaryPlist({QByteArray::fromHex("526100")}), // a NUL inside a string, then in a key
        binaryPlist({QByteArray::fromHex("d10102"), QByteArray::fromHex("6200610000"),
                     QByteArray::fromHex("09")}),
        chainOfArrays(5000, 1), // nested deeper than the stack allows
        chainOfArrays(40, 2),   // 2^40 nodes once expanded
    };
    EXPECT_TRUE(PropertyList::fromBytes(chainOfArrays(300, 1))); // a sane depth does read
    for (qsizetype i = 0; i < cases.size(); ++i)
        EXPECT_FALSE(PropertyList::fromBytes(cases[i])) << "case " << i;

    // Every truncation is refused (the reader does not insist on the XML's closing tags); every
    // single-byte change, also to the sizes, counts and offsets of the trailer, must be survived,
    // whatever it reads as.
    for (const auto &[bytes, end] :
         {std::pair(xml, xml.lastIndexOf("</dict>")), std::pair(binary, binary.size())})
        for (qsizetype length = 0; length < end; ++length)
            EXPECT_FALSE(PropertyList::fromBytes(bytes.left(length))) << length;
    for (qsizetype i = 0; i < binary.size(); ++i)
        for (const char value : {'\0', '\xFF', '\x7F', char(binary[i] ^ 0x01)})
            PropertyList::fromBytes(QByteArray(binary).replace(i, 1, &value, 1));

    // Files are read whole up to 16 MB; a larger one is refused without reading it into memory.
    const QByteArray list = "<plist><string>x</string></plist>";
    writeText(homePath("small.plist"), list + QByteArray(1 << 20, ' '));
    writeText(homePath("large.plist"), list + QByteArray(16 << 20, ' '));
    EXPECT_EQ(PropertyList::read(homePath("small.plist")), QVariant("x"));
    for (const QString &path : {homePath("large.plist"), homePath("missing.plist"), home()})
        EXPECT_FALSE(PropertyList::read(path)) << qPrintable(path);
}

TEST_F(PropertyListTest, FailedWriteLeavesOldFileWholeAndNoFolderIsMade)
{
    EXPECT_FALSE(PropertyList::writeXml(disk(), homePath("Nowhere/x.plist"), QVariantList{}));
    EXPECT_FALSE(QFileInfo::exists(homePath("Nowhere")));

    const QString folder = homePath("Prefs");
    writeText(folder + "/settings.plist", "old");
    ImmutableGuard guard(folder);
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not available here";
    EXPECT_FALSE(PropertyList::writeXml(disk(), folder + "/settings.plist", QVariantList{}));
    EXPECT_EQ(readText(folder + "/settings.plist"), "old");
    EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{"settings.plist"});
}

} // namespace
} // namespace korvane
