// Scanning: rebuilding a format's item list and log from its four folders.

#include "library/Scanner.h"

#include "codec/Bundle.h"
#include "codec/PropertyList.h"
#include "core/ActivityLog.h"
#include "core/ContentRegistry.h"
#include "core/Format.h"
#include "core/FormatTable.h"
#include "core/GroupRegistry.h"
#include "core/InterruptedMoves.h"
#include "core/Locations.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/FormatManager.h"
#include "library/PluginMetadataReader.h"
#include "library/Reporting.h"
#include "os/LibraryLock.h"
#include "os/ScanCache.h"
#include "os/SystemLog.h"

#include <QHash>
#include <QSet>
#include <QStringBuilder>

#include <optional>
#include <vector>

namespace korvane {

namespace {

// The groups file indexed once per scan: for each name, the group that findGroup would answer
// (the element after the name's first even-indexed occurrence). Looking every plug-in up in the
// flat array would make a scan of many grouped plug-ins quadratic.
class GroupIndex {
public:
    explicit GroupIndex(const QVariantList &groups)
    {
        m_groups.reserve(groups.size() / 2);
        for (qsizetype i = 0; i < groups.size(); i += 2) {
            const QString name = groups.at(i).toString();
            if (!m_groups.contains(name))
                m_groups.insert(name, groups.value(i + 1).toString());
        }
    }
    QString groupOf(const QString &name) const { return m_groups.value(name, QStringLiteral("")); }

private:
    QHash<QString, QString> m_groups;
};

// Progress for one scan: the folder line once per folder, the entry line and the bar only when
// the bar's whole-number value moves, so a large folder does not flood the panel.
class ScanProgress {
public:
    ScanProgress(UserInterface &ui, int offset) : m_ui(ui), m_offset(offset) {}

    void folder(const QString &text)
    {
        m_folderText = text;
        m_folderShown = false;
    }

