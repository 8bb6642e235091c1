#pragma once

#include "core/Plugin.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace korvane {

class ContentRegistry;
class FileOperations;
struct FileError;

// A set document on disk: a manager's whole item list, each plug-in as its four strings in the
// archive SetArchive reads and writes. Decoded plug-ins get their content from the registry given,
// or none for display only.
class SetDocument {
public:
    static QByteArray encode(const QList<PluginPtr> &items);
    // Anything that is not an array of items decodes as empty: damaged documents are unreadable.
    static QList<PluginPtr> decode(const QByteArray &bytes,
                                   const ContentRegistry *content = nullptr);
    static bool write(FileOperations &files, const QString &path, const QList<PluginPtr> &items,
                      FileError *error = nullptr);
    // Reads path once and never waits for a writer that is not there: a plain file or a pipe
    // (standard input, a shell's "<(...)") is read to its end; a folder, a device or a FIFO that
    // nobody writes to is refused. nullopt when path holds no set document, problem saying why.
    static std::optional<QList<PluginPtr>> load(const QString &path, QString *problem = nullptr,
                                                const ContentRegistry *content = nullptr);
    // load() without the reason, an unreadable document giving no items.
    static QList<PluginPtr> read(const QString &path, const ContentRegistry *content = nullptr);
};

} // namespace korvane
