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
    f.activeOnWord = QT_TRANSLATE_NOOP("korvane", "enable");
    f.activeOffWord = QT_TRANSLATE_NOOP("korvane", "disable");
    f.wordFirst = true;
    f.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan AudioUnits:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for AudioUnits:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "AudioUnits only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install AudioUnits only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install AudioUnits:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "AudioUnits Plug-In Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a AudioUnit Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for AudioUnits"),
    };
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
        Format::disabledFolderOf(QStringLiteral("~/Library/Application Support/Plug-Ins"));
    f.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan RTAS-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for RTAS-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "RTAS-PlugIns only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install RTAS-PlugIns only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install RTAS-PlugIns:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "RTAS Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a RTAS Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for RTAS"),
    };
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
    f.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan MAS-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for MAS-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "MAS-PlugIns only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install MAS-PlugIns only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install MAS-PlugIns:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "MAS Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a MAS Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for MAS"),
    };
    return f;
}

Format vst()
{
    Format f = Format::derived(QStringLiteral("VST"), QStringLiteral("VST"),
                               QStringLiteral("/Library/Audio/Plug-Ins/VST"), &isVSTPlugInPath);
    f.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan VST-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for VST-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "VST-PlugIns only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install VST-PlugIns only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install VST-PlugIns:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "VST Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a VST Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for VST"),
    };
    return f;
}

} // namespace

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
