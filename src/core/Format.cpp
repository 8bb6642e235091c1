#include "core/Format.h"

#include <QCoreApplication>

namespace korvane {

namespace {

// The four folders of a system-wide active folder, as the content roots are usually written.
std::array<QString, LocationCount> foldersOf(const Format &format)
{
    std::array<QString, LocationCount> folders;
    for (int loc = 0; loc < LocationCount; ++loc)
        folders[size_t(loc)] = format.folder(loc);
    return folders;
}

} // namespace

QString FolderPair::disabled() const
{
    return Format::disabledFolderOf(active);
}

bool FolderPair::isDistributionFolder(const QString &written)
{
    return (written == QLatin1String("/usr") || written.startsWith(QLatin1String("/usr/")))
           && written != QLatin1String("/usr/local")
           && !written.startsWith(QLatin1String("/usr/local/"));
}

QString Format::folder(int loc) const
{
    if (!hasLocation(loc))
        return {};
    const FolderPair &pair = pairs.at(loc / 2);
    return loc % 2 == 0 ? pair.active : pair.disabled();
}

int Format::firstPair(bool system) const
{
    for (qsizetype i = 0; i < pairs.size(); ++i)
        if (pairs.at(i).system == system && !pairs.at(i).distributionOwned)
            return int(i);
    return system ? 0 : 1;
}

Format Format::derived(const QString &prefix, const QString &label, const QString &activeFolder,
                       Recognition recognise)
{
    Format f;
    f.prefix = prefix;
    f.tabLabel = label;
    f.activeFolder = activeFolder;
    f.pairs = {{activeFolder, true, false}, {QLatin1Char('~') + activeFolder, false, false}};
    f.recognise = recognise;
    f.contentRoots = foldersOf(f);
    const QString lower = prefix.toLower();
    f.groupsFile = lower + QStringLiteral("groups.plist");
    f.setsFile = lower + QStringLiteral("sets.plist");
    f.documentExtension = f.defaultSetExtension = lower + QStringLiteral("korv");
    f.windowLoadName = f.untitledName = QStringLiteral("Untitled.") + f.documentExtension;
    f.savePanelName = QStringLiteral("untitled.") + f.documentExtension;
    f.activeOnWord = QT_TRANSLATE_NOOP("korvane", "setActive");
    f.activeOffWord = QT_TRANSLATE_NOOP("korvane", "setInactive");
    f.installFolder = QLatin1Char('~') + activeFolder;
    return f;
}

} // namespace korvane
