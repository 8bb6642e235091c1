#include "platform/PropertyList.h"
#include "support/TestRoots.h"

namespace korvane {
namespace {

class ParsedDictionaryTest : public TestRoots {};

// A binary list holding the key "A" twice, as only damaged or hand-made files do:
// {A: "first", B: "b", A: "second"}.
QByteArray duplicateKeys()
{
    QByteArray bytes("bplist00");
    QList<int> offsets;
    const QList<QByteArray> objects = {QByteArray("\xD3\x01\x02\x01\x03\x04\x05", 7),
                                       "\x51"
                                       "A",
                                       "\x51"
                                       "B",
                                       "\x55"
                                       "first",
                                       "\x51"
                                       "b",
                                       "\x56"
                                       "second"};
    for (const QByteArray &object : objects) {
        offsets << int(bytes.size());
        bytes += object;
    }
    const int table = int(bytes.size());
    for (int offset : offsets)
        bytes += char(offset);
    QByteArray trailer(32, '\0');
    trailer[6] = 1; // offset size
    trailer[7] = 1; // reference size
    trailer[15] = char(objects.size());
    trailer[31] = char(table);
    return bytes + trailer;
}

// Looking up one key gives what converting the whole dictionary gives: the last of a repeated
// key, nothing for a missing one.
TEST_F(ParsedDictionaryTest, OneKeyReadsAsTheWholeDictionary)
{
    const QString binary = homePath("duplicate.plist");
    const QString xml = homePath("plain.plist");
    writeText(binary, duplicateKeys());
    writeText(xml, PropertyList::toXml(QVariantMap{{"A", "x"}, {"N", qint64(7)}}));
    for (const QString &path : {binary, xml}) {
        const auto parsed = PropertyList::readParsedDictionary(path);
        const std::optional<QVariantMap> whole = PropertyList::readDictionary(path);
        ASSERT_TRUE(parsed && whole) << qPrintable(path);
        EXPECT_EQ(parsed->toMap(), *whole);
        for (const char *key : {"A", "B", "N", "missing"})
            EXPECT_EQ(parsed->value(key), whole->value(key)) << key;
    }
    EXPECT_EQ(PropertyList::readParsedDictionary(binary)->value("A"), QVariant("second"));

    // A byte-order mark at the start of a key or a string is text like any other.
    const QString bom(QChar(QChar::ByteOrderMark));
    writeText(xml, "<plist><dict><key>\xEF\xBB\xBF"
                   "A</key><string>\xEF\xBB\xBF"
                   "v</string>"
                   "</dict></plist>");
    const auto marked = PropertyList::readParsedDictionary(xml);
    ASSERT_TRUE(marked);
    EXPECT_EQ(marked->toMap(), (QVariantMap{{bom + "A", bom + "v"}}));
    EXPECT_EQ(marked->value(bom + "A"), QVariant(bom + "v"));
    writeText(xml, PropertyList::toXml(QVariantList{"not", "a", "dictionary"}));
    EXPECT_FALSE(PropertyList::readParsedDictionary(xml));
}

} // namespace
} // namespace korvane
