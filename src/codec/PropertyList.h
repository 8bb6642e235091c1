#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <memory>
#include <optional>

namespace korvane {

class FileOperations;

// Property lists through libplist, as Qt values: array -> QVariantList, dictionary -> QVariantMap,
// string -> QString, boolean -> bool, integer -> qint64 (quint64 above its range), real -> double,
// data -> QByteArray, date -> QDateTime (UTC).
class PropertyList {
public:
    // XML or binary. Anything unreadable or malformed reads as absent.
    static std::optional<QVariant> fromBytes(const QByteArray &bytes);
    static std::optional<QVariant> read(const QString &path);
    static std::optional<QVariantList> readArray(const QString &path);
    static std::optional<QVariantMap> readDictionary(const QString &path);
    // An array whose elements are all strings; anything else reads as absent.
    static std::optional<QStringList> readStringArray(const QString &path);

    // A dictionary parsed once whose values are converted only when asked for, so that looking
    // up a key or two costs no conversion of everything else. Copies share the parsed list.
    class Dictionary {
    public:
        QVariant value(const QString &key) const; // invalid when absent
        QVariantMap toMap() const;

    private:
        friend class PropertyList;
        std::shared_ptr<void> m_root;
    };
    // What readDictionary reads, as a Dictionary.
    static std::optional<Dictionary> readParsedDictionary(const QString &path);
    // The same from bytes already read.
    static std::optional<Dictionary> parsedDictionary(const QByteArray &bytes);

    static QByteArray toXml(const QVariant &root);
    static QByteArray toBinary(const QVariant &root);
    // Writes an XML property list atomically: a failed write leaves the old file whole.
    static bool writeXml(FileOperations &files, const QString &path, const QVariant &root);
};

} // namespace korvane
