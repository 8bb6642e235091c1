#include "core/ContentRegistry.h"

#include "codec/Bundle.h"
#include "codec/PropertyList.h"
#include "core/DataFiles.h"
#include "core/FormatTable.h"
#include "core/Locations.h"
#include "core/PathChecks.h"
#include "core/Plugin.h"

#include <QStringBuilder>

namespace korvane {

namespace {

const QString kSystemContentFile =
    QStringLiteral("/Library/Application Support/Korvane/content.plist");

// Entries whose elements are not all strings, or that lack a key, are left out: one damaged
// entry should not cost the user every other companion list. complete tells whether none was.
std::optional<QList<QStringList>> readContentFile(const QString &path, bool *complete = nullptr)
{
    const std::optional<QVariantList> root = PropertyList::readArray(path);
    if (!root)
        return std::nullopt;
    QList<QStringList> registry;
    bool all = true;
    for (const QVariant &element : *root) {
        QStringList entry;
        bool valid = element.typeId() == QMetaType::QVariantList;
        if (valid) {
            for (const QVariant &value : element.toList()) {
                if (value.typeId() != QMetaType::QString) {
                    valid = false;
                    break;
                }
                entry.append(value.toString());
            }
        }
        if (valid && !entry.isEmpty())
            registry.append(entry);
        else
            all = false;
    }
    if (complete)
        *complete = all;
    return registry;
}

// A registry file is replaced only when every entry in it was read; otherwise it is kept first.
bool contentFileWhole(const QString &path)
{
    bool complete = false;
    return readContentFile(path, &complete) && complete;
}

QVariantList toVariantList(const QStringList &strings)
{
    QVariantList list;
    list.reserve(strings.size());
    for (const QString &s : strings)
        list.append(s);
    return list;
}

} // namespace

ContentRegistry::ContentRegistry(const Locations &locations, const FormatTable &formats,
                                 DataFiles &dataFiles)
    : m_locations(locations), m_formats(formats), m_dataFiles(dataFiles)
{
    load();
}

QString ContentRegistry::userFile() const
{
    return m_locations.dataFilePath(QStringLiteral("content.plist"));
}

void ContentRegistry::load()
{
    m_entries.clear();
    if (auto registry = readContentFile(userFile())) {
        m_entries = *registry;
        return;
    }
    // The system-wide registry is only read here; the first save copies it to the user.
    if (auto registry = readContentFile(m_locations.expand(kSystemContentFile))) {
        m_entries = *registry;
        return;
    }
    write();
}

std::optional<QStringList> ContentRegistry::contentFor(const QString &key) const
{
    for (const QStringList &entry : std::as_const(m_entries)) {
        if (entry.first() == key)
            return entry;
    }
    return std::nullopt;
}

void ContentRegistry::store(const QStringList &entry)
{
    if (entry.isEmpty())
        return; // nothing to file it under
    bool replaced = false;
    for (QStringList &existing : m_entries) {
        if (existing.first() == entry.first()) {
            existing = entry;
            replaced = true;
            break;
        }
    }
    if (!replaced)
        m_entries.append(entry);

    write();
}

void ContentRegistry::fill(Plugin &item) const
{
    item.setContent(contentFor(item.name()).value_or(QStringList()));
}

void ContentRegistry::store(const Plugin &item)
{
    store(item.contentEntry());
}

void ContentRegistry::write()
{
    QVariantList root;
    root.reserve(m_entries.size());
    for (const QStringList &e : std::as_const(m_entries))
        root.append(QVariant(toVariantList(e)));
    m_dataFiles.createSupportFolder();
    m_dataFiles.write(userFile(), root, contentFileWhole);
}

QStringList ContentRegistry::withoutContentPaths(int type, const QStringList &scanPaths) const
{
    QStringList paths = scanPaths;
    const Format *format = m_formats.find(type);
    if (!format)
        return paths;

    QString roots[LocationCount];
    for (int i = 0; i < LocationCount; ++i)
        roots[i] = m_locations.expand(format->contentRoots[size_t(i)]);
    // Every companion is measured against the system-wide active root, whichever root it is under.
    const qsizetype cut = roots[0].size() + 1;

    for (const QStringList &entry : std::as_const(m_entries)) {
        for (qsizetype c = 1; c < entry.size(); ++c) {
            const QString &companion = entry.at(c);
            // A ".." step could point anywhere; such an entry hides nothing.
            if (climbsUp(companion))
                continue;
            bool underRoot = false;
            for (const QString &root : roots) {
                if (liesInside(companion, root)) {
                    underRoot = true;
                    break;
                }
            }
            // Too short to leave a relative part: an empty prefix would hide everything.
            if (!underRoot || companion.size() <= cut)
                continue;
            const QString relative = companion.mid(cut);
            // Whole steps only: a companion "Shared/Lib" hides "Shared/Lib/x", not "Shared/Lib2".
            paths.removeIf([&relative](const QString &path) {
                return path == relative || liesInside(path, relative);
            });
        }
    }
    return paths;
}

QString ContentRegistry::fullPath(const QString &name, int type, int loc) const
{
    // Expanding standardises the path, so a ".." in the name would lead out of the folder.
    const Format *format = m_formats.find(type);
    if (!format || !format->hasLocation(loc) || !isContainedName(name))
        return {};
    return m_locations.expand(format->folder(loc) + QLatin1Char('/') + name);
}

QStringList ContentRegistry::relevantPaths(int type, int loc, const QStringList &scanPaths,
                                           ScanCache *cache) const
{
    QStringList result;
    // Listed paths hold no "." or ".." steps, so the folder is expanded once, not per path.
    const QString folder = fullPath(QString(), type, loc);
    if (folder.isEmpty())
        return withoutContentPaths(type, scanPaths);
    result.reserve(scanPaths.size());
    for (qsizetype i = 0; i < scanPaths.size();) {
        const QString &path = scanPaths.at(i);
        ++i;
        if (path.isEmpty() || climbsUp(path))
            continue; // not a place inside the folder
        result.append(path);
        if (!Bundle::isFilePackage(QString(folder % QLatin1Char('/') % path), cache))
            continue;
        // Only what lies inside the package: a sibling "Echo.vst copy" is a plug-in of its own.
        while (i < scanPaths.size() && liesInside(scanPaths.at(i), path))
            ++i;
    }
    return withoutContentPaths(type, result);
}

} // namespace korvane
