#include "codec/TypedStream.h"

#include <QHash>
#include <QStringDecoder>
#include <QtEndian>

#include <cstring>
#include <limits>
#include <utility>

namespace korvane {

namespace {

constexpr char kSignature[] = "streamtyped";
constexpr qsizetype kSignatureLength = sizeof(kSignature) - 1;
constexpr int kStreamerVersion = 4;
constexpr int kSystemVersion = 1000;

// Head bytes read as signed values. -128 .. -111 are tags; everything else is a one-byte integer.
constexpr int kTagInt16 = -127; // 0x81
constexpr int kTagInt32 = -126; // 0x82
constexpr int kTagReal = -125;  // 0x83
constexpr int kTagNew = -124;   // 0x84
constexpr int kTagNil = -123;   // 0x85
constexpr int kTagEnd = -122;   // 0x86
constexpr int kTagInt64 = -121; // 0x87
constexpr int kLastTag = -111;
// Reference numbers start right above the tags, so early references fit in the head byte.
constexpr qint64 kFirstReference = -110; // 0x92

// Set documents nest three deep (array, item, string); anything near this is hostile.
constexpr int kMaxDepth = 64;

// QString::fromUtf8 drops a byte-order mark at the start; in a name it is a character like any
// other.
QString textFromUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless
                                                     | QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(bytes);
}

// Thrown inside the reader only; read() turns it into nullopt.
struct Malformed {};

[[noreturn]] void fail()
{
    throw Malformed{};
}

class Reader {
public:
    explicit Reader(const QByteArray &bytes) : m_data(bytes.constData()), m_size(bytes.size()) {}

    ArchivedObjectPtr readArchive()
    {
        if (rawByte() != kStreamerVersion || rawByte() != kSignatureLength)
            fail();
        // "typedstream" marks a big-endian archive from a PowerPC machine; set documents from
        // those machines are not worth a second code path, so it is refused like any other.
        if (readBytes(kSignatureLength) != QByteArrayView(kSignature))
            fail();
        readSigned(head()); // system version: every value seen so far is 1000, none matters here
        ArchivedObjectPtr root = readObjectGroup();
        // Bytes after the root group are left unread: documents written elsewhere may carry a
        // tail, and the set is whole without it.
        return root;
    }

private:
    struct Entry {
        enum Kind { Object, Class, CString } kind;
        ArchivedObjectPtr object; // Object
        QByteArray name;          // Class: its name; CString: the text
        bool decoding = false;    // Object: its data is still being read
        QString className;        // Class: the name decoded once, shared by all its objects
    };

    qsizetype remaining() const { return m_size - m_pos; }

    int rawByte()
    {
        if (remaining() < 1)
            fail();
        return static_cast<unsigned char>(m_data[m_pos++]);
    }
    int head() { return static_cast<signed char>(rawByte()); }

    // The next count bytes, as a view into the archive.
    QByteArrayView readBytes(qint64 count)
    {
        if (count < 0 || count > remaining())
            fail();
        const QByteArrayView bytes(m_data + m_pos, count);
        m_pos += count;
        return bytes;
    }

    template <typename T> T readLittleEndian()
    {
        if (remaining() < qsizetype(sizeof(T)))
            fail();
        T value = qFromLittleEndian<T>(m_data + m_pos);
        m_pos += qsizetype(sizeof(T));
        return value;
    }

    qint64 readSigned(int head)
    {
        if (head > kLastTag)
            return head;
        switch (head) {
        case kTagInt16:
            return readLittleEndian<qint16>();
        case kTagInt32:
            return readLittleEndian<qint32>();
        case kTagInt64:
            return readLittleEndian<qint64>();
        default:
            fail();
        }
    }

    quint64 readUnsigned(int head)
    {
        if (head > kLastTag)
            return quint64(head & 0xff);
        switch (head) {
        case kTagInt16:
            return readLittleEndian<quint16>();
        case kTagInt32:
            return readLittleEndian<quint32>();
        case kTagInt64:
            return readLittleEndian<quint64>();
        default:
            fail();
        }
    }

