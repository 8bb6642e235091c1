#include "library/PluginMetadataReader.h"

#include "codec/Bundle.h"
#include "codec/ElfHeader.h"
#include "codec/FileBytes.h"
#include "codec/Lv2Bundle.h"
#include "codec/MachOArchitectures.h"
#include "codec/Vst3ModuleInfo.h"
#include "core/Format.h"
#include "core/Locations.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <functional>
#include <mutex>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>

namespace korvane {

namespace {

constexpr qsizetype kModuleInfoBytes = 4 * 1024 * 1024;

QString cannotBeRead(const QString &what)
{
    return QStringLiteral("cannot be read: ") + what;
}

// The ELF header of one shared object: its architecture, or why it is not one.
void readElf(const FileBytes &file, PluginMetadata *metadata)
{
    const ElfHeader header = file.error.isEmpty() ? ElfHeader::parse(file.bytes) : ElfHeader();
    if (!file.error.isEmpty()) {
        metadata->unreadable = cannotBeRead(file.error);
        return;
    }
    if (!header.valid) {
        metadata->unreadable = cannotBeRead(header.reason);
        return;
    }
    if (!header.isSharedObject()) {
        metadata->unreadable = cannotBeRead(header.typeText());
        return;
    }
    metadata->architectures << header.describe();
}

// The names of the folders in folder (links to folders too), sorted, and folder's own stat; a
// listing of its own rather than QDir's, which asks for every entry's details.
QStringList folderNames(const QString &folder, struct stat *info, bool *opened)
{
    QStringList names;
    DIR *dir = ::opendir(QFile::encodeName(folder).constData());
    *opened = dir != nullptr;
    if (!dir)
        return names;
    const int fd = ::dirfd(dir);
    if (::fstat(fd, info) != 0)
        *opened = false;
    while (const dirent *entry = ::readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct stat target {};
            isFolder = ::fstatat(fd, entry->d_name, &target, 0) == 0 && S_ISDIR(target.st_mode);
        }
        if (isFolder)
            names << QFile::decodeName(entry->d_name);
    }
    ::closedir(dir);
    names.sort();
    return names;
}

void readLv2(const QString &path, PluginMetadata *metadata, const Lv2Bundle::FileReader &reader,
             const std::function<FileBytes(const QString &)> &readHeader)
{
    const Lv2BundleInfo info = Lv2Bundle::read(path, reader);
    QStringList binaries;
    for (const Lv2Plugin &plugin : info.plugins) {
        // The architectures are those of the shared objects the bundle names inside itself; one
        // named elsewhere (or not there) says nothing of this bundle, so it is left out quietly.
        const QString binary = plugin.binary;
        if (!binary.isEmpty() && !binary.contains(QLatin1Char(':'))
            && !binary.startsWith(QLatin1Char('/'))
            && !binary.split(QLatin1Char('/')).contains(QStringLiteral(".."))
            && !binaries.contains(binary)) {
            binaries << binary;
            const FileBytes file = readHeader(path + QLatin1Char('/') + binary);
            const ElfHeader header =
                file.error.isEmpty() ? ElfHeader::parse(file.bytes) : ElfHeader();
            if (header.valid && header.isSharedObject()
                && !metadata->architectures.contains(header.describe()))
                metadata->architectures << header.describe();
        }
        metadata->plugins << PluginMetadata::Inner{plugin.name, plugin.uri};
        metadata->identifiers << plugin.uri;
        if (metadata->vendor.isEmpty())
            metadata->vendor = plugin.vendor;
        if (metadata->version.isEmpty())
            metadata->version = plugin.version();
    }
    if (info.plugins.size() == 1)
        metadata->name = info.plugins.first().name;
    if (!info.error.isEmpty())
        metadata->unreadable = info.error.startsWith(QLatin1String("cannot be read"))
                                   ? info.error
                                   : cannotBeRead(info.error);
}

void readVst3(const QString &path, PluginMetadata *metadata, const QStringList &contentsNames,
              const QByteArray &moduleInfo, const QString &moduleInfoError)
{
    for (const Vst3Architectures::Entry &entry :
         Vst3Architectures::fromFolderNames(contentsNames)) {
        const QString name = entry.system == QLatin1String("Linux")
                                 ? entry.architecture
                                 : entry.architecture + QLatin1Char('-') + entry.system;
        if (!metadata->architectures.contains(name))
            metadata->architectures << name;
    }
    if (!moduleInfoError.isEmpty()) {
        // A module without moduleinfo.json (older SDKs write none) says only its architectures.
        if (!moduleInfoError.contains(QLatin1String("No such file")))
            metadata->unreadable = moduleInfoError;
        return;
    }
    QString error;
    const std::optional<Vst3ModuleInfo> info = Vst3ModuleInfo::parse(moduleInfo, &error);
    if (!info) {
        metadata->unreadable =
            cannotBeRead(QStringLiteral("moduleinfo.json is not JSON5: ") + error);
        return;
    }
    metadata->name = info->name;
    metadata->vendor = info->vendor;
    metadata->version = info->version;
    for (const Vst3ModuleInfo::Class &audio : info->audioModules()) {
        metadata->plugins << PluginMetadata::Inner{audio.name, audio.cid};
        metadata->identifiers << audio.cid;
        if (metadata->vendor.isEmpty())
            metadata->vendor = audio.vendor;
        if (metadata->version.isEmpty())
            metadata->version = audio.version;
    }
    for (const Vst3ModuleInfo::Compatibility &compatibility : info->compatibility)
        for (const Vst3ModuleInfo::OldId &old : compatibility.old)
            metadata->identifiers << (old.vst2Id ? QStringLiteral("VST2:") + old.vst2IdText()
                                                 : old.cid);
    Q_UNUSED(path);
}

} // namespace

