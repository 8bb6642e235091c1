#include "platform/FormatTable.h"
#include "platform/FinderInfo.h"

#include "platform/Bundle.h"
#include "platform/InterruptedMoves.h"
#include "platform/ScanCache.h"

#include <QCoreApplication>
#include <QVariant>

namespace korvane {

namespace {

const QString kDigidesign = QStringLiteral("/Library/Application Support/Digidesign");

QString lastComponent(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

bool isFolder(const QString &path)
{
    return ScanCache::kind(path) == ScanCache::Folder;
}

// A plain file (anything that is not a folder) counts when it is not hidden and carries the
// format's Finder type.
bool isTypedFile(const QString &path, QLatin1StringView typeString)
{
    if (lastComponent(path).startsWith(QLatin1Char('.')))
        return false;
    return FinderInfo::hfsTypeString(path) == typeString;
}

bool holdsValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return !value.toString().isEmpty();
    case QMetaType::QByteArray:
        return !value.toByteArray().isEmpty();
    case QMetaType::QVariantList:
        return !value.toList().isEmpty();
    case QMetaType::QVariantMap:
        return !value.toMap().isEmpty();
    default:
        return value.isValid() && !value.isNull();
    }
}

// The four folders of a system-wide active folder, as the content roots are usually written.
std::array<QString, LocationCount> foldersOf(const Format &format)
{
    std::array<QString, LocationCount> folders;
    for (int loc = 0; loc < LocationCount; ++loc)
        folders[size_t(loc)] = format.folder(loc);
    return folders;
}

// The scan and install texts, which name a format's plug-ins in their own ways.
void nameTexts(Format &f, const QString &scanned, const QString &installed)
{
    f.panelTitle = QStringLiteral("scan %1:").arg(scanned);
    f.folderTextPrefix = QStringLiteral("scan for %1:").arg(scanned);
    f.installFirstButton = QStringLiteral("%1 only").arg(installed);
    f.installInformative = QStringLiteral("Install %1 only?").arg(installed);
    f.installProgressTitle = QStringLiteral("install %1:").arg(installed);
}

Format audioUnits()
{
    Format f =
        Format::derived(QStringLiteral("AU"), QStringLiteral("AudioUnits"),
                        QStringLiteral("/Library/Audio/Plug-Ins/Components"), &isAudioUnitName);
    f.recognitionTakesFullPath = false;
    f.scansSubfolders = false;
    f.createdFolders = {false, true, false, true};
    f.progressOffset = 0;
    f.activeOnWord = QStringLiteral("enable");
    f.activeOffWord = QStringLiteral("disable");
    f.wordFirst = true;
    nameTexts(f, QStringLiteral("AudioUnits"), QStringLiteral("AudioUnits"));
    f.infoText = QStringLiteral("Please select a AudioUnit Plug-In");
    f.backupRestoreMessage = QStringLiteral("AudioUnits Backup Restore");
    f.infoMessage = QStringLiteral("AudioUnits Plug-In Info");
    return f;
}

Format rtas()
{
    Format f = Format::derived(QStringLiteral("RTAS"), QStringLiteral("RTAS"),
                               kDigidesign + QStringLiteral("/Plug-Ins"), &isRTASPlugInPath);
    f.parentFolder = kDigidesign;
    f.createsParentOnScan = true;
    // The user-disabled root is written without the Digidesign level.
    f.contentRoots[LocUserDisabled] =
        QStringLiteral("~/Library/Application Support/Plug-Ins (Disabled)");
    nameTexts(f, QStringLiteral("RTAS-Plugins"), QStringLiteral("RTAS-PlugIns"));
    return f;
}

Format mas()
{
    Format f = Format::derived(QStringLiteral("MAS"), QStringLiteral("MAS"),
                               QStringLiteral("/Library/Audio/Plug-Ins/MAS"), &isMASPlugInPath);
    // Its folders hang below the RTAS parent, which the path check creates first.
    f.parentFolder = kDigidesign;
    // The set panels offer "MASkorv" and compare with an upper-case untitled name, while the
    // window loads with a lower-case one and the preferences' chooser offers "maskorv": a fresh
    // MAS tab therefore does not count as untitled.
    f.documentExtension = QStringLiteral("MASkorv");
    f.untitledName = QStringLiteral("Untitled.MASkorv");
    f.savePanelName = QStringLiteral("untitled.MASkorv");
    nameTexts(f, QStringLiteral("MAS-Plugins"), QStringLiteral("MAS-PlugIns"));
    return f;
}

Format vst()
{
    Format f = Format::derived(QStringLiteral("VST"), QStringLiteral("VST"),
                               QStringLiteral("/Library/Audio/Plug-Ins/VST"), &isVSTPlugInPath);
    nameTexts(f, QStringLiteral("VST-Plugins"), QStringLiteral("VST-PlugIns"));
    return f;
}

} // namespace

