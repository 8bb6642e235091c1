#include "codec/TypedStream.h"

#include <QFile>
#include <gtest/gtest.h>

// Typed streams, the archive format of set documents.
namespace korvane {
namespace {

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

const QByteArray kHeader = QByteArray::fromHex("040b73747265616d747970656481e803");

// A typed stream: header, the root's "@", then hex (spaces allowed) with "<text>" for ASCII.
QByteArray archive(const QByteArray &body)
{
    QByteArray out = kHeader + QByteArray::fromHex("840140");
    for (const QByteArray &part : body.split('<')) {
        const qsizetype close = part.indexOf('>'); // -1 when the part holds no text
        out += part.left(qMax<qsizetype>(close, 0)) + QByteArray::fromHex(part.mid(close + 1));
    }
    return out;
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

} // namespace
} // namespace korvane
