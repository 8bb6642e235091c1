// The rows of the Linux formats and of the macOS layout's newer formats.
#include "core/LinuxFormats.h"

#include "core/LinuxRecognition.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#ifndef KORVANE_MULTIARCH
#define KORVANE_MULTIARCH "x86_64-linux-gnu"
#endif

namespace korvane {

namespace {

const QString kMultiarch = QStringLiteral(KORVANE_MULTIARCH);

FolderPair systemPair(const QString &folder)
{
    return {folder, true, FolderPair::isDistributionFolder(folder)};
}

// A Linux row: /usr/local first (where "move to system" goes), the user's folders next, the
// distribution's folders last. Nothing is created by a scan: hosts make their own folders.
Format linuxRow(const QString &prefix, const QString &label, const QStringList &userFolders,
                const QStringList &systemFolders, const QStringList &variables,
                Recognition recognise, bool recursive)
{
    Format f = Format::derived(prefix, label, systemFolders.first(), recognise);
    f.pairs.clear();
    f.pairs << systemPair(systemFolders.first());
    for (const QString &user : userFolders)
        f.pairs << FolderPair{user, false, false};
    for (qsizetype i = 1; i < systemFolders.size(); ++i)
        f.pairs << systemPair(systemFolders.at(i));
    f.contentRoots = {f.folder(0), f.folder(1), f.folder(2), f.folder(3)};
    f.createdFolders = {false, false, false, false};
    f.scansSubfolders = recursive;
    f.pathVariables = variables;
    f.installFolder = userFolders.first();
    f.reading = FormatReading::SharedObject;
    return f;
}

Format macRow(const QString &prefix, const QString &cliName, const QString &label,
              const QString &activeFolder, Recognition recognise, bool recursive)
{
    Format f = Format::derived(prefix, label, activeFolder, recognise);
    f.cliName = cliName;
    f.createdFolders = {false, false, false, false};
    f.scansSubfolders = recursive;
    f.onOnlyWhereFoldersExist = true;
    f.reading = FormatReading::MachOBundle;
    return f;
}

QString perArchitecture(const QString &triplet, const QString &folder)
{
    return QStringLiteral("/usr/lib/") + triplet + QLatin1Char('/') + folder;
}

} // namespace

QList<Format> linuxFormats()
{
    const QString ma = kMultiarch;
    QList<Format> rows;

    Format lv2 =
        linuxRow(QStringLiteral("LV2"), QStringLiteral("LV2"), {QStringLiteral("~/.lv2")},
                 {QStringLiteral("/usr/local/lib/lv2"), QStringLiteral("/usr/lib/lv2"),
                  perArchitecture(ma, QStringLiteral("lv2")), QStringLiteral("/usr/lib64/lv2")},
                 {QStringLiteral("LV2_PATH")}, &isLv2BundlePath, false);
    lv2.multiarchFolder = QStringLiteral("lv2");
    lv2.reading = FormatReading::Lv2;
    lv2.helpText = QStringLiteral("LV2 bundles (~/.lv2, /usr/local/lib/lv2, /usr/lib/lv2)");
    lv2.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan LV2-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for LV2-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "LV2-Plugins only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install LV2-Plugins only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install LV2-Plugins:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "LV2 Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a LV2 Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for LV2"),
    };
    rows << lv2;

