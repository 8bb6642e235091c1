#include "codec/Bundle.h"

#include "codec/PropertyList.h"
#include "os/ScanCache.h"

#include <QStringBuilder>

namespace korvane {

namespace {

const char *const kPackageExtensions[] = {".component", ".vst",    ".vst3",   ".rtas",
                                          ".dpm",       ".bundle", ".plugin", ".app"};

QString infoPlistPath(const QString &bundlePath)
{
    return bundlePath % QLatin1String("/Contents/Info.plist");
}

// The Info.plist of the bundle a scan looked at last.
struct InfoMemo : ScanCache::Memo {
    QString bundlePath;
    std::optional<PropertyList::Dictionary> info;
};

// Contents/Info.plist parsed. Recognition and the architecture test both ask about it, so a scan
// parses it once.
std::optional<PropertyList::Dictionary> parsedInfo(const QString &bundlePath, ScanCache *cache)
{
    if (!Bundle::canOpen(bundlePath, cache))
        return std::nullopt;
    // Only this reader sets the memo.
    if (const auto *known = cache ? static_cast<const InfoMemo *>(cache->memo()) : nullptr;
        known && !known->bundlePath.isNull() && known->bundlePath == bundlePath)
        return known->info;
    std::optional<PropertyList::Dictionary> info =
        PropertyList::readParsedDictionary(infoPlistPath(bundlePath));
    if (cache) {
        auto memo = std::make_unique<InfoMemo>();
        memo->bundlePath = bundlePath;
        memo->info = info;
        cache->setMemo(std::move(memo));
    }
    return info;
}

} // namespace

bool Bundle::isFilePackage(const QString &path, ScanCache *cache)
{
    if (ScanCache::kind(path, cache) != ScanCache::Folder)
        return false;
    const QStringView name = QStringView(path).mid(path.lastIndexOf(QLatin1Char('/')) + 1);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot >= 0) {
        const QStringView extension = name.mid(dot);
        for (const char *known : kPackageExtensions) {
            const QLatin1StringView candidate(known);
            if (extension.size() == candidate.size()
                && extension.compare(candidate, Qt::CaseInsensitive) == 0)
                return true;
        }
    }
    return ScanCache::kind(infoPlistPath(path), cache) == ScanCache::File;
}

bool Bundle::canOpen(const QString &path, ScanCache *cache)
{
    return !path.isEmpty() && ScanCache::kind(path, cache) == ScanCache::Folder;
}

std::optional<QVariantMap> Bundle::infoDictionary(const QString &bundlePath, ScanCache *cache)
{
    const std::optional<PropertyList::Dictionary> info = parsedInfo(bundlePath, cache);
    return info ? std::optional<QVariantMap>(info->toMap()) : std::nullopt;
}

QVariant Bundle::infoValue(const QString &bundlePath, const QString &key, ScanCache *cache)
{
    const std::optional<PropertyList::Dictionary> info = parsedInfo(bundlePath, cache);
    return info ? info->value(key) : QVariant();
}

QString Bundle::executableName(const QString &bundlePath, ScanCache *cache)
{
    const QVariant value = infoValue(bundlePath, QStringLiteral("CFBundleExecutable"), cache);
    if (value.typeId() != QMetaType::QString)
        return {};
    QString name = value.toString(); // not const: returned by moving
    // The name comes from the bundle; it may not lead out of Contents/MacOS.
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name == QLatin1String(".")
        || name == QLatin1String(".."))
        return {};
    return name;
}

QString Bundle::executablePath(const QString &bundlePath, ScanCache *cache)
{
    const QString name = executableName(bundlePath, cache);
    if (name.isEmpty())
        return {};
    const QString path = bundlePath % QLatin1String("/Contents/MacOS/") % name;
    return ScanCache::kind(path, cache) == ScanCache::File ? path : QString();
}

} // namespace korvane
