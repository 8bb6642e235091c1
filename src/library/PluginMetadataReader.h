#pragma once

#include "codec/FileBytes.h"
#include "codec/PackageDatabase.h"
#include "core/PluginMetadata.h"

#include <QHash>
#include <QList>
#include <QString>
#include <memory>
#include <optional>

struct stat;

namespace korvane {

struct Format;
class Locations;

// Fills a plug-in's metadata from its files, never its code (see FormatReading), and remembers
// each result with the size and modification time of every file it read, so that a rescan of
// unchanged plug-ins asks the disk only for those. One reader per format, held across scans by
// whoever scans.
class PluginMetadataReader {
public:
    // distributionFolders: every distribution folder of the run's formats (as written), so that
    // one package database serves them all; empty: this format's own.
    PluginMetadataReader(const Format &format, const Locations &locations,
                         QStringList distributionFolders = {});

    // Called as each scan starts: the package database is asked once per scan whether dpkg or
    // rpm changed it since it was read.
    void beginScan() { m_packagesChecked = false; }

    // What the plug-in entry at fullPath in the format's folder loc says; null for a format whose
    // rows show no metadata.
    std::shared_ptr<const PluginMetadata> read(int loc, const QString &entry,
                                               const QString &fullPath);

    // The package database the reader asks (null before a distribution plug-in was read): one per
    // system root and set of folders, shared by every reader of the process while it is current.
    std::shared_ptr<const PackageDatabase> packageDatabase() const { return m_packages; }

    // How many results came from the cache, and how many were read, since the reader was made.
    int cacheHits() const { return m_hits; }
    int reads() const { return m_reads; }

    // The same reading without a cache or a package, for tests and fuzzing of whole folders.
    static PluginMetadata readUncached(const Format &format, const QString &fullPath);

private:
    struct Stamp {
        QString path;
        qint64 size = -1; // -1: missing
        qint64 modified = 0;
        qint64 changed = 0;
        bool operator==(const Stamp &) const = default;
    };
    struct Cached {
        QList<Stamp> stamps;
        std::shared_ptr<const PluginMetadata> metadata;
        quint64 packages = 0; // the generation of the database that named its package
    };
    static Stamp stampOf(const QString &path, bool *isFolder = nullptr);
    static Stamp stampOf(const QString &path, const struct stat &info);
    static Stamp stampOf(const QString &path, const FileBytes &file);
    static PluginMetadata readFiles(const Format &format, const QString &fullPath,
                                    QList<Stamp> *stamps);
    QString packageOf(const QString &systemPath);
    PackageDatabase &packages();

    const Format &m_format;
    const Locations &m_locations;
    QHash<QString, Cached> m_cache;
    QStringList m_distributionFolders;
    std::shared_ptr<PackageDatabase> m_packages;
    bool m_packagesChecked = false;
    quint64 m_packagesGeneration = 0; // counts the databases the reader has asked
    int m_hits = 0;
    int m_reads = 0;
};

} // namespace korvane
