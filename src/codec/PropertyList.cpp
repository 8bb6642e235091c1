#include "codec/PropertyList.h"

#include "os/FileOperations.h"
#include "os/PathBytes.h"

#include <QDateTime>
#include <QStringDecoder>

#include <plist/plist.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

namespace {

// Far above any Info.plist or preferences file; keeps a hostile file from exhausting memory.
constexpr qint64 kMaxFileSize = 16 * 1024 * 1024;
// libplist parses recursively, and so does the conversion below: deeper nesting would overflow the
// stack. No real property list comes near this.
constexpr int kMaxNesting = 512;
// A binary list may reference one object many times; libplist expands each reference into a copy,
// so a few hundred bytes can describe billions of nodes.
constexpr quint64 kMaxExpandedObjects = 1000000;

// Seconds between 1970-01-01 and 2001-01-01, the epoch of property-list dates.
constexpr qint64 kPlistEpochOffset = 978307200;

const QByteArray kBinaryMagic = QByteArrayLiteral("bplist00");

struct PlistDeleter {
    void operator()(plist_t node) const
    {
        if (node)
            plist_free(node);
    }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

quint64 readBigEndian(const uchar *p, unsigned size)
{
    quint64 value = 0;
    for (unsigned i = 0; i < size; ++i)
        value = (value << 8) | p[i];
    return value;
}

// Nesting of <array> and <dict> elements, counted from the tags alone.
bool xmlNestingWithinLimit(const QByteArray &bytes)
{
    const char *data = bytes.constData();
    const qsizetype size = bytes.size();
    int depth = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const void *tag = std::memchr(data + i, '<', size_t(size - i));
        if (!tag)
            break;
        i = static_cast<const char *>(tag) - data;
        const bool closing = i + 1 < size && data[i + 1] == '/';
        const qsizetype nameStart = i + (closing ? 2 : 1);
        qsizetype nameLength = 0;
        if (size - nameStart >= 5 && std::memcmp(data + nameStart, "array", 5) == 0)
            nameLength = 5;
        else if (size - nameStart >= 4 && std::memcmp(data + nameStart, "dict", 4) == 0)
            nameLength = 4;
        if (nameLength == 0)
            continue;
        if (closing) {
            depth = qMax(0, depth - 1);
            continue;
        }
        const qsizetype close = bytes.indexOf('>', nameStart + nameLength);
        if (close < 0)
            break;
        if (data[close - 1] == '/') // <array/> opens nothing
            continue;
        if (++depth > kMaxNesting)
            return false;
    }
    return true;
}

// Walks the object graph of a binary property list and checks that it is acyclic, not nested
// deeper than kMaxNesting, does not expand into more than kMaxExpandedObjects and holds no string
// libplist cannot take. Anything the walk cannot make sense of is refused; libplist would refuse
// it as well.
bool binaryStructureWithinLimits(const QByteArray &bytes)
{
    const auto *data = reinterpret_cast<const uchar *>(bytes.constData());
    const quint64 size = quint64(bytes.size());
    if (size < quint64(kBinaryMagic.size()) + 32)
        return false;
    const uchar *trailer = data + size - 32;
    const unsigned offsetSize = trailer[6];
    const unsigned refSize = trailer[7];
    const quint64 objectCount = readBigEndian(trailer + 8, 8);
    const quint64 topObject = readBigEndian(trailer + 16, 8);
    const quint64 tableOffset = readBigEndian(trailer + 24, 8);
    if (offsetSize == 0 || offsetSize > 8 || refSize == 0 || refSize > 8)
        return false;
    if (objectCount == 0 || objectCount > kMaxExpandedObjects || topObject >= objectCount)
        return false;
    if (tableOffset > size - 32 || objectCount > (size - 32 - tableOffset) / quint64(offsetSize))
        return false;

    // An object's kind (the marker's high nibble), where its contents start and how many elements
    // (characters, references) it has.
    auto contents = [&](quint64 object, int *kind, quint64 *first, quint64 *count) -> bool {
        const quint64 offset = readBigEndian(data + tableOffset + object * offsetSize, offsetSize);
        if (offset >= tableOffset)
            return false;
        const uchar marker = data[offset];
        *kind = marker >> 4;
        *first = offset + 1;
        *count = marker & 0x0F;
        const bool counted =
            *kind == 0x4 || *kind == 0x5 || *kind == 0x6 || (*kind >= 0xA && *kind <= 0xD);
        if (counted && *count == 0x0F) {
            if (offset + 2 > tableOffset || (data[offset + 1] & 0xF0) != 0x10)
                return false;
            const unsigned width = 1U << (data[offset + 1] & 0x0F);
            if (width > 8 || offset + 2 + width > tableOffset)
                return false;
            *count = readBigEndian(data + offset + 2, width);
            *first = offset + 2 + width;
        }
        return true;
    };
    auto references = [&](quint64 object, quint64 *first, quint64 *count) -> bool {
        int kind = 0;
        if (!contents(object, &kind, first, count))
            return false;
        if (kind != 0xA && kind != 0xB && kind != 0xC && kind != 0xD) {
            *count = 0;
            return true;
        }
        if (kind == 0xD) {
            if (*count > size)
                return false;
            *count *= 2;
        }
        return *count <= (tableOffset - *first) / quint64(refSize);
    };

    // libplist 2.2 aborts on a string or key with a NUL character inside; no real list has one.
    for (quint64 object = 0; object < objectCount; ++object) {
        int kind = 0;
        quint64 first = 0, count = 0;
        if (!contents(object, &kind, &first, &count))
            return false;
        if (kind != 0x5 && kind != 0x6)
            continue;
        const quint64 width = kind == 0x6 ? 2 : 1;
        if (count > (tableOffset - first) / width)
            return false;
        for (quint64 i = 0; i < count; ++i) {
            const uchar *unit = data + first + i * width;
            if (unit[0] == 0 && (width == 1 || unit[1] == 0))
                return false;
        }
    }

    enum State : uchar { Unvisited, Open, Done };
    std::vector<uchar> state(objectCount, Unvisited);
    std::vector<int> height(objectCount, 0);
    std::vector<quint64> expanded(objectCount, 0);
    struct Frame {
        quint64 object, first, count, next;
    };
    std::vector<Frame> stack;

    auto open = [&](quint64 object) -> bool {
        Frame frame{object, 0, 0, 0};
        if (!references(object, &frame.first, &frame.count))
            return false;
        state[object] = Open;
        height[object] = 1;
        expanded[object] = 1;
        stack.push_back(frame);
        return int(stack.size()) <= kMaxNesting;
    };
    auto account = [&](quint64 parent, quint64 child) -> bool {
        height[parent] = qMax(height[parent], height[child] + 1);
        expanded[parent] += expanded[child];
        return int(stack.size()) + height[child] <= kMaxNesting
               && expanded[parent] <= kMaxExpandedObjects;
    };

    if (!open(topObject))
        return false;
    while (!stack.empty()) {
        Frame &frame = stack.back();
        if (frame.next == frame.count) {
            state[frame.object] = Done;
            const quint64 finished = frame.object;
            stack.pop_back();
            if (!stack.empty() && !account(stack.back().object, finished))
                return false;
            continue;
        }
        const quint64 child = readBigEndian(data + frame.first + frame.next * refSize, refSize);
        ++frame.next;
        if (child >= objectCount || state[child] == Open)
            return false;
        if (state[child] == Done) {
            if (!account(frame.object, child))
                return false;
        } else if (!open(child)) {
            return false;
        }
    }
    return true;
}

// QString::fromUtf8 drops a byte-order mark at the start; in a property list it is text.
QString textFromUtf8(const char *text, qsizetype size = -1)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless
                                                     | QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(QByteArrayView(text, size < 0 ? qsizetype(std::strlen(text)) : size));
}