    template <typename T> T readReal()
    {
        const int h = head();
        if (h != kTagReal)
            return T(readSigned(h));
        using Bits = std::conditional_t<sizeof(T) == 4, quint32, quint64>;
        const Bits bits = readLittleEndian<Bits>();
        T value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    // A length never exceeds the bytes that are left, so nothing is allocated from a bad count.
    qint64 readLength(int head)
    {
        const qint64 length = readSigned(head);
        if (length < 0 || length > remaining())
            fail();
        return length;
    }

    qsizetype readReference(int head, qsizetype tableSize)
    {
        const qint64 number = readSigned(head);
        if (number < kFirstReference || number >= kFirstReference + tableSize)
            fail();
        return qsizetype(number - kFirstReference);
    }

    QByteArray readSharedString()
    {
        const int h = head();
        if (h != kTagNew)
            return m_strings.at(readReference(h, m_strings.size()));
        m_strings.append(readBytes(readLength(head())).toByteArray());
        return m_strings.constLast();
    }

    void expectType(QByteArrayView type)
    {
        if (readSharedString() != type)
            fail();
    }

    // Classes and objects share one table; a class reference must name a class.
    qsizetype readClass()
    {
        int h = head();
        if (h != kTagNew)
            return classReference(h);
        const qsizetype first = m_table.size();
        // The superclass chain is read in a loop: a long made-up chain cannot exhaust the stack.
        while (h == kTagNew) {
            const QByteArray name = readSharedString();
            readSigned(head()); // version: every version of the classes we read has one layout
            m_table.append({Entry::Class, nullptr, name, false, textFromUtf8(name)});
            h = head();
        }
        if (h != kTagNil)
            classReference(h);
        return first;
    }

    qsizetype classReference(int head)
    {
        const qsizetype index = readReference(head, m_table.size());
        if (m_table.at(index).kind != Entry::Class)
            fail();
        return index;
    }

    QByteArray readCString()
    {
        const int h = head();
        if (h == kTagNew) {
            QByteArray text = readSharedString();
            m_table.append({Entry::CString, nullptr, text, false, {}});
            return text;
        }
        const qsizetype index = readReference(h, m_table.size());
        if (m_table.at(index).kind != Entry::CString)
            fail();
        return m_table.at(index).name;
    }

    ArchivedObjectPtr readObjectGroup()
    {
        expectType("@");
        return readObject();
    }

    ArchivedObjectPtr readObject()
    {
        const int h = head();
        if (h == kTagNil)
            return nullptr;
        if (h != kTagNew) {
            const Entry &entry = m_table.at(readReference(h, m_table.size()));
            // An object that contains itself would be a reference cycle nothing ever frees.
            if (entry.kind != Entry::Object || entry.decoding)
                fail();
            return entry.object;
        }
        if (m_depth >= kMaxDepth)
            fail();
        auto object = std::make_shared<ArchivedObject>();
        const qsizetype index = m_table.size();
        m_table.append({Entry::Object, object, {}, true, {}});
        object->className = m_table.at(readClass()).className;
        ++m_depth;
        readObjectData(*object);
        --m_depth;
        if (head() != kTagEnd)
            fail();
        m_table[index].decoding = false;
        return object;
    }

    void readObjectData(ArchivedObject &object)
    {
        if (object.isArray()) {
            expectType("i");
            const qint64 count = readSigned(head());
            // Each element takes at least two bytes (its type and its value).
            if (count < 0 || count > remaining() / 2)
                fail();
            // Room for a set's worth up front; a count from damaged bytes reserves no more.
            object.elements.reserve(qsizetype(qMin<qint64>(count, 65536)));
            for (qint64 i = 0; i < count; ++i)
                object.elements.append(readObjectGroup());
        } else if (object.isString()) {
            expectType("+");
            object.string = textFromUtf8(readBytes(readLength(head())));
        } else if (object.className == QLatin1String("NSNumber")) {
            expectType("*");
            const QByteArray type = readCString();
            if (type.size() != 1)
                fail();
            expectType(type);
            object.number = readNumber(type.at(0));
        } else if (object.className == QLatin1String("AUItem")) {
            object.elements.reserve(4);
            for (int i = 0; i < 4; ++i)
                object.elements.append(readObjectGroup());
        } else {
            fail(); // unknown data cannot be skipped: its layout is its class's own
        }
    }

    QVariant readNumber(char type)
    {
        switch (type) {
        case 'c':
            return int(qint8(rawByte())); // chars and BOOLs are stored as the bare byte
        case 'C':
            return uint(quint8(rawByte()));
        case 'B': {
            const int value = rawByte();
            if (value > 1)
                fail();
            return value == 1;
        }
        case 's':
            return int(qint16(readSigned(head())));
        case 'i':
        case 'l':
            return int(qint32(readSigned(head())));
        case 'q':
            return qlonglong(readSigned(head()));
        case 'S':
            return uint(quint16(readUnsigned(head())));
        case 'I':
        case 'L':
            return uint(quint32(readUnsigned(head())));
        case 'Q':
            return qulonglong(readUnsigned(head()));
        case 'f':
            return readReal<float>();
        case 'd':
            return readReal<double>();
        default:
            fail();
        }
    }

    const char *m_data;
    qsizetype m_size;
    qsizetype m_pos = 0;
    int m_depth = 0;
    QList<QByteArray> m_strings;
    QList<Entry> m_table;
};

struct ClassLevel {
    const char *name;
    int version;
};

class Writer {
public:
    QByteArray writeArchive(const ArchivedObjectPtr &root)
    {
        m_out.append(char(kStreamerVersion));
        m_out.append(char(kSignatureLength));
        m_out.append(kSignature, kSignatureLength);
        writeInteger(kSystemVersion);
        writeObjectGroup(root);
        return m_out;
    }

private:
    template <typename T> void appendLittleEndian(T value)
    {
        char bytes[sizeof(T)];
        qToLittleEndian(value, bytes);
        m_out.append(bytes, sizeof(T));
    }

