#include "codec/Json5.h"

#include "support/TestRoots.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

// The JSON5 reader: what the VST 3 SDK writes, the rest of the grammar, and text that is not JSON5.
namespace korvane {
namespace {

QJsonValue read(const char *text, Json5::Error *error = nullptr)
{
    return Json5::parse(QByteArray(text), error);
}

TEST(Json5Test, ReadsWhatTheSdkWritesWithCommentsAndTrailingCommas)
{
    const char *text = R"(// written by moduleinfotool
{
  "Name": "Gain",
  "Factory Info": {
    "Flags": { "Unicode": true, },   /* flags
                                        over two lines */
  },
  "Classes": [ { "CID": "B9F9ADE1CD9C4B6DA57E61E3123535FD", "Cardinality": 2147483647, }, ],
}
)";
    Json5::Error error;
    const QJsonValue value = read(text, &error);
    ASSERT_FALSE(error.isError()) << qPrintable(error.toString());
    const QJsonObject top = value.toObject();
    EXPECT_EQ(top["Name"].toString(), "Gain");
    EXPECT_TRUE(top["Factory Info"]["Flags"]["Unicode"].toBool());
    const QJsonObject first = top["Classes"].toArray().at(0).toObject();
    EXPECT_EQ(first["CID"].toString(), "B9F9ADE1CD9C4B6DA57E61E3123535FD");
    EXPECT_EQ(first["Cardinality"].toInteger(), 2147483647);
}

TEST(Json5Test, ReadsTheRestOfTheGrammar)
{
    const struct {
        const char *json5;
        const char *json; // the same value in strict JSON
    } cases[] = {
        {"{unquoted: 1, $dollar_1: 2, _: 3, ünïcode: 4}",
         R"({"unquoted":1,"$dollar_1":2,"_":3,"ünïcode":4})"},
        {R"(['single "quoted"', "double 'quoted'", 'esc\'aped'])",
         R"(["single \"quoted\"","double 'quoted'","esc'aped"])"},
        {R"(["\x41\u00e9\0\v\b\f\n\r\t\/\q"])", "[\"Aé\\u0000\\u000b\\b\\f\\n\\r\\t/q\"]"},
        {"['line \\\ncontinued', 'crlf \\\r\ncontinued']",
         R"(["line continued","crlf continued"])"},
        {R"(["\ud83c\udfb9"])", R"(["🎹"])"},
        {"[0x1F, 0XfF, -0x10, +1, .5, 5., -.5e1, 1e3, 0, -0, 0.0]",
         "[31,255,-16,1,0.5,5,-5,1000,0,-0.0,0]"},
        {"[null, true, false]", "[null,true,false]"},
        {"\xEF\xBB\xBF\u00a0{a:1}\u2028", R"({"a":1})"}, // byte order mark, odd spaces
        {R"({"dup": 1, "dup": 2})", R"({"dup":2})"},
        {"'top-level string'", nullptr},
    };
    for (const auto &c : cases) {
        Json5::Error error;
        const QJsonValue value = read(c.json5, &error);
        EXPECT_FALSE(error.isError()) << c.json5 << ": " << qPrintable(error.toString());
        if (!c.json)
            continue;
        const QJsonValue expected =
            QJsonDocument::fromJson("[" + QByteArray(c.json) + "]").array().at(0);
        EXPECT_EQ(value, expected) << c.json5;
    }
    EXPECT_EQ(read(R"({'single': 'it''s'})", nullptr), QJsonValue(QJsonValue::Undefined));
    EXPECT_EQ(read("'top-level string'").toString(), "top-level string");

    const QJsonArray special = read("[Infinity, -Infinity, +Infinity, NaN, -NaN]").toArray();
    ASSERT_EQ(special.size(), 5);
    EXPECT_TRUE(std::isinf(special[0].toDouble()) && special[0].toDouble() > 0);
    EXPECT_TRUE(std::isinf(special[1].toDouble()) && special[1].toDouble() < 0);
    EXPECT_TRUE(std::isinf(special[2].toDouble()) && special[2].toDouble() > 0);
    EXPECT_TRUE(std::isnan(special[3].toDouble()));
    EXPECT_TRUE(std::isnan(special[4].toDouble()));
}