QVariant integerValue(plist_t node, quint64 raw)
{
    if (raw <= quint64(std::numeric_limits<qint64>::max()))
        return QVariant(qint64(raw));
    // libplist 2.2 keeps one 64-bit field for both signed and unsigned values; only its writer
    // knows which one a node holds, so ask it.
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    const bool negative = xml && QByteArray::fromRawData(xml, int(length)).contains("<integer>-");
    if (xml)
        plist_to_xml_free(xml);
    return negative ? QVariant(qint64(raw)) : QVariant(quint64(raw));
}

QVariant toVariant(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return QVariant(value != 0);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return integerValue(node, value);
    }
    case PLIST_UID: {
        uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return value <= quint64(std::numeric_limits<qint64>::max()) ? QVariant(qint64(value))
                                                                    : QVariant(quint64(value));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return QVariant(value);
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char *value = plist_get_string_ptr(node, &length);
        return QVariant(value ? textFromUtf8(value, qsizetype(length))
                              : QString(QLatin1String("")));
    }
    case PLIST_DATA: {
        char *value = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &value, &length);
        QByteArray bytes = value ? QByteArray(value, qsizetype(length)) : QByteArray("");
        std::free(value);
        return QVariant(bytes);
    }
    case PLIST_DATE: {
        int32_t seconds = 0, microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        const qint64 msecs = (kPlistEpochOffset + seconds) * 1000 + microseconds / 1000;
        return QVariant(QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC));
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t count = plist_array_get_size(node);
        list.reserve(count);
        for (uint32_t i = 0; i < count; ++i)
            list.append(toVariant(plist_array_get_item(node, i)));
        return QVariant(list);
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        if (!iterator)
            return QVariant(map);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iterator, &key, &value);
            if (!value) {
                std::free(key);
                break;
            }
            if (key)
                map.insert(textFromUtf8(key), toVariant(value));
            std::free(key);
        }
        std::free(iterator);
        return QVariant(map);
    }
    default:
        return {};
    }
}