    void writeTag(int tag) { m_out.append(char(tag)); }

    void writeInteger(qint64 value)
    {
        if (value >= kFirstReference && value <= std::numeric_limits<qint8>::max()) {
            m_out.append(char(value));
        } else if (value >= std::numeric_limits<qint16>::min()
                   && value <= std::numeric_limits<qint16>::max()) {
            writeTag(kTagInt16);
            appendLittleEndian(qint16(value));
        } else if (value >= std::numeric_limits<qint32>::min()
                   && value <= std::numeric_limits<qint32>::max()) {
            writeTag(kTagInt32);
            appendLittleEndian(qint32(value));
        } else {
            writeTag(kTagInt64);
            appendLittleEndian(value);
        }
    }

    void writeUnsigned(quint64 value)
    {
        if (value <= quint64(std::numeric_limits<qint64>::max())) {
            writeInteger(qint64(value));
        } else {
            writeTag(kTagInt64);
            appendLittleEndian(value);
        }
    }

    void writeReference(qsizetype index) { writeInteger(qint64(index) + kFirstReference); }

    void writeSharedString(const QByteArray &text)
    {
        if (const auto it = m_strings.constFind(text); it != m_strings.cend()) {
            writeReference(*it);
            return;
        }
        m_strings.insert(text, m_strings.size());
        writeTag(kTagNew);
        writeInteger(text.size());
        m_out.append(text);
    }

    // Type strings of numbers are the runtime's constant strings, one instance per type, so a
    // repeated type is a reference to the first.
    void writeCString(const QByteArray &text)
    {
        if (const auto it = m_cStrings.constFind(text); it != m_cStrings.cend()) {
            writeReference(*it);
            return;
        }
        m_cStrings.insert(text, m_nextObject++);
        writeTag(kTagNew);
        writeSharedString(text);
    }

    static QList<ClassLevel> classChain(const QString &className)
    {
        if (className == QLatin1String("NSMutableArray"))
            return {{"NSMutableArray", 0}, {"NSArray", 0}, {"NSObject", 0}};
        if (className == QLatin1String("NSArray"))
            return {{"NSArray", 0}, {"NSObject", 0}};
        if (className == QLatin1String("NSMutableString"))
            return {{"NSMutableString", 1}, {"NSString", 1}, {"NSObject", 0}};
        if (className == QLatin1String("NSString"))
            return {{"NSString", 1}, {"NSObject", 0}};
        if (className == QLatin1String("NSNumber"))
            return {{"NSNumber", 0}, {"NSValue", 0}, {"NSObject", 0}};
        return {{nullptr, 0}, {"NSObject", 0}};
    }

    void writeClass(const QString &className)
    {
        for (const ClassLevel &level : classChain(className)) {
            const QByteArray name = level.name ? QByteArray(level.name) : className.toUtf8();
            if (const auto it = m_classes.constFind(name); it != m_classes.cend()) {
                writeReference(*it);
                return;
            }
            writeTag(kTagNew);
            m_classes.insert(name, m_nextObject++);
            writeSharedString(name);
            writeInteger(level.version);
        }
        writeTag(kTagNil);
    }

    void writeObjectGroup(const ArchivedObjectPtr &object)
    {
        writeSharedString("@");
        writeObject(object);
    }