// The texts of the built-in formats, marked for translation where they are looked up.
[[maybe_unused]] static const char *const kTranslatedTexts[] = {
    QT_TRANSLATE_NOOP("korvane", "enable"),
    QT_TRANSLATE_NOOP("korvane", "disable"),
    QT_TRANSLATE_NOOP("korvane", "setActive"),
    QT_TRANSLATE_NOOP("korvane", "setInactive"),
    QT_TRANSLATE_NOOP("korvane", "scan AudioUnits:"),
    QT_TRANSLATE_NOOP("korvane", "scan RTAS-Plugins:"),
    QT_TRANSLATE_NOOP("korvane", "scan MAS-Plugins:"),
    QT_TRANSLATE_NOOP("korvane", "scan VST-Plugins:"),
    QT_TRANSLATE_NOOP("korvane", "scan for AudioUnits:"),
    QT_TRANSLATE_NOOP("korvane", "scan for RTAS-Plugins:"),
    QT_TRANSLATE_NOOP("korvane", "scan for MAS-Plugins:"),
    QT_TRANSLATE_NOOP("korvane", "scan for VST-Plugins:"),
    QT_TRANSLATE_NOOP("korvane", "AudioUnits only"),
    QT_TRANSLATE_NOOP("korvane", "RTAS-PlugIns only"),
    QT_TRANSLATE_NOOP("korvane", "MAS-PlugIns only"),
    QT_TRANSLATE_NOOP("korvane", "VST-PlugIns only"),
    QT_TRANSLATE_NOOP("korvane", "Install AudioUnits only?"),
    QT_TRANSLATE_NOOP("korvane", "Install RTAS-PlugIns only?"),
    QT_TRANSLATE_NOOP("korvane", "Install MAS-PlugIns only?"),
    QT_TRANSLATE_NOOP("korvane", "Install VST-PlugIns only?"),
    QT_TRANSLATE_NOOP("korvane", "install AudioUnits:"),
    QT_TRANSLATE_NOOP("korvane", "install RTAS-PlugIns:"),
    QT_TRANSLATE_NOOP("korvane", "install MAS-PlugIns:"),
    QT_TRANSLATE_NOOP("korvane", "install VST-PlugIns:"),
    QT_TRANSLATE_NOOP("korvane", "AudioUnits Backup Restore"),
    QT_TRANSLATE_NOOP("korvane", "RTAS Plug-Ins Backup Restore"),
    QT_TRANSLATE_NOOP("korvane", "MAS Plug-Ins Backup Restore"),
    QT_TRANSLATE_NOOP("korvane", "VST Plug-Ins Backup Restore"),
    QT_TRANSLATE_NOOP("korvane", "AudioUnits Plug-In Info"),
    QT_TRANSLATE_NOOP("korvane", "RTAS Plug-Ins Info"),
    QT_TRANSLATE_NOOP("korvane", "MAS Plug-Ins Info"),
    QT_TRANSLATE_NOOP("korvane", "VST Plug-Ins Info"),
    QT_TRANSLATE_NOOP("korvane", "Please select a AudioUnit Plug-In"),
    QT_TRANSLATE_NOOP("korvane", "Please select a RTAS Plug-In"),
    QT_TRANSLATE_NOOP("korvane", "Please select a MAS Plug-In"),
    QT_TRANSLATE_NOOP("korvane", "Please select a VST Plug-In"),
    QT_TRANSLATE_NOOP("korvane", "There is no set selected for AudioUnits"),
    QT_TRANSLATE_NOOP("korvane", "There is no set selected for RTAS"),
    QT_TRANSLATE_NOOP("korvane", "There is no set selected for MAS"),
    QT_TRANSLATE_NOOP("korvane", "There is no set selected for VST"),
};

QString Format::folder(int loc) const
{
    if (!isValidLocation(loc))
        return {};
    QString path = activeFolder;
    if (!isSystemLocation(loc))
        path.prepend(QLatin1Char('~'));
    if (!isActiveLocation(loc))
        path += QStringLiteral(" (Disabled)");
    return path;
}