plist_t newUnsigned(quint64 value)
{
    if (value <= quint64(std::numeric_limits<qint64>::max()))
        return plist_new_uint(value);
    // plist_new_uint would write this as a negative number; the XML reader marks it unsigned.
    const QByteArray xml = "<plist><integer>" + QByteArray::number(value) + "</integer></plist>";
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), uint32_t(xml.size()), &node);
    return node;
}

plist_t fromVariant(const QVariant &value, int depth = 0)
{
    if (depth > kMaxNesting)
        return nullptr;
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return nullptr;
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::SChar:
    case QMetaType::Char:
        return plist_new_uint(quint64(value.toLongLong()));
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar:
        return newUnsigned(value.toULongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return plist_new_real(value.toDouble());
    case QMetaType::QString:
        return plist_new_string(value.toString().toUtf8().constData());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), quint64(bytes.size()));
    }
    case QMetaType::QDateTime:
    case QMetaType::QDate: {
        const qint64 msecs = value.toDateTime().toMSecsSinceEpoch() - kPlistEpochOffset * 1000;
        qint64 seconds = msecs / 1000;
        qint64 rest = msecs % 1000;
        if (rest < 0) {
            --seconds;
            rest += 1000;
        }
        return plist_new_date(int32_t(seconds), int32_t(rest * 1000));
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap(); // sorted keys, also for a hash
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            if (plist_t item = fromVariant(it.value(), depth + 1))
                plist_dict_set_item(dict, it.key().toUtf8().constData(), item);
        }
        return dict;
    }
    default:
        break;
    }
    if (value.canConvert<QVariantList>() && value.typeId() != QMetaType::QString) {
        plist_t array = plist_new_array();
        const QVariantList list = value.toList();
        for (const QVariant &element : list) {
            if (plist_t item = fromVariant(element, depth + 1))
                plist_array_append_item(array, item);
        }
        return array;
    }
    if (value.canConvert<QString>())
        return plist_new_string(value.toString().toUtf8().constData());
    return nullptr;
}

// The whole file when it is no larger than kMaxFileSize: a buffer of the size the file reports,
// so reading the many small Info.plist files of a scan costs no more than they hold. A file that
// reports no size (a pipe, a special file) is read in pieces up to the limit.
std::optional<QByteArray> readBounded(const QString &path)
{
    if (path.isEmpty())
        return std::nullopt;
    const int fd = ::open(pathBytes(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    struct stat info;
    if (::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode) || info.st_size > kMaxFileSize) {
        ::close(fd);
        return std::nullopt;
    }
    const bool sized = S_ISREG(info.st_mode) && info.st_size > 0;
    QByteArray bytes;
    bytes.resize(sized ? qsizetype(info.st_size) : qsizetype(64 * 1024));
    qsizetype got = 0;
    for (;;) {
        if (got == bytes.size()) {
            if (sized || bytes.size() > kMaxFileSize)
                break;
            bytes.resize(qMin<qsizetype>(bytes.size() * 2, kMaxFileSize + 1));
        }
        const ssize_t n = ::read(fd, bytes.data() + got, size_t(bytes.size() - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            ::close(fd);
            return std::nullopt;
        }
        if (n == 0)
            break;
        got += n;
    }
    ::close(fd);
    bytes.truncate(got);
    return bytes;
}

// The parsed list, when the bytes are one that is safe to hand to libplist.
PlistPtr parse(const QByteArray &bytes)
{
    if (bytes.isEmpty() || bytes.size() > kMaxFileSize)
        return nullptr;
    plist_t root = nullptr;
    if (bytes.startsWith(kBinaryMagic)) {
        if (!binaryStructureWithinLimits(bytes))
            return nullptr;
        plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &root);
    } else {
        // XML allows no NUL character, and libplist 2.2 aborts on one inside a string or key.
        if (bytes.contains('\0') || !xmlNestingWithinLimit(bytes))
            return nullptr;
        plist_from_xml(bytes.constData(), uint32_t(bytes.size()), &root);
    }
    return PlistPtr(root);
}

} // namespace