PluginMetadataReader::PluginMetadataReader(const Format &format, const Locations &locations,
                                           QStringList distributionFolders)
    : m_format(format), m_locations(locations),
      m_distributionFolders(std::move(distributionFolders))
{
    if (m_distributionFolders.isEmpty())
        for (int loc = 0; loc < m_format.locationCount(); ++loc)
            if (m_format.isDistributionOwned(loc))
                m_distributionFolders << m_format.folder(loc);
    m_distributionFolders.removeDuplicates();
    m_distributionFolders.sort();
}

PluginMetadataReader::Stamp PluginMetadataReader::stampOf(const QString &path, bool *isFolder)
{
    struct stat info {};
    const bool found = ::stat(QFile::encodeName(path).constData(), &info) == 0;
    if (isFolder)
        *isFolder = found && S_ISDIR(info.st_mode);
    return found ? stampOf(path, info) : Stamp{path};
}

PluginMetadataReader::Stamp PluginMetadataReader::stampOf(const QString &path,
                                                          const struct stat &info)
{
    return {path, qint64(info.st_size),
            qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec,
            qint64(info.st_ctim.tv_sec) * 1000000000 + info.st_ctim.tv_nsec};
}

PluginMetadataReader::Stamp PluginMetadataReader::stampOf(const QString &path,
                                                          const FileBytes &file)
{
    if (file.size >= 0)
        return {path, file.size, file.modified, file.changed};
    // Missing, or a step that is a file: stat says the same. Anything else (no permission) is
    // asked again, so the stamp is what a rescan will compare.
    if (file.errorNumber == ENOENT || file.errorNumber == ENOTDIR)
        return Stamp{path};
    return stampOf(path);
}