Format Format::derived(const QString &prefix, const QString &label, const QString &activeFolder,
                       bool (*recognise)(const QString &path))
{
    Format f;
    f.prefix = prefix;
    f.tabLabel = label;
    f.activeFolder = activeFolder;
    f.recognise = recognise;
    f.contentRoots = foldersOf(f);
    const QString lower = prefix.toLower();
    f.groupsFile = lower + QStringLiteral("groups.plist");
    f.setsFile = lower + QStringLiteral("sets.plist");
    f.documentExtension = f.defaultSetExtension = lower + QStringLiteral("korv");
    f.windowLoadName = f.untitledName = QStringLiteral("Untitled.") + f.documentExtension;
    f.savePanelName = QStringLiteral("untitled.") + f.documentExtension;
    f.activeOnWord = QStringLiteral("setActive");
    f.activeOffWord = QStringLiteral("setInactive");
    nameTexts(f, label, label);
    f.installTarget = QLatin1Char('~') + activeFolder + QStringLiteral("/%@");
    f.infoText = QStringLiteral("Please select a %1 Plug-In").arg(label);
    f.backupRestoreMessage = label + QStringLiteral(" Plug-Ins Backup Restore");
    f.infoMessage = label + QStringLiteral(" Plug-Ins Info");
    f.noSetMessage = QStringLiteral("There is no set selected for ") + label;
    return f;
}

const FormatTable &FormatTable::builtIn()
{
    // Immutable, built once; nothing in it depends on where a run's roots are.
    static const FormatTable table =
        FormatTable().with(audioUnits()).with(rtas()).with(mas()).with(vst());
    return table;
}

std::optional<int> FormatTable::typeOfName(const QString &name) const
{
    for (const Format &format : m_rows)
        if (name.compare(format.prefix, Qt::CaseInsensitive) == 0)
            return format.type;
    return std::nullopt;
}

int FormatTable::typeOfTabIdentifier(const QString &identifier) const
{
    for (const Format &format : m_rows)
        if (identifier == format.tabIdentifier())
            return format.type;
    return -1;
}

FormatTable FormatTable::with(Format format) const
{
    FormatTable table = *this;
    format.type = count();
    table.m_rows.append(std::move(format));
    return table;
}

bool isAppleDoubleName(const QString &name)
{
    return lastComponent(name).startsWith(QLatin1String("._"));
}

// A sidecar, and what a move cut short leaves behind, may look like a whole plug-in inside.
static bool isNeverPlugIn(const QString &name)
{
    return isAppleDoubleName(name) || InterruptedMoves::isLeftoverName(name);
}

// Any name ending in the nine letters counts, with or without the dot, bundle or not; only a
// sidecar or a leftover does not.
bool isAudioUnitName(const QString &name)
{
    return name.endsWith(QLatin1String("component")) && !isNeverPlugIn(name);
}

// The name is tested before the disk is asked, and a bundle's Info.plist read only when its name
// qualifies.
bool isVSTPlugInPath(const QString &path)
{
    if (isNeverPlugIn(path))
        return false;
    if (lastComponent(path).endsWith(QLatin1String(".vst")) && Bundle::isFilePackage(path))
        return true;
    return !isFolder(path) && isTypedFile(path, QLatin1StringView("'aPcs'"));
}

bool isRTASPlugInPath(const QString &path)
{
    if (isNeverPlugIn(path))
        return false;
    const QString name = lastComponent(path);
    const bool rtas = name.endsWith(QLatin1String(".rtas"));
    if ((rtas || name.endsWith(QLatin1String(".dpm"))) && Bundle::isFilePackage(path))
        return rtas
               || Bundle::infoValue(path, QStringLiteral("CFBundlePackageType")).toString()
                      == QLatin1String("TDMw");
    return !isFolder(path) && isTypedFile(path, QLatin1StringView("'TDMw'"));
}

bool isMASPlugInPath(const QString &path)
{
    if (isNeverPlugIn(path))
        return false;
    if (isFolder(path))
        return Bundle::isFilePackage(path)
               && holdsValue(Bundle::infoValue(path, QStringLiteral("MotuPluginTypeUUID")));
    return isTypedFile(path, QLatin1StringView("'Mas!'"));
}

} // namespace korvane
