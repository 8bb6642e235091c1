#include "managers/FormatTraits.h"

#include "platform/Bundle.h"
#include "platform/ScanCache.h"

#include <QVariant>

namespace korvane {

namespace {

QString lastComponent(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// AppleDouble sidecars ("._Name.component") hold a file's metadata on file systems without
// extended attributes; they carry their owner's name but are never plug-ins themselves.
bool isAppleDouble(const QString &path)
{
    return lastComponent(path).startsWith(QLatin1String("._"));
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

FormatTraits audioUnitTraits()
{
    FormatTraits t;
    t.type = 0;
    t.shortName = QStringLiteral("AU");
    t.groupsFile = QStringLiteral("augroups.plist");
    t.setsFile = QStringLiteral("ausets.plist");
    t.panelTitle = QStringLiteral("scan AudioUnits:");
    t.folderTextPrefix = QStringLiteral("scan for AudioUnits:");
    t.createdFolders = {false, true, false, true};
    t.createsDigidesignParents = false;
    t.recognitionTakesFullPath = false;
    t.recognise = &isAudioUnitName;
    t.progressOffset = 0;
    t.activeOnWord = QStringLiteral("enable");
    t.activeOffWord = QStringLiteral("disable");
    t.wordFirst = true;
    t.documentExtension = QStringLiteral("aukorv");
    t.windowLoadName = QStringLiteral("Untitled.aukorv");
    t.untitledName = QStringLiteral("Untitled.aukorv");
    t.savePanelName = QStringLiteral("untitled.aukorv");
    t.installFirstButton = QStringLiteral("AudioUnits only");
    t.installInformative = QStringLiteral("Install AudioUnits only?");
    t.installProgressTitle = QStringLiteral("install AudioUnits:");
    t.installTarget = QStringLiteral("~/Library/Audio/Plug-Ins/Components/%@");
    t.backupRestoreMessage = QStringLiteral("AudioUnits Backup Restore");
    t.infoMessage = QStringLiteral("AudioUnits Plug-In Info");
    t.infoText = QStringLiteral("Please select a AudioUnit Plug-In");
    return t;
}

FormatTraits rtasTraits()
{
    FormatTraits t;
    t.type = 1;
    t.shortName = QStringLiteral("RTAS");
    t.groupsFile = QStringLiteral("rtasgroups.plist");
    t.setsFile = QStringLiteral("rtassets.plist");
    t.panelTitle = QStringLiteral("scan RTAS-Plugins:");
    t.folderTextPrefix = QStringLiteral("scan for RTAS-Plugins:");
    t.createdFolders = {true, true, true, true};
    t.createsDigidesignParents = true;
    t.recognitionTakesFullPath = true;
    t.recognise = &isRTASPlugInPath;
    t.progressOffset = 1;
    t.activeOnWord = QStringLiteral("setActive");
    t.activeOffWord = QStringLiteral("setInactive");
    t.wordFirst = false;
    t.documentExtension = QStringLiteral("rtaskorv");
    t.windowLoadName = QStringLiteral("Untitled.rtaskorv");
    t.untitledName = QStringLiteral("Untitled.rtaskorv");
    t.savePanelName = QStringLiteral("untitled.rtaskorv");
    t.installFirstButton = QStringLiteral("RTAS-PlugIns only");
    t.installInformative = QStringLiteral("Install RTAS-PlugIns only?");
    t.installProgressTitle = QStringLiteral("install RTAS-PlugIns:");
    t.installTarget = QStringLiteral("~/Library/Application Support/Digidesign/Plug-Ins/%@");
    t.backupRestoreMessage = QStringLiteral("RTAS Plug-Ins Backup Restore");
    t.infoMessage = QStringLiteral("RTAS Plug-Ins Info");
    t.infoText = QStringLiteral("Please select a RTAS Plug-In");
    return t;
}

FormatTraits masTraits()
{
    FormatTraits t;
    t.type = 2;
    t.shortName = QStringLiteral("MAS");
    t.groupsFile = QStringLiteral("masgroups.plist");
    t.setsFile = QStringLiteral("massets.plist");
    t.panelTitle = QStringLiteral("scan MAS-Plugins:");
    t.folderTextPrefix = QStringLiteral("scan for MAS-Plugins:");
    t.createdFolders = {true, true, true, true};
    t.createsDigidesignParents = false;
    t.recognitionTakesFullPath = true;
    t.recognise = &isMASPlugInPath;
    t.progressOffset = 1;
    t.activeOnWord = QStringLiteral("setActive");
    t.activeOffWord = QStringLiteral("setInactive");
    t.wordFirst = false;
    // The window-load name is lower case while save compares with the upper-case one: a fresh
    // MAS tab therefore does not count as untitled. Kept as the program has always had it.
    t.documentExtension = QStringLiteral("MASkorv");
    t.windowLoadName = QStringLiteral("Untitled.maskorv");
    t.untitledName = QStringLiteral("Untitled.MASkorv");
    t.savePanelName = QStringLiteral("untitled.MASkorv");
    t.installFirstButton = QStringLiteral("MAS-PlugIns only");
    t.installInformative = QStringLiteral("Install MAS-PlugIns only?");
    t.installProgressTitle = QStringLiteral("install MAS-PlugIns:");
    t.installTarget = QStringLiteral("~/Library/Audio/Plug-Ins/MAS/%@");
    t.backupRestoreMessage = QStringLiteral("MAS Plug-Ins Backup Restore");
    t.infoMessage = QStringLiteral("MAS Plug-Ins Info");
    t.infoText = QStringLiteral("Please select a MAS Plug-In");
    return t;
}

FormatTraits vstTraits()
{
    FormatTraits t;
    t.type = 3;
    t.shortName = QStringLiteral("VST");
    t.groupsFile = QStringLiteral("vstgroups.plist");
    t.setsFile = QStringLiteral("vstsets.plist");
    t.panelTitle = QStringLiteral("scan VST-Plugins:");
    t.folderTextPrefix = QStringLiteral("scan for VST-Plugins:");
    t.createdFolders = {true, true, true, true};
    t.createsDigidesignParents = false;
    t.recognitionTakesFullPath = true;
    t.recognise = &isVSTPlugInPath;
    t.progressOffset = 1;
    t.activeOnWord = QStringLiteral("setActive");
    t.activeOffWord = QStringLiteral("setInactive");
    t.wordFirst = false;
    t.documentExtension = QStringLiteral("vstkorv");
    t.windowLoadName = QStringLiteral("Untitled.vstkorv");
    t.untitledName = QStringLiteral("Untitled.vstkorv");
    t.savePanelName = QStringLiteral("untitled.vstkorv");
    t.installFirstButton = QStringLiteral("VST-PlugIns only");
    t.installInformative = QStringLiteral("Install VST-PlugIns only?");
    t.installProgressTitle = QStringLiteral("install VST-PlugIns:");
    t.installTarget = QStringLiteral("~/Library/Audio/Plug-Ins/VST/%@");
    t.backupRestoreMessage = QStringLiteral("VST Plug-Ins Backup Restore");
    t.infoMessage = QStringLiteral("VST Plug-Ins Info");
    t.infoText = QStringLiteral("Please select a VST Plug-In");
    return t;
}

} // namespace

// Any name ending in the nine letters counts, with or without the dot, bundle or not; only a
// sidecar does not.
bool isAudioUnitName(const QString &name)
{
    return name.endsWith(QLatin1String("component")) && !isAppleDouble(name);
}

// The name is tested before the disk is asked, and a bundle's Info.plist read only when its name
// qualifies.
bool isVSTPlugInPath(const QString &path)
{
    if (isAppleDouble(path))
        return false;
    if (lastComponent(path).endsWith(QLatin1String(".vst")) && Bundle::isFilePackage(path))
        return true;
    return !isFolder(path) && isTypedFile(path, QLatin1StringView("'aPcs'"));
}

bool isRTASPlugInPath(const QString &path)
{
    if (isAppleDouble(path))
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
    if (isAppleDouble(path))
        return false;
    if (isFolder(path))
        return Bundle::isFilePackage(path)
            && holdsValue(Bundle::infoValue(path, QStringLiteral("MotuPluginTypeUUID")));
    return isTypedFile(path, QLatin1StringView("'Mas!'"));
}

const FormatTraits &formatTraits(int type)
{
    // Immutable texts, built once; nothing in them depends on a test's roots.
    static const std::array<FormatTraits, 4> table = {audioUnitTraits(), rtasTraits(), masTraits(),
                                                      vstTraits()};
    return table[type >= 0 && type < 4 ? type : 0];
}

QString digidesignParent(bool system)
{
    return system ? QStringLiteral("/Library/Application Support/Digidesign")
                  : QStringLiteral("~/Library/Application Support/Digidesign");
}

} // namespace korvane