PluginMetadata PluginMetadataReader::readFiles(const Format &format, const QString &fullPath,
                                               QList<Stamp> *stamps)
{
    // Each file is stamped by the fstat of its own read: a stat beside every read cost a third of
    // a scan of thousands of plug-ins.
    PluginMetadata metadata;
    const auto stamp = [stamps](const Stamp &taken) {
        if (stamps)
            stamps->append(taken);
    };
    const auto readStamped = [&](const QString &path, qsizetype maxBytes, FileBytes::Mode mode) {
        FileBytes file = FileBytes::read(path, maxBytes, mode);
        if (stamps)
            stamp(stampOf(path, file));
        return file;
    };
    switch (format.reading) {
    case FormatReading::BundleArchitecture:
        break;
    case FormatReading::Lv2:
        // The manifest and the files it names are stamped; the bundle's folder need not be, as a
        // file that joins the bundle is read only once the manifest (which changes) names it.
        readLv2(
            fullPath, &metadata,
            [&](const QString &path, qsizetype maxBytes) {
                FileBytes file = readStamped(path, maxBytes, FileBytes::Whole);
                return Lv2Bundle::fileRead(std::move(file));
            },
            [&](const QString &binary) {
                return readStamped(binary, ElfHeader::BytesNeeded, FileBytes::Prefix);
            });
        break;
    case FormatReading::SharedObject:
        readElf(readStamped(fullPath, ElfHeader::BytesNeeded, FileBytes::Prefix), &metadata);
        break;
    case FormatReading::Vst3: {
        // The Contents folder is listed first: a bundle's own folder needs no stamp of its own
        // (a file or folder put in its place changes what Contents says), and only where there
        // is no Contents does the stat tell an older single-file module.
        const QString contents = fullPath + QStringLiteral("/Contents");
        struct stat contentsInfo {};
        bool listed = false;
        const QStringList names = folderNames(contents, &contentsInfo, &listed);
        if (!listed) {
            bool isFolder = false;
            const Stamp bundle = stampOf(fullPath, &isFolder);
            if (!isFolder) {
                // An older module is the shared object itself.
                readElf(readStamped(fullPath, ElfHeader::BytesNeeded, FileBytes::Prefix),
                        &metadata);
                break;
            }
            stamp(bundle);
        }
        stamp(listed ? stampOf(contents, contentsInfo) : stampOf(contents));
        const FileBytes info = readStamped(contents + QStringLiteral("/Resources/moduleinfo.json"),
                                           kModuleInfoBytes, FileBytes::Whole);
        readVst3(fullPath, &metadata, names, info.bytes, info.error);
        if (metadata.architectures.isEmpty() && metadata.unreadable.isEmpty())
            metadata.unreadable = cannotBeRead(QStringLiteral("no Contents/<architecture> folder"));
        break;
    }
    case FormatReading::MachOBundle: {
        const QString executable = Bundle::executablePath(fullPath);
        stamp(stampOf(fullPath));
        stamp(stampOf(fullPath + QStringLiteral("/Contents/Info.plist")));
        if (executable.isEmpty()) {
            metadata.unreadable = cannotBeRead(QStringLiteral("no executable in the bundle"));
            break;
        }
        const FileBytes bytes =
            readStamped(executable, MachOArchitectures::BytesNeeded, FileBytes::Prefix);
        if (!bytes.error.isEmpty()) {
            metadata.unreadable = bytes.error;
            break;
        }
        const MachOArchitectures archs = MachOArchitectures::parse(bytes.bytes);
        metadata.architectures = archs.architectures;
        if (archs.architectures.isEmpty())
            metadata.unreadable = cannotBeRead(archs.reason);
        break;
    }
    }
    return metadata;
}

PluginMetadata PluginMetadataReader::readUncached(const Format &format, const QString &fullPath)
{
    return readFiles(format, fullPath, nullptr);
}