TEST(Json5Test, RefusesWhatIsNotJson5WithLineAndColumn)
{
    const struct {
        const char *text;
        int line;
        int column;
        const char *message;
    } cases[] = {
        {"{\n  \"a\": 1\n  \"b\": 2\n}", 3, 3, "expected ',' or '}'"},
        {"{\"a\": 1,,}", 1, 9, "expected a key"},
        {"[1, 2", 1, 6, "array not closed"},
        {"{a: 1", 1, 6, "object not closed"},
        {"/* never closed", 1, 1, "comment not closed"},
        {"'open", 1, 1, "string not closed"},
        {"\"a\nb\"", 1, 3, "line break inside a string"},
        {"[01]", 1, 2, "a number cannot start with 0"},
        {"[1a]", 1, 3, "malformed number"},
        {"[0x]", 1, 4, "expected a hexadecimal digit"},
        {"[.]", 1, 2, "malformed number"},
        {"[1e]", 1, 4, "expected the exponent's digits"},
        {R"(["\1"])", 1, 4, "digits cannot be escaped"},
        {R"(["\x4"])", 1, 6, "expected a hexadecimal digit"},
        {"{1a: 2}", 1, 2, "expected a key"},
        {"[nul]", 1, 2, "expected a value"},
        {"[truely]", 1, 2, "expected a value"},
        {"[1] [2]", 1, 5, "unexpected text after the value"},
        {"", 1, 1, "unexpected end of text"},
        {"// only a comment", 1, 18, "unexpected end of text"},
        {"[\"\xC3\x28\"]", 1, 3, "invalid UTF-8"},
        {"[\"\xED\xA0\x80\"]", 1, 3, "invalid UTF-8"}, // an encoded surrogate
        {"[\"\xF0\x9F\"]", 1, 3, "invalid UTF-8"},     // cut short
        {"\r\n\r\n  x", 3, 3, "expected a value"},     // CR LF is one line break
        {"[\u2028 x]", 2, 2, "expected a value"},
    };
    for (const auto &c : cases) {
        Json5::Error error;
        EXPECT_EQ(read(c.text, &error), QJsonValue(QJsonValue::Undefined)) << c.text;
        EXPECT_EQ(error.message, QString::fromUtf8(c.message)) << c.text;
        EXPECT_EQ(error.line, c.line) << c.text;
        EXPECT_EQ(error.column, c.column) << c.text;
    }
}

TEST(Json5Test, KeepsToItsSizeAndDepthLimits)
{
    Json5Limits limits;
    limits.maxDepth = 10;
    Json5::Error error;
    EXPECT_TRUE(Json5::parse(QByteArray(10, '[') + QByteArray(10, ']'), &error, limits).isArray());
    Json5::parse(QByteArray(11, '[') + QByteArray(11, ']'), &error, limits);
    EXPECT_EQ(error.message, "nested deeper than 10 levels");
    EXPECT_EQ(error.column, 11);

    // The default limit stops a deep text long before the stack would.
    Json5::parse(QByteArray(1000000, '['), &error);
    EXPECT_EQ(error.message, "nested deeper than 128 levels");

    limits.maxBytes = 8;
    Json5::parse("[1,2,3,4]", &error, limits);
    EXPECT_EQ(error.message, "larger than 8 bytes");

    // Only objects and arrays make a document.
    EXPECT_TRUE(Json5::parseDocument("{a: [1,],}", &error).isObject());
    EXPECT_TRUE(Json5::parseDocument("42", &error).isNull());
    EXPECT_EQ(error.message, "expected an object or an array");
}

} // namespace
} // namespace korvane