std::optional<QVariant> PropertyList::fromBytes(const QByteArray &bytes)
{
    const PlistPtr owner = parse(bytes);
    if (!owner)
        return std::nullopt;
    QVariant value = toVariant(owner.get());
    if (!value.isValid())
        return std::nullopt;
    return value;
}

std::optional<QVariant> PropertyList::read(const QString &path)
{
    const std::optional<QByteArray> bytes = readBounded(path);
    return bytes ? fromBytes(*bytes) : std::nullopt;
}

std::optional<QVariantList> PropertyList::readArray(const QString &path)
{
    const std::optional<QVariant> value = read(path);
    if (!value || value->typeId() != QMetaType::QVariantList)
        return std::nullopt;
    return value->toList();
}

std::optional<QVariantMap> PropertyList::readDictionary(const QString &path)
{
    const std::optional<QVariant> value = read(path);
    if (!value || value->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value->toMap();
}

std::optional<PropertyList::Dictionary> PropertyList::readParsedDictionary(const QString &path)
{
    const std::optional<QByteArray> bytes = readBounded(path);
    return bytes ? parsedDictionary(*bytes) : std::nullopt;
}

std::optional<PropertyList::Dictionary> PropertyList::parsedDictionary(const QByteArray &bytes)
{
    PlistPtr root = parse(bytes);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return std::nullopt;
    Dictionary dictionary;
    dictionary.m_root = std::shared_ptr<void>(root.release(), PlistDeleter());
    return dictionary;
}

QVariant PropertyList::Dictionary::value(const QString &key) const
{
    if (!m_root)
        return {};
    // Every entry is looked at and the last of a key wins, as in toMap: a damaged binary list may
    // hold a key twice.
    const QByteArray wanted = key.toUtf8();
    plist_t node = m_root.get();
    plist_t found = nullptr;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    if (!iterator)
        return {};
    for (;;) {
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, nullptr, &value); // no copy of each key
        if (!value)
            break;
        const plist_t name = plist_dict_item_get_key(value);
        if (name && plist_key_val_compare(name, wanted.constData()) == 0)
            found = value;
    }
    std::free(iterator);
    return found ? toVariant(found) : QVariant();
}

QVariantMap PropertyList::Dictionary::toMap() const
{
    return m_root ? toVariant(m_root.get()).toMap() : QVariantMap();
}

std::optional<QStringList> PropertyList::readStringArray(const QString &path)
{
    const std::optional<QVariantList> list = readArray(path);
    if (!list)
        return std::nullopt;
    QStringList strings;
    strings.reserve(list->size());
    for (const QVariant &element : *list) {
        if (element.typeId() != QMetaType::QString)
            return std::nullopt;
        strings.append(element.toString());
    }
    return strings;
}

QByteArray PropertyList::toXml(const QVariant &root)
{
    PlistPtr node(fromVariant(root));
    if (!node)
        return {};
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node.get(), &xml, &length);
    if (!xml)
        return {};
    QByteArray bytes(xml, qsizetype(length));
    plist_to_xml_free(xml);
    return bytes;
}

QByteArray PropertyList::toBinary(const QVariant &root)
{
    PlistPtr node(fromVariant(root));
    if (!node)
        return {};
    char *binary = nullptr;
    uint32_t length = 0;
    plist_to_bin(node.get(), &binary, &length);
    if (!binary)
        return {};
    QByteArray bytes(binary, qsizetype(length));
    plist_to_bin_free(binary);
    return bytes;
}

bool PropertyList::writeXml(FileOperations &files, const QString &path, const QVariant &root)
{
    const QByteArray bytes = toXml(root);
    if (bytes.isEmpty())
        return false;
    return files.writeFileAtomically(path, bytes);
}

} // namespace korvane
