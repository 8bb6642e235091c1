#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <optional>

namespace korvane {

class ScanCache;

// The Finder file type of a plain file: com.apple.FinderInfo (three attribute spellings), then an
// AppleDouble "._name" sidecar.
class FinderInfo {
public:
    static std::optional<quint32> fileType(const QString &path, ScanCache *cache = nullptr);
    // The type held in the bytes of a com.apple.FinderInfo attribute; none when it is zero.
    static std::optional<quint32> typeFromAttribute(const QByteArray &finderInfo);
    // The type held in a whole AppleDouble file's Finder info entry.
    static std::optional<quint32> typeFromAppleDouble(const QByteArray &sidecar);
    // The type in single quotes, as recognition compares it: "'aPcs'"; empty when the file has
    // none.
    static QString hfsTypeString(const QString &path, ScanCache *cache = nullptr);
    static QString typeCodeString(quint32 code);
    // Gives a file a Finder type (an xattr, else an AppleDouble sidecar); for tests and the demo.
    static bool setFileType(const QString &path, quint32 code);
};

} // namespace korvane
