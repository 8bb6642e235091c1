#include "codec/FinderInfo.h"
#include "codec/PropertyList.h"
#include "codec/TypedStream.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QDataStream>
#include <QDateTime>
#include <QDir>

// The readers of outside bytes: property lists, typed streams, AppleDouble sidecars.
namespace korvane {
namespace {

using B = PluginLibraryBuilder;
using W = TypedStreamWriter;

QByteArray readAll(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

QByteArray fixture(const char *name)
{
    return readAll(QStringLiteral(KORVANE_TEST_DATA "/typedstream/") + QLatin1String(name));
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

const QByteArray kHeader = QByteArray::fromHex("040b73747265616d747970656481e803");

// A typed stream: header, the root's "@", then hex (spaces allowed) with "<text>" for ASCII.
QByteArray archive(const QByteArray &body)
{
    QByteArray out = kHeader + QByteArray::fromHex("840140");
    for (const QByteArray &part : body.split('<')) {
        const int close = part.indexOf('>'); // -1 when the part holds no text
        out += part.left(qMax(close, 0)) + QByteArray::fromHex(part.mid(close + 1));
    }
    return out;
}

// An AppleDouble header with the given entries (id, offset, length), then `tail`.
QByteArray appleDouble(const QList<std::array<quint32, 3>> &entries, const QByteArray &tail,
                       int count = -1)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << quint32(0x00051607) << quint32(0x00020000) << quint64(0) << quint64(0)
        << quint16(count < 0 ? entries.size() : count);
    for (const auto &[id, offset, length] : entries)
        out << id << offset << length;
    return bytes + tail;
}

class PlistTest : public TestRoots {};

// The fixtures were written by Python's plistlib, a writer independent of ours. Looking up one key
// gives what converting the whole dictionary gives: the last of a repeated key (only damaged or
// hand-made files repeat one), nothing for a missing one. A byte-order mark at the start of a key
// or a string is text like any other.
TEST_F(PlistTest, EveryReaderGivesTheSameValues)
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
    const QString bom(QChar(QChar::ByteOrderMark));
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

TEST_F(PlistTest, MalformedBytesReadAsAbsent)
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

TEST_F(PlistTest, FailedWriteLeavesOldFileWholeAndNoFolderIsMade)
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

// The values are compared one by one too: a reader and writer may agree on a mistake.
TEST(TypedStreamTest, FixturesAreWrittenByteForByteAndEveryValueReadsBack)
{
    const auto yes = W::makeString("YES");
    const QList<std::pair<const char *, ArchivedObjectPtr>> graphs = {
        {"NSString", W::makeString("Hello, world")},
        {"NSArrayEmpty", W::makeArray({}, false)},
        {"NestedStrings", W::makeArray({W::makeString("imm"), W::makeString("mut", true)}, false)},
        {"AUItemExample",
         W::makeArray({W::makeObject("AUItem", {W::makeString("Foo.component"),
                                                W::makeString("/Library/Audio/Plug-Ins/Components"),
                                                yes, yes})})},
    };
    for (const auto &[name, graph] : graphs) {
        const QByteArray bytes = fixture(name);
        EXPECT_EQ(W::write(graph), bytes) << name;
        // What is read carries everything the writer needs to give the same bytes back.
        EXPECT_EQ(W::write(TypedStreamReader::read(bytes).value_or(nullptr)), bytes) << name;
    }

    // 300 strings each written twice: references past index 237 need the two-byte form.
    QList<ArchivedObjectPtr> elements;
    for (int i = 0; i < 300; ++i)
        elements.append(W::makeString(QString::number(i)));
    elements += elements;
    // A file name may begin with a byte-order mark; it is part of the name.
    elements += {W::makeString(QChar(QChar::ByteOrderMark) + QStringLiteral("Foo.component")),
                 W::makeString(QString(200, QChar(u'\u00e9'))), W::makeString(QString(40000, 'x')),
                 nullptr};
    elements += {W::makeNumber(-111LL), W::makeNumber(-0.25f)};

    const QByteArray bytes = W::write(W::makeArray(elements));
    const auto root = TypedStreamReader::read(bytes).value_or(nullptr);
    ASSERT_TRUE(root && root->elements.size() == elements.size());
    for (qsizetype i = 0; i < elements.size(); ++i) {
        const ArchivedObjectPtr &read = root->elements[i], &written = elements[i];
        ASSERT_EQ(!read, !written) << i;
        EXPECT_TRUE(!read || (read->string == written->string && read->number == written->number))
            << i;
    }
    EXPECT_EQ(W::write(root), bytes);
    // 200 bytes take the 16-bit length form, as existing documents have them.
    EXPECT_TRUE(
        W::write(W::makeString(QString(200, 'a'))).contains(QByteArray::fromHex("2b81c800")));
}

TEST(TypedStreamTest, DamagedTruncatedAndHostileDocumentsAreRefused)
{
    QByteArray bigEndian = fixture("NSString");
    bigEndian.replace("streamtyped", "typedstream");
    const QByteArray arrayHead = "84 84 84 07<NSArray>00 84 84 08<NSObject>00 85 84 01<i>";
    const QByteArray stringHead = "84 84 84 08<NSString>01 85 84 01<+>";
    const QList<std::pair<const char *, QByteArray>> cases = {
        {"another format", "bplist00"},
        {"big-endian header", bigEndian},
        {"int root", kHeader + QByteArray::fromHex("84016901")},
        {"count beyond the data", archive(arrayHead + "82 ffffff7f 92 85")},
        {"negative count", archive(arrayHead + "ff 86")},
        {"string longer than the data", archive(stringHead + "82 ffffff7f<abc>86")},
        {"64-bit length", archive(stringHead + "87 0000000000000040 86")},
        {"undefined class reference", archive("84 99 86")},
        {"undefined string reference", archive("84 84 99 00 85 86")},
        {"array containing itself", archive(arrayHead + "01 92 92 86")},
        {"object used as a class", archive(arrayHead + "01 92 84 92 86 86")},
        {"class used as an object", archive(arrayHead + "01 92 93 86")},
        {"unknown class", archive("84 84 84 06<NSData>00 85 86")},
        {"tag where an integer belongs", archive(arrayHead + "86 86")},
    };
    for (const auto &[what, bytes] : cases)
        EXPECT_FALSE(TypedStreamReader::read(bytes)) << what;
    // The same bytes with a well-formed tail do read, so each case fails for its own reason.
    EXPECT_TRUE(TypedStreamReader::read(archive(arrayHead + "01 92 85 86")));

    // Arrays inside arrays: class NSArray is object 1, type "i" is shared string 3.
    auto nested = [&](int depth) {
        const QByteArray inner = QByteArray(" 92 84 93 95 01").repeated(depth - 1);
        return archive(arrayHead + "01" + inner + " 92 85" + QByteArray(" 86").repeated(depth));
    };
    EXPECT_TRUE(TypedStreamReader::read(nested(20)));
    EXPECT_FALSE(TypedStreamReader::read(nested(10000)));

    for (const char *name : {"NSString", "NSArray", "NestedStrings", "AUItemExample"}) {
        const QByteArray bytes = fixture(name);
        for (qsizetype length = 0; length < bytes.size(); ++length)
            EXPECT_FALSE(TypedStreamReader::read(bytes.left(length))) << name << " " << length;
    }
    // Reading stops after the root object.
    EXPECT_TRUE(TypedStreamReader::read(fixture("NSString") + "tail"));
}

class FinderInfoTest : public TestRoots {};

TEST_F(FinderInfoTest, TypeFromAttributeOrSidecarAndNoneFromMalformedSidecars)
{
    const QString folder = homePath("VST");
    const QString file = B::makeFile(folder, "Plug");
    const QByteArray info = QByteArray("TDMw") + QByteArray(28, '\0');
    const QByteArray good = appleDouble({{9, 38, 32}}, info);
    QByteArray badMagic = good;
    badMagic[3] = 0x00;
    const QList<QByteArray> cases = {
        QByteArray(),
        badMagic,
        good.left(20),                            // header cut short
        good.left(30),                            // entry cut short
        good.left(40),                            // Finder info cut short
        appleDouble({{9, 38, 32}}, info, 0xFFFE), // far more entries than bytes
        appleDouble({{9, 0xFFFFFFF0, 32}}, info), // offset beyond the file
        appleDouble({{9, 38, 0xFFFFFFFF}}, info), // length beyond the file
        appleDouble({{9, 38, 2}}, info),          // too short to hold a type
        appleDouble({{2, 38, 32}}, info),         // no Finder info entry
    };
    for (qsizetype i = 0; i < cases.size(); ++i) {
        writeText(folder + "/._Plug", cases[i]);
        EXPECT_TRUE(FinderInfo::hfsTypeString(file).isEmpty()) << "case " << i;
        // The reader of the bytes in memory refuses what the reader of the file does.
        EXPECT_FALSE(FinderInfo::typeFromAppleDouble(cases[i])) << "case " << i;
    }
    // The well-formed sidecar, and one whose Finder info follows a resource-fork entry.
    const QByteArray afterFork = appleDouble({{2, 50, 4}, {9, 54, 32}}, "rsrc" + info);
    for (const QByteArray &sidecar : {good, afterFork}) {
        writeText(folder + "/._Plug", sidecar);
        EXPECT_EQ(FinderInfo::hfsTypeString(file), "'TDMw'");
        EXPECT_EQ(FinderInfo::typeFromAppleDouble(sidecar), 0x54444D77u);
    }
}

} // namespace
} // namespace korvane
