#pragma once

#include "os/FileOperations.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <optional>

namespace korvane {

// AppleDouble sidecars: "._NAME" beside NAME carries its Finder information on file systems that
// keep none. A sidecar follows its item in every move, copy, removal and trash. During a batch
// one listing per folder says which items have one, instead of a look per item.
class Sidecars {
public:
    static QString nameOf(const QString &path); // "._NAME"
    static QString pathOf(const QString &path); // beside path
    // Whether something that is no folder lies at path's sidecar path, looked at now.
    static bool exists(const QString &path);
    // Says in the system log that path's sidecar did not follow to ownerTarget and stays.
    static void reportStays(const QString &path, const QString &ownerTarget,
                            const FileError &failure);

    void beginBatch() { m_listed.emplace(); }
    void endBatch() { m_listed.reset(); }
    // Whether path has a sidecar; in a batch from the folder's listing, confirmed when it says so.
    bool beside(const QString &path);
    // Keeps a batch's listings true after a sidecar followed its item from one folder to another.
    void followed(const QString &from, const QString &to, bool moved);

private:
    // During a batch: per folder listed, the names of the sidecars in it.
    std::optional<QHash<QString, QSet<QString>>> m_listed;
};

} // namespace korvane
