#include "platform/TypedStream.h"

#include <QFile>
#include <QRandomGenerator>
#include <gtest/gtest.h>

using namespace korvane;

namespace {

using W = TypedStreamWriter;

QByteArray fixture(const char *name)
{
    QFile file(QStringLiteral(KORVANE_TEST_DATA "/typedstream/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

const QByteArray kHeader = QByteArray::fromHex("040b73747265616d747970656481e803");

// Header, the root's "@", then hex (spaces allowed) with "<text>" for literal ASCII.
QByteArray archive(const QByteArray &body)
{
    QByteArray out = kHeader + QByteArray::fromHex("840140");
    for (const QByteArray &part : body.split('<')) {
        const int close = part.indexOf('>');
        if (close >= 0) {
            out += part.left(close);
            out += QByteArray::fromHex(part.mid(close + 1));
        } else {
            out += QByteArray::fromHex(part);
        }
    }
    return out;
}

ArchivedObjectPtr readOk(const QByteArray &bytes)
{
    const auto root = TypedStreamReader::read(bytes);
    EXPECT_TRUE(root.has_value());
    return root.value_or(nullptr);
}

} // namespace

TEST(TypedStreamTest, FixturesReadAndAreWrittenByteForByte)
{
    const auto yes = W::makeString("YES");
    const QList<std::pair<const char *, ArchivedObjectPtr>> graphs = {
        {"NSString", W::makeString("Hello, world")},
        {"NSMutableString", W::makeString("Hello, world", true)},
        {"NSArrayEmpty", W::makeArray({}, false)},
        {"NestedStrings", W::makeArray({W::makeString("imm"), W::makeString("mut", true)}, false)},
        {"NSArray", W::makeArray({W::makeString("a"), W::makeNumber(qlonglong(1)), W::makeString("b")},
                                 false)},
        {"NSMutableArray", W::makeArray({W::makeString("x"), W::makeNumber(qlonglong(2))})},
        {"AUItemExample",
         W::makeArray({W::makeObject("AUItem", {W::makeString("Foo.component"),
                                                W::makeString("/Library/Audio/Plug-Ins/Components"),
                                                yes, yes})})},
    };
    for (const auto &[name, graph] : graphs) {
        const QByteArray bytes = fixture(name);
        EXPECT_EQ(W::write(graph), bytes) << name;
        // What is read carries everything the writer needs to give the same bytes back.
        EXPECT_EQ(W::write(readOk(bytes)), bytes) << name;
    }

    const auto root = readOk(fixture("AUItemExample"));
    ASSERT_TRUE(root && root->className == "NSMutableArray" && root->elements.size() == 1);
    const auto item = root->elements[0];
    ASSERT_TRUE(item->className == "AUItem" && item->elements.size() == 4);
    EXPECT_EQ(item->elements[1]->string, "/Library/Audio/Plug-Ins/Components");
    EXPECT_EQ(item->elements[2]->string, "YES");
    EXPECT_EQ(item->elements[2], item->elements[3]);
    EXPECT_EQ(readOk(fixture("NSArray"))->elements[1]->number, QVariant(qlonglong(1)));
    EXPECT_EQ(readOk(fixture("NestedStrings"))->elements[1]->className, "NSMutableString");
}

TEST(TypedStreamTest, LongValuesAndLateReferencesRoundTrip)
{
    // 300 strings each written twice: references past index 237 need the two-byte form.
    QList<ArchivedObjectPtr> elements;
    for (int i = 0; i < 300; ++i)
        elements.append(W::makeString(QString::number(i)));
    elements += elements;
    elements += {W::makeString(QString(200, QChar(u'é'))), W::makeString(QString(40000, 'x')), nullptr};
    for (qint64 n : {-110LL, -111LL, 127LL, 128LL, -32768LL, 32768LL, 1LL << 40})
        elements.append(W::makeNumber(qlonglong(n)));
    elements += {W::makeNumber(2.5), W::makeNumber(-0.25f),
                 W::makeNumber(std::numeric_limits<qulonglong>::max())};

    const QByteArray bytes = W::write(W::makeArray(elements));
    const auto root = readOk(bytes);
    ASSERT_TRUE(root && root->elements.size() == elements.size());
    EXPECT_EQ(root->elements[299]->string, "299");
    EXPECT_EQ(root->elements[299], root->elements[599]);
    EXPECT_EQ(root->elements[600]->string, QString(200, QChar(u'é')));
    EXPECT_EQ(root->elements[601]->string.size(), 40000);
    EXPECT_EQ(root->elements[604]->number, QVariant(qlonglong(-111)));
    EXPECT_EQ(root->elements[609]->number, QVariant(qlonglong(1) << 40));
    EXPECT_EQ(root->elements[612]->number, QVariant(std::numeric_limits<qulonglong>::max()));
    EXPECT_EQ(W::write(root), bytes);
    // 200 bytes take the 16-bit length form, as the original writes them.
    EXPECT_TRUE(W::write(W::makeString(QString(200, 'a'))).contains(QByteArray::fromHex("2b81c800")));
}

TEST(TypedStreamTest, DamagedHeadersAndTruncationsAreUnreadable)
{
    QByteArray bigEndian = fixture("NSString");
    bigEndian.replace("streamtyped", "typedstream");
    EXPECT_FALSE(TypedStreamReader::read(bigEndian));
    EXPECT_FALSE(TypedStreamReader::read(QByteArray()));
    EXPECT_FALSE(TypedStreamReader::read("bplist00"));

    for (const char *name : {"NSString", "NSArray", "NestedStrings", "AUItemExample"}) {
        const QByteArray bytes = fixture(name);
        for (qsizetype length = 0; length < bytes.size(); ++length)
            EXPECT_FALSE(TypedStreamReader::read(bytes.left(length))) << name << " " << length;
    }
    // The original unarchiver stops after the root object too.
    EXPECT_TRUE(TypedStreamReader::read(fixture("NSString") + "tail"));
}

TEST(TypedStreamTest, HostileStructuresAreRefused)
{
    const QByteArray arrayHead = "84 84 84 07<NSArray>00 84 84 08<NSObject>00 85 84 01<i>";
    struct Case {
        const char *what;
        QByteArray body;
    };
    const QList<Case> cases = {
        {"count beyond the data", arrayHead + "82 ffffff7f 92 85"},
        {"negative count", arrayHead + "ff 86"},
        {"string longer than the data", "84 84 84 08<NSString>01 85 84 01<+>82 ffffff7f<abc>86"},
        {"64-bit length", "84 84 84 08<NSString>01 85 84 01<+>87 0000000000000040 86"},
        {"undefined class reference", "84 99 86"},
        {"undefined string reference", "84 84 99 00 85 86"},
        {"array containing itself", arrayHead + "01 92 92 86"},
        {"object used as a class", arrayHead + "01 92 84 92 86 86"},
        {"class used as an object", arrayHead + "01 92 93 86"},
        {"unknown class", "84 84 84 06<NSData>00 85 86"},
        {"tag where an integer belongs", arrayHead + "86 86"},
    };
    for (const Case &c : cases)
        EXPECT_FALSE(TypedStreamReader::read(archive(c.body))) << c.what;
    EXPECT_FALSE(TypedStreamReader::read(kHeader + QByteArray::fromHex("84016901"))) << "int root";
    // The same bytes with a well-formed tail do read, so each case fails for its own reason.
    EXPECT_TRUE(TypedStreamReader::read(archive(arrayHead + "01 92 85 86")));
}

TEST(TypedStreamTest, NestingIsLimited)
{
    // Arrays inside arrays: class NSArray is object 1, type "i" is shared string 3.
    auto nested = [](int depth) {
        QByteArray body = "84 84 84 07<NSArray>00 84 84 08<NSObject>00 85 84 01<i>01";
        for (int i = 1; i < depth; ++i)
            body += " 92 84 93 95 01";
        return archive(body + " 92 85" + QByteArray(" 86").repeated(depth));
    };
    EXPECT_TRUE(TypedStreamReader::read(nested(20)));
    EXPECT_FALSE(TypedStreamReader::read(nested(10000)));
}

TEST(TypedStreamTest, RandomBytesNeverCrash)
{
    QRandomGenerator random(1234);
    const QByteArray valid = fixture("NSMutableArray");
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes = valid.left(random.bounded(valid.size()));
        const int extra = random.bounded(64);
        for (int i = 0; i < extra; ++i)
            bytes.append(char(random.bounded(256)));
        TypedStreamReader::read(bytes);
    }
}
