#pragma once

#include <QByteArrayView>
#include <QJsonDocument>
#include <QJsonValue>
#include <QString>

namespace korvane {

struct Json5Limits {
    qsizetype maxBytes = 16 * 1024 * 1024;
    int maxDepth = 128; // arrays and objects inside each other
};

// Reads JSON5 (json5.org) as the VST 3 SDK writes and reads it: comments, trailing commas,
// single-quoted strings, identifier keys, hexadecimal numbers, a leading or trailing decimal
// point, a plus sign, Infinity and NaN. Strict JSON is JSON5, so it reads that too. A duplicate
// key keeps its last value.
class Json5 {
public:
    using Limits = Json5Limits;
    struct Error {
        QString message; // empty when the text was read
        int line = 0;    // 1-based; a line ends at LF, CR, CR LF, U+2028 or U+2029
        int column = 0;  // 1-based, in characters
        bool isError() const { return !message.isEmpty(); }
        // "line 3, column 7: expected ',' or '}'"
        QString toString() const;
    };

    // The value the whole text holds; undefined (and error set) when the text is not JSON5.
    static QJsonValue parse(QByteArrayView utf8, Error *error = nullptr, const Limits &limits = {});
    // The same, for a text whose top value must be an object or an array.
    static QJsonDocument parseDocument(QByteArrayView utf8, Error *error = nullptr,
                                       const Limits &limits = {});
};

} // namespace korvane
