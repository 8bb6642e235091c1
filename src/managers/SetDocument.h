#pragma once

#include "model/AUItem.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace korvane {

// A set document: the archive of a manager's whole item list, each item as its four objects.
class SetDocument {
public:
    static QByteArray encode(const QList<AUItemPtr> &items);
    // Anything that is not an array of items decodes as empty: damaged documents are unreadable.
    static QList<AUItemPtr> decode(const QByteArray &bytes);
    static bool write(const QString &path, const QList<AUItemPtr> &items);
    // Reads path once and never waits for a writer that is not there: a plain file or a pipe
    // (standard input, a shell's "<(...)") is read to its end; a folder, a device or a FIFO that
    // nobody writes to is refused. nullopt when path holds no set document, problem saying why.
    static std::optional<QList<AUItemPtr>> load(const QString &path, QString *problem = nullptr);
    // load() without the reason, an unreadable document giving no items; a pinned path answers
    // its pinned items.
    static QList<AUItemPtr> read(const QString &path);
    // Whether the file exists and holds a readable set document.
    static bool isReadable(const QString &path);
};

// While one lives, read() of its path answers the items it holds instead of reading again: a pipe
// gives its bytes only once, and a file read twice may have changed in between.
class PinnedSetDocument {
public:
    PinnedSetDocument(const QString &path, const QList<AUItemPtr> &items);
    ~PinnedSetDocument();
    PinnedSetDocument(const PinnedSetDocument &) = delete;
    PinnedSetDocument &operator=(const PinnedSetDocument &) = delete;

private:
    QString m_path;
};

} // namespace korvane
