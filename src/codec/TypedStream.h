#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>
#include <memory>
#include <optional>

namespace korvane {

// One object of a sequential ("typedstream") archive. Strings carry their text, arrays their
// elements, numbers their value; any other class (Plugin) carries the objects its coder wrote.
struct ArchivedObject {
    QString className; // most derived class: "NSString", "NSMutableArray", "AUItem", ...
    QString string;    // NSString / NSMutableString
    QVariant number;   // NSNumber
    QList<std::shared_ptr<ArchivedObject>>
        elements; // arrays: elements; others: encoded objects (nil = nullptr)

    bool isString() const
    {
        return className == QLatin1StringView("NSString")
               || className == QLatin1StringView("NSMutableString");
    }
    bool isArray() const
    {
        return className == QLatin1StringView("NSArray")
               || className == QLatin1StringView("NSMutableArray");
    }
};
using ArchivedObjectPtr = std::shared_ptr<ArchivedObject>;

// Reads the sequential archives set documents are (little-endian, "streamtyped").
// Malformed, truncated or hostile bytes give nullopt; nothing is read past the buffer.
class TypedStreamReader {
public:
    static std::optional<ArchivedObjectPtr> read(const QByteArray &bytes);
};

// Writes byte-for-byte what that archiver writes. The same ArchivedObject pointer written twice
// becomes a reference, as the same instance does there.
class TypedStreamWriter {
public:
    static QByteArray write(const ArchivedObjectPtr &root);

    static ArchivedObjectPtr makeString(const QString &text, bool mutableString = false);
    static ArchivedObjectPtr makeArray(QList<ArchivedObjectPtr> elements, bool mutableArray = true);
    // An NSNumber; the value's type picks the encoding (int "i", qlonglong "q", double "d", ...).
    static ArchivedObjectPtr makeNumber(const QVariant &value);
    // An instance of a plain NSObject subclass (version 0) whose coder writes these objects.
    static ArchivedObjectPtr makeObject(const QString &className, QList<ArchivedObjectPtr> encoded);
};

} // namespace korvane