std::shared_ptr<const PluginMetadata> PluginMetadataReader::read(int loc, const QString &entry,
                                                                 const QString &fullPath)
{
    if (m_format.reading == FormatReading::BundleArchitecture)
        return nullptr;
    const auto found = m_cache.constFind(fullPath);
    if (found != m_cache.cend()) {
        bool same = true;
        for (const Stamp &stamp : found->stamps) {
            if (!(stampOf(stamp.path) == stamp)) {
                same = false;
                break;
            }
        }
        if (same && m_format.isDistributionOwned(loc)) {
            packages(); // opened again where dpkg or rpm changed it since
            if (found->packages != m_packagesGeneration) {
                // The files are as they were: only the package is asked again.
                auto metadata = std::make_shared<PluginMetadata>(*found->metadata);
                metadata->package = packageOf(m_format.folder(loc) + QLatin1Char('/') + entry);
                m_cache[fullPath] = Cached{found->stamps, metadata, m_packagesGeneration};
                ++m_hits;
                return metadata;
            }
        }
        if (same) {
            ++m_hits;
            return found->metadata;
        }
    }
    ++m_reads;
    Cached cached;
    auto metadata = std::make_shared<PluginMetadata>(readFiles(m_format, fullPath, &cached.stamps));
    if (m_format.isDistributionOwned(loc)) {
        metadata->package = packageOf(m_format.folder(loc) + QLatin1Char('/') + entry);
        cached.packages = m_packagesGeneration;
    }
    cached.metadata = metadata;
    m_cache.insert(fullPath, cached);
    return metadata;
}

namespace {

// What changes when dpkg or rpm installs or removes a package: dpkg's info folder (a package's
// list comes and goes) and its status file, rpm's database folder.
QString packageDatabaseStamp(const QString &root)
{
    QString stamp;
    for (const char *path : {"/var/lib/dpkg/info", "/var/lib/dpkg/status", "/var/lib/rpm"}) {
        struct stat info {};
        if (::stat(QFile::encodeName(root + QLatin1String(path)).constData(), &info) == 0)
            stamp += QStringLiteral("%1.%2.%3.%4;")
                         .arg(info.st_mtim.tv_sec)
                         .arg(info.st_mtim.tv_nsec)
                         .arg(info.st_ctim.tv_sec)
                         .arg(info.st_ctim.tv_nsec);
        else
            stamp += QLatin1Char('-');
    }
    return stamp;
}

// The package databases in use, one per root and set of folders: every format of a run asks the
// same one, and reading dpkg's lists once per format read them six times on a Linux system.
struct OpenDatabase {
    QString root;
    QStringList folders;
    QString stamp;
    std::weak_ptr<PackageDatabase> database;
};

std::mutex g_openDatabasesMutex;
QList<OpenDatabase> g_openDatabases;

} // namespace

PackageDatabase &PluginMetadataReader::packages()
{
    if (m_packages && m_packagesChecked)
        return *m_packages;
    m_packagesChecked = true;
    const QString root = m_locations.roots().systemRoot;
    const QString stamp = packageDatabaseStamp(root);
    const std::lock_guard<std::mutex> lock(g_openDatabasesMutex);
    g_openDatabases.removeIf([](const OpenDatabase &open) { return open.database.expired(); });
    std::shared_ptr<PackageDatabase> current;
    for (const OpenDatabase &open : std::as_const(g_openDatabases))
        if (open.root == root && open.folders == m_distributionFolders && open.stamp == stamp)
            current = open.database.lock();
    if (!current) {
        current = std::make_shared<PackageDatabase>(PackageDatabase::open(
            root, m_distributionFolders, QStandardPaths::findExecutable(QStringLiteral("rpm"))));
        g_openDatabases.append({root, m_distributionFolders, stamp, current});
    }
    // Counted rather than compared by address: a new database may take a freed one's place.
    if (current != m_packages) {
        m_packages = std::move(current);
        ++m_packagesGeneration;
    }
    return *m_packages;
}

QString PluginMetadataReader::packageOf(const QString &systemPath)
{
    return packages().owners(systemPath).join(QStringLiteral(", "));
}

} // namespace korvane