    Format vst3 =
        linuxRow(QStringLiteral("VST3"), QStringLiteral("VST3"), {QStringLiteral("~/.vst3")},
                 {QStringLiteral("/usr/local/lib/vst3"), QStringLiteral("/usr/lib/vst3")},
                 {QStringLiteral("VST3_PATH")}, &isVst3Path, true);
    vst3.reading = FormatReading::Vst3;
    vst3.helpText = QStringLiteral("VST 3 bundles (~/.vst3, /usr/local/lib/vst3, /usr/lib/vst3)");
    vst3.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan VST3-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for VST3-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "VST3-Plugins only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install VST3-Plugins only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install VST3-Plugins:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "VST3 Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a VST3 Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for VST3"),
    };
    rows << vst3;

    Format clap =
        linuxRow(QStringLiteral("CLAP"), QStringLiteral("CLAP"), {QStringLiteral("~/.clap")},
                 {QStringLiteral("/usr/local/lib/clap"), QStringLiteral("/usr/lib/clap")},
                 {QStringLiteral("CLAP_PATH")}, &isClapPath, true);
    clap.helpText = QStringLiteral("CLAP plug-ins (~/.clap, /usr/local/lib/clap, /usr/lib/clap)");
    clap.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan CLAP-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for CLAP-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "CLAP-Plugins only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install CLAP-Plugins only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install CLAP-Plugins:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "CLAP Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a CLAP Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for CLAP"),
    };
    rows << clap;

    Format ladspa =
        linuxRow(QStringLiteral("LADSPA"), QStringLiteral("LADSPA"), {QStringLiteral("~/.ladspa")},
                 {QStringLiteral("/usr/local/lib/ladspa"), QStringLiteral("/usr/lib/ladspa"),
                  perArchitecture(ma, QStringLiteral("ladspa"))},
                 {QStringLiteral("LADSPA_PATH")}, &isSharedObjectPath, false);
    ladspa.multiarchFolder = QStringLiteral("ladspa");
    ladspa.helpText =
        QStringLiteral("LADSPA libraries (~/.ladspa, /usr/local/lib/ladspa, /usr/lib/ladspa)");
    ladspa.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan LADSPA-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for LADSPA-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "LADSPA-Plugins only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install LADSPA-Plugins only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install LADSPA-Plugins:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "LADSPA Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a LADSPA Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for LADSPA"),
    };
    rows << ladspa;

    Format dssi =
        linuxRow(QStringLiteral("DSSI"), QStringLiteral("DSSI"), {QStringLiteral("~/.dssi")},
                 {QStringLiteral("/usr/local/lib/dssi"), QStringLiteral("/usr/lib/dssi"),
                  perArchitecture(ma, QStringLiteral("dssi"))},
                 {QStringLiteral("DSSI_PATH")}, &isSharedObjectPath, false);
    dssi.multiarchFolder = QStringLiteral("dssi");
    dssi.helpText = QStringLiteral("DSSI libraries (~/.dssi, /usr/local/lib/dssi, /usr/lib/dssi)");
    dssi.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan DSSI-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for DSSI-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "DSSI-Plugins only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install DSSI-Plugins only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install DSSI-Plugins:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "DSSI Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a DSSI Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for DSSI"),
    };
    rows << dssi;

    Format lxvst = linuxRow(QStringLiteral("LXVST"), QStringLiteral("Linux VST"),
                            {QStringLiteral("~/.vst"), QStringLiteral("~/.lxvst")},
                            {QStringLiteral("/usr/local/lib/vst"), QStringLiteral("/usr/lib/vst"),
                             QStringLiteral("/usr/lib/lxvst")},
                            {QStringLiteral("VST_PATH"), QStringLiteral("LXVST_PATH")},
                            &isSharedObjectPath, true);
    lxvst.helpText = QStringLiteral(
        "Linux VST 2 libraries (~/.vst, ~/.lxvst, /usr/local/lib/vst, /usr/lib/vst)");
    lxvst.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan Linux-VST-Plugins:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for Linux-VST-Plugins:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "Linux-VST-Plugins only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install Linux-VST-Plugins only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install Linux-VST-Plugins:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "Linux VST Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a Linux VST Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for Linux VST"),
    };
    rows << lxvst;
    return rows;
}