    // The k-th (from 1) of n entries.
    void entry(const QString &name, qsizetype k, qsizetype n)
    {
        if (!m_folderShown) {
            m_ui.progressText(m_folderText);
            m_folderShown = true;
            m_lastValue = -1;
        }
        const qsizetype value = 25 * (k - m_offset) / n;
        if (value == m_lastValue)
            return;
        m_lastValue = value;
        m_ui.progressDetail(name);
        m_ui.progressValue(double(value), 25.0);
    }

private:
    UserInterface &m_ui;
    int m_offset;
    QString m_folderText;
    bool m_folderShown = false;
    qsizetype m_lastValue = -1;
};

// The recursive listing (parents before children, names sorted) without what lies inside file
// packages. relevantPaths drops those paths anyway, as it drops every following path that
// starts with a package's path; leaving them out spares reading every bundle's inner folders.
void collectOutsidePackages(const FileOperations &files, const QString &folder,
                            const QString &relative, ScanCache *cache, QStringList *result)
{
    const QString here =
        relative.isEmpty() ? folder : QString(folder % QLatin1Char('/') % relative);
    const QStringList names = files.listForScan(here, cache);
    for (const QString &name : names) {
        const QString entry =
            relative.isEmpty() ? name : QString(relative % QLatin1Char('/') % name);
        result->append(entry);
        const QString full = folder % QLatin1Char('/') % entry;
        // Links to folders are listed, not followed, and a move's leftovers are not looked into.
        if (ScanCache::isRealFolder(full, cache) && !InterruptedMoves::isLeftoverName(name)
            && !Bundle::isFilePackage(full, cache))
            collectOutsidePackages(files, folder, entry, cache, result);
    }
}

void createIfMissing(FileOperations &files, const QString &path)
{
    if (!files.exists(path))
        files.createDirectory(path); // a failure only means the folder gives no entries
}

} // namespace

Scanner::Scanner(const FormatTraits &traits, const ManagerParts &parts)
    : m_traits(traits), m_parts(parts)
{
}

QStringList Scanner::listFolder(int loc, const QString &folder, ScanCache *cache) const
{
    if (!m_parts.settings.scansSubfolders(m_traits.type))
        return m_parts.run.files.listForScan(folder, cache);
    // All four folders recurse: a plug-in disabled from a subfolder lands in the same subfolder of
    // the disabled folder and must be found there to be enabled again.
    QStringList listing;
    collectOutsidePackages(m_parts.run.files, folder, QString(), cache, &listing);
    return m_parts.content.relevantPaths(m_traits.type, loc, listing, cache);
}

bool Scanner::settleInterruptedMoves(const QStringList &folders, const QList<QStringList> &listings)
{
    const int count = int(folders.size());
    InterruptedMoves moves(m_parts.run.files, folders);
    // Made at the first sidecar: most folders have none.
    std::vector<std::optional<QSet<QString>>> listed(static_cast<size_t>(count));
    const auto lists = [&](int loc, const QString &entry) {
        auto &names = listed[size_t(loc)];
        if (!names)
            names.emplace(listings.at(loc).cbegin(), listings.at(loc).cend());
        return names->contains(entry);
    };
    for (int loc = 0; loc < count; ++loc) {
        for (const QString &entry : listings.at(loc)) {
            if (InterruptedMoves::isLeftoverName(entry)) {
                moves.add(loc, entry);
                continue;
            }
            // Only a sidecar whose item lies in another of the folders, not beside it.
            const QString item = InterruptedMoves::sidecarOwner(entry);
            if (item.isEmpty() || lists(loc, item))
                continue;
            for (int other = 0; other < count; ++other) {
                if (other != loc && lists(other, item)) {
                    moves.addLoneSidecar(loc, entry);
                    break;
                }
            }
        }
    }
    for (const QString &busy : moves.busy())
        systemLog(QStringLiteral("Left %1 alone: the program moving it still runs").arg(busy));
    if (moves.isEmpty() || m_parts.run.files.isReadOnly())
        return false;
    // A move under way in another program looks just like one cut short: only a scan that has
    // the library to itself touches them. Within this program nothing moves during a scan.
    const LibraryLock lock(m_parts.run.locks, m_parts.run.files,
                           m_parts.run.locations.pluginFolders(m_traits), 0);
    if (!lock.isLocked()) {
        systemLog(QStringLiteral("Leftovers of moves left alone: %1").arg(lock.failure()));
        return false;
    }
    for (const InterruptedMoves::Line &line : moves.settle()) {
        systemLog(line.in(false));
        m_parts.log.append(line.in(true) + QLatin1Char('\n'));
    }
    return true;
}

void Scanner::scan(PluginList &list)
{
    list.clear();
    const GroupIndex groups(
        PropertyList::readArray(m_parts.run.locations.dataFilePath(m_traits.groupsFile))
            .value_or(QVariantList{}));

    FileOperations &files = m_parts.run.files;
    UserInterface &ui = m_parts.run.ui;
    ui.progressBegin(korvane::tr(m_traits.texts.panelTitle));
    ScanProgress progress(ui, m_traits.progressOffset);
    const QString folderPrefix = korvane::tr(m_traits.texts.folderTextPrefix);
    // The disk does not change under one scan in any way the scan cares about; the next scan
    // starts with a new cache.
    std::optional<ScanCache> cache(std::in_place);

    const int locationCount = m_traits.locationCount();
    QStringList folders;
    QList<QStringList> listings(locationCount);
    // A folder that is one with another of the format's folders (a " (Disabled)" folder linked to
    // the active one, a bind mount, a home that is the system root) is listed once, as the first:
    // listed twice, each plug-in would show on and off, and a move onto itself would lose it.
    std::vector<std::optional<FileIdentity>> identities(static_cast<size_t>(locationCount));
    std::vector<bool> listed(static_cast<size_t>(locationCount));
    for (int loc = 0; loc < locationCount; ++loc) {
        folders << m_parts.run.locations.expand(m_traits.folder(loc));
        if (m_traits.createsParentOnScan && loc < LocationCount && isActiveLocation(loc)) {
            const QString parent = isSystemLocation(loc) ? m_traits.parentFolder
                                                         : QLatin1Char('~') + m_traits.parentFolder;
            createIfMissing(files, m_parts.run.locations.expand(parent));
        }
        if (loc < LocationCount && m_traits.createdFolders[size_t(loc)])
            createIfMissing(files, folders[size_t(loc)]);
        identities[size_t(loc)] = files.identity(folders[size_t(loc)], true);
        listed[size_t(loc)] = true;
        for (int earlier = 0; earlier < loc && identities[size_t(loc)]; ++earlier) {
            if (!identities[size_t(earlier)]
                || !identities[size_t(earlier)]->isSameItem(*identities[size_t(loc)]))
                continue;
            listed[size_t(loc)] = false;
            const QString pair =
                folders[size_t(earlier)] % QLatin1Char('\n') % folders[size_t(loc)];
            if (!m_saidOneFolder.contains(pair)) {
                m_saidOneFolder.insert(pair);
                tell(m_parts.log,
                     QT_TRANSLATE_NOOP("korvane",
                                       "%1 and %2 are one folder: its plug-ins are listed once, in "
                                       "%1, and none can move from one to the other"),
                     {folders[size_t(earlier)], folders[size_t(loc)]});
            }
            break;
        }
        if (listed[size_t(loc)])
            listings[loc] = listFolder(loc, folders[size_t(loc)], &*cache);
    }
    if (settleInterruptedMoves(folders, listings)) {
        cache.emplace();
        for (int loc = 0; loc < locationCount; ++loc)
            if (listed[size_t(loc)])
                listings[loc] = listFolder(loc, folders[size_t(loc)], &*cache);
    }

    if (!m_metadata) {
        // One package database for every format of the run.
        QStringList distributionFolders;
        for (const Format &format : m_parts.run.formats)
            for (int loc = 0; loc < format.locationCount(); ++loc)
                if (format.isDistributionOwned(loc))
                    distributionFolders << format.folder(loc);
        m_metadata = std::make_shared<PluginMetadataReader>(m_traits, m_parts.run.locations,
                                                            distributionFolders);
    }
    m_metadata->beginScan();
    for (int loc = 0; loc < locationCount; ++loc) {
        const QString &folder = folders[size_t(loc)];
        const QStringList &entries = listings.at(loc);
        progress.folder(folderPrefix + m_traits.folder(loc));
        const bool global = m_traits.isSystem(loc);
        const bool active = isActiveLocation(loc);
        const qsizetype n = entries.size();
        for (qsizetype k = 1; k <= n; ++k) {
            const QString &entry = entries.at(k - 1);
            progress.entry(entry, k, n);

            const QString fullPath = folder % QLatin1Char('/') % entry;
            if (InterruptedMoves::isLeftoverName(entry)
                || !m_traits.recognise(m_traits.recognitionTakesFullPath ? fullPath : entry,
                                       &*cache))
                continue;

            auto item = std::make_shared<Plugin>();
            item->setName(entry);
            m_parts.content.fill(*item);
            item->setLocation(folder);
            item->setGlobal(global);
            item->setPair(loc / 2);
            item->setActive(active);
            item->setGroupId(m_parts.groups.positionOf(groups.groupOf(entry)));

            PluginRecord record;
            record.setName(entry);
            record.setFolder(folder);
            record.setProcessed(true);

            list.append(item, record);
            // A row that reads its plug-ins' files reads the executable's header there, once.
            if (m_traits.reading == FormatReading::BundleArchitecture)
                item->detectArchitecture(fullPath, &*cache);
            else
                item->setMetadata(m_metadata->read(loc, entry, fullPath));
        }
    }

    cache.reset();
    ui.progressEnd();
}

} // namespace korvane
