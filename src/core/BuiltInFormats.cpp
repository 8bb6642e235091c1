// The rows of the built-in formats. A change to one of them rebuilds this file alone.
#include "core/FormatTable.h"
#include "core/LinuxFormats.h"
#include "core/Recognition.h"

#include <QCoreApplication>

namespace korvane {

namespace {

const QString kDigidesign = QStringLiteral("/Library/Application Support/Digidesign");

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
    f.setScanAndInstallTexts(QStringLiteral("AudioUnits"), QStringLiteral("AudioUnits"));
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
    f.setScanAndInstallTexts(QStringLiteral("RTAS-Plugins"), QStringLiteral("RTAS-PlugIns"));
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
    f.setScanAndInstallTexts(QStringLiteral("MAS-Plugins"), QStringLiteral("MAS-PlugIns"));
    return f;
}

Format vst()
{
    Format f = Format::derived(QStringLiteral("VST"), QStringLiteral("VST"),
                               QStringLiteral("/Library/Audio/Plug-Ins/VST"), &isVSTPlugInPath);
    f.setScanAndInstallTexts(QStringLiteral("VST-Plugins"), QStringLiteral("VST-PlugIns"));
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

const FormatTable &FormatTable::builtIn()
{
    // Immutable, built once; nothing in it depends on where a run's roots are.
    static const FormatTable table = [] {
        FormatTable rows = FormatTable().with(audioUnits()).with(rtas()).with(mas()).with(vst());
        for (const Format &row : linuxFormats() + macLayoutFormats())
            rows = rows.with(row);
        return rows;
    }();
    return table;
}

} // namespace korvane