QList<Format> macLayoutFormats()
{
    const QString plugIns = QStringLiteral("/Library/Audio/Plug-Ins/");
    Format vst3 =
        macRow(QStringLiteral("VST3-Mac"), QStringLiteral("vst3-mac"),
               QStringLiteral("VST3 (macOS)"), plugIns + QStringLiteral("VST3"), &isVst3Path, true);
    vst3.reading = FormatReading::Vst3;
    vst3.helpText = QStringLiteral("VST 3 bundles in /Library/Audio/Plug-Ins/VST3 (macOS layout)");
    Format clap =
        macRow(QStringLiteral("CLAP-Mac"), QStringLiteral("clap-mac"),
               QStringLiteral("CLAP (macOS)"), plugIns + QStringLiteral("CLAP"), &isClapPath, true);
    clap.helpText = QStringLiteral("CLAP bundles in /Library/Audio/Plug-Ins/CLAP (macOS layout)");
    Format lv2 =
        macRow(QStringLiteral("LV2-Mac"), QStringLiteral("lv2-mac"), QStringLiteral("LV2 (macOS)"),
               plugIns + QStringLiteral("LV2"), &isLv2BundlePath, false);
    lv2.reading = FormatReading::Lv2;
    lv2.helpText = QStringLiteral("LV2 bundles in /Library/Audio/Plug-Ins/LV2 (macOS layout)");
    Format aax = macRow(QStringLiteral("AAX"), QStringLiteral("aax"), QStringLiteral("AAX"),
                        QStringLiteral("/Library/Application Support/Avid/Audio/Plug-Ins"),
                        &isAaxPath, true);
    aax.helpText =
        QStringLiteral("AAX bundles in /Library/Application Support/Avid/Audio/Plug-Ins");
    vst3.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan VST3 (macOS):"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for VST3 (macOS):"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "VST3 (macOS) only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install VST3 (macOS) only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install VST3 (macOS):"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "VST3 (macOS) Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a VST3 (macOS) Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for VST3 (macOS)"),
    };
    clap.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan CLAP (macOS):"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for CLAP (macOS):"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "CLAP (macOS) only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install CLAP (macOS) only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install CLAP (macOS):"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "CLAP (macOS) Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a CLAP (macOS) Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for CLAP (macOS)"),
    };
    lv2.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan LV2 (macOS):"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for LV2 (macOS):"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "LV2 (macOS) only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install LV2 (macOS) only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install LV2 (macOS):"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "LV2 (macOS) Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a LV2 (macOS) Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for LV2 (macOS)"),
    };
    aax.texts = {
        .panelTitle = QT_TRANSLATE_NOOP("korvane", "scan AAX:"),
        .folderTextPrefix = QT_TRANSLATE_NOOP("korvane", "scan for AAX:"),
        .installFirstButton = QT_TRANSLATE_NOOP("korvane", "AAX only"),
        .installInformative = QT_TRANSLATE_NOOP("korvane", "Install AAX only?"),
        .installProgressTitle = QT_TRANSLATE_NOOP("korvane", "install AAX:"),
        .infoMessage = QT_TRANSLATE_NOOP("korvane", "AAX Plug-Ins Info"),
        .infoText = QT_TRANSLATE_NOOP("korvane", "Please select a AAX Plug-In"),
        .noSetMessage = QT_TRANSLATE_NOOP("korvane", "There is no set selected for AAX"),
    };
    return {vst3, clap, lv2, aax};
}

FormatTable withRunFolders(const FormatTable &table, const Roots &roots,
                           const QHash<QString, QString> &environment)
{
    const QString root = roots.systemRoot == QLatin1String("/") ? QString() : roots.systemRoot;
    // The per-architecture folders this system has besides the build's own.
    QStringList triplets;
    const QDir lib(root + QStringLiteral("/usr/lib"));
    for (const QString &name :
         lib.entryList({QStringLiteral("*-linux-*")}, QDir::Dirs | QDir::NoDotAndDotDot))
        if (name != kMultiarch)
            triplets << name;

    FormatTable result;
    for (Format row : table) {
        const auto expand = [&](const QString &written) {
            if (written.startsWith(QLatin1String("~/")) || written == QLatin1String("~"))
                return QDir::cleanPath(roots.home + written.mid(1));
            const bool rooted = written.startsWith(QLatin1String("/usr/"))
                                || written.startsWith(QLatin1String("/Library/"));
            return QDir::cleanPath(rooted ? root + written : written);
        };
        const auto identity = [](const QString &path) {
            const QString canonical = QFileInfo(path).canonicalFilePath();
            return canonical.isEmpty() ? QDir::cleanPath(path) : canonical;
        };
        QStringList known;
        for (const FolderPair &pair : std::as_const(row.pairs))
            known << identity(expand(pair.active));
        const auto add = [&](const FolderPair &pair) {
            const QString id = identity(expand(pair.active));
            if (known.contains(id))
                return;
            known << id;
            row.pairs << pair;
        };
        if (!row.multiarchFolder.isEmpty())
            for (const QString &triplet : std::as_const(triplets))
                add(systemPair(perArchitecture(triplet, row.multiarchFolder)));
        for (const QString &variable : std::as_const(row.pathVariables)) {
            const QStringList entries =
                environment.value(variable).split(QLatin1Char(':'), Qt::SkipEmptyParts);
            for (QString entry : entries) {
                if (entry == QLatin1String("~") || entry.startsWith(QLatin1String("~/")))
                    entry = roots.home + entry.mid(1);
                if (!QDir::isAbsolutePath(entry))
                    continue; // a host would take it from wherever it was started
                entry = QDir::cleanPath(entry);
                const QString home = QDir::cleanPath(roots.home);
                if (entry == home || entry.startsWith(home + QLatin1Char('/')))
                    add({QLatin1Char('~') + entry.mid(home.size()), false, false});
                else
                    add(systemPair(entry));
            }
        }
        result = result.with(std::move(row));
    }
    return result;
}

} // namespace korvane