    void writeObject(const ArchivedObjectPtr &object)
    {
        if (!object) {
            writeTag(kTagNil);
            return;
        }
        if (const auto it = m_objects.constFind(object.get()); it != m_objects.cend()) {
            writeReference(*it);
            return;
        }
        writeTag(kTagNew);
        m_objects.insert(object.get(), m_nextObject++);
        writeClass(object->className);
        if (object->isArray()) {
            writeSharedString("i");
            writeInteger(object->elements.size());
            for (const ArchivedObjectPtr &element : object->elements)
                writeObjectGroup(element);
        } else if (object->isString()) {
            const QByteArray bytes = object->string.toUtf8();
            writeSharedString("+");
            writeInteger(bytes.size());
            m_out.append(bytes);
        } else if (object->className == QLatin1String("NSNumber")) {
            writeNumber(object->number);
        } else {
            for (const ArchivedObjectPtr &element : object->elements)
                writeObjectGroup(element);
        }
        writeTag(kTagEnd);
    }

    static char numberType(const QVariant &value)
    {
        switch (value.metaType().id()) {
        case QMetaType::Bool:
            return 'c'; // a BOOL number's type is char
        case QMetaType::Short:
        case QMetaType::Int:
            return 'i';
        case QMetaType::UShort:
        case QMetaType::UInt:
            return 'I';
        case QMetaType::ULong:
        case QMetaType::ULongLong:
            return 'Q';
        case QMetaType::Float:
            return 'f';
        case QMetaType::Double:
            return 'd';
        default:
            return 'q';
        }
    }

    void writeNumber(const QVariant &value)
    {
        const char type = numberType(value);
        const QByteArray typeString(1, type);
        writeSharedString("*");
        writeCString(typeString);
        writeSharedString(typeString);
        switch (type) {
        case 'c':
            m_out.append(char(value.toInt()));
            break;
        case 'i':
            writeInteger(value.toInt());
            break;
        case 'I':
            writeUnsigned(value.toUInt());
            break;
        case 'Q':
            writeUnsigned(value.toULongLong());
            break;
        case 'f': {
            writeTag(kTagReal);
            const float real = value.toFloat();
            quint32 bits;
            std::memcpy(&bits, &real, sizeof bits);
            appendLittleEndian(bits);
            break;
        }
        case 'd': {
            writeTag(kTagReal);
            const double real = value.toDouble();
            quint64 bits;
            std::memcpy(&bits, &real, sizeof bits);
            appendLittleEndian(bits);
            break;
        }
        default:
            writeInteger(value.toLongLong());
            break;
        }
    }

    QByteArray m_out;
    qsizetype m_nextObject = 0;
    QHash<QByteArray, qsizetype> m_strings;
    QHash<QByteArray, qsizetype> m_classes;
    QHash<QByteArray, qsizetype> m_cStrings;
    QHash<const ArchivedObject *, qsizetype> m_objects;
};

} // namespace

std::optional<ArchivedObjectPtr> TypedStreamReader::read(const QByteArray &bytes)
{
    try {
        return Reader(bytes).readArchive();
    } catch (const Malformed &) {
        return std::nullopt;
    }
}

QByteArray TypedStreamWriter::write(const ArchivedObjectPtr &root)
{
    return Writer().writeArchive(root);
}

ArchivedObjectPtr TypedStreamWriter::makeString(const QString &text, bool mutableString)
{
    auto object = std::make_shared<ArchivedObject>();
    object->className =
        mutableString ? QStringLiteral("NSMutableString") : QStringLiteral("NSString");
    object->string = text;
    return object;
}

ArchivedObjectPtr TypedStreamWriter::makeArray(QList<ArchivedObjectPtr> elements, bool mutableArray)
{
    auto object = std::make_shared<ArchivedObject>();
    object->className = mutableArray ? QStringLiteral("NSMutableArray") : QStringLiteral("NSArray");
    object->elements = std::move(elements);
    return object;
}

ArchivedObjectPtr TypedStreamWriter::makeNumber(const QVariant &value)
{
    auto object = std::make_shared<ArchivedObject>();
    object->className = QStringLiteral("NSNumber");
    object->number = value;
    return object;
}

ArchivedObjectPtr TypedStreamWriter::makeObject(const QString &className,
                                                QList<ArchivedObjectPtr> encoded)
{
    auto object = std::make_shared<ArchivedObject>();
    object->className = className;
    object->elements = std::move(encoded);
    return object;
}

} // namespace korvane
