// korvane_window_shots DIR OUT [VARIANT]: opens the main window and each secondary window of
// Korvane on the demo library in DIR (made by korvane_demo) and saves a picture of it as
// OUT/<window>.png. With a VARIANT (dark, scale2, german, linux) only the main window, as
// OUT/main-window-VARIANT.png: in a dark palette, at the size a 1600x1000 screen at a scale factor
// of 2 leaves (QT_SCALE_FACTOR is the caller's), in the translations the locale picks, or on the
// LV2 tab of Debian's own LV2 bundles copied into DIR (their vendors, versions and packages).
// Meant for Qt's offscreen platform; tools/screenshots.sh runs it.

#include "LinuxPluginFixtures.h"
#include "app/AboutText.h"
#include "app/AppContext.h"
#include "app/AppController.h"
#include "app/LaunchScript.h"
#include "app/Preferences.h"
#include "codec/PropertyList.h"
#include "core/Locations.h"
#include "gui/Translations.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/windows/AboutPanel.h"
#include "gui/windows/GroupEditorWindow.h"
#include "gui/windows/InfoPanel.h"
#include "gui/windows/LaunchScriptPanel.h"
#include "gui/windows/LogWindow.h"
#include "gui/windows/PreferencesWindow.h"
#include "library/FormatManager.h"
#include "os/LocalFileOperations.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPalette>
#include <QTabWidget>
#include <QTextStream>

using namespace korvane;

namespace {

bool save(QWidget &window, const QString &path)
{
    window.show();
    QApplication::processEvents();
    return window.grab().save(path);
}

// Debian's LV2 bundles of three packages, copied under root: most where the distribution keeps
// them, one moved to /usr/local and one to the user's folder; with the packages' file lists, so
// the package column has something to say. Nothing under the real /usr is written.
void makeLinuxLibrary(const QString &root, const QString &home)
{
    const QStringList packages{QStringLiteral("dpf-plugins-lv2"), QStringLiteral("swh-lv2"),
                               QStringLiteral("x42-plugins")};
    for (const QString &bundle :
         {QStringLiteral("3BandEQ"), QStringLiteral("MVerb"), QStringLiteral("Nekobi"),
          QStringLiteral("PingPongPan"), QStringLiteral("amp-swh"), QStringLiteral("meters"),
          QStringLiteral("Kars"), QStringLiteral("delay-swh")})
        LinuxPluginFixtures::copyFromSystem(
            QStringLiteral("/usr/lib/lv2/") + bundle + QStringLiteral(".lv2"), root);
    QDir().mkpath(root + QStringLiteral("/usr/local/lib/lv2"));
    QDir().rename(root + QStringLiteral("/usr/lib/lv2/Kars.lv2"),
                  root + QStringLiteral("/usr/local/lib/lv2/Kars.lv2"));
    QDir().mkpath(home + QStringLiteral("/.lv2"));
    QDir().rename(root + QStringLiteral("/usr/lib/lv2/Nekobi.lv2"),
                  home + QStringLiteral("/.lv2/Nekobi.lv2"));
    const QString info = QStringLiteral("/var/lib/dpkg/info/");
    QDir().mkpath(root + info);
    for (const QString &package : packages)
        QFile::copy(info + package + QStringLiteral(".list"),
                    root + info + package + QStringLiteral(".list"));
}

int rowOf(const FormatManager &manager, const QString &name)
{
    for (int row = 0; row < manager.rowCount(); ++row)
        if (manager.itemAt(row)->name() == name)
            return row;
    return -1;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    installTranslations(app); // English unless the locale asks for another language
    QTextStream err(stderr);
    const QStringList args = QApplication::arguments();
    const QString variant = args.value(3);
    if (args.size() < 3 || args.size() > 4
        || !QStringList({QString(), QStringLiteral("dark"), QStringLiteral("scale2"),
                         QStringLiteral("german"), QStringLiteral("linux")})
                .contains(variant)) {
        err << "Usage: korvane_window_shots DIR OUT [dark|scale2|german|linux]\n"
               "Saves a picture of each window, on the demo library in DIR, under OUT.\n";
        return 2;
    }
    const QString dir = QDir(args.at(1)).absolutePath();
    const QString out = QDir(args.at(2)).absolutePath();
    const Roots roots = Roots::at(dir + QStringLiteral("/root"), dir + QStringLiteral("/home"));
    if (!QDir().mkpath(out)) {
        err << "korvane_window_shots: cannot create " << out << '\n';
        return 1;
    }

    // Sets to choose from in the launch script: a Live set of Audio Units and a Studio set of VST,
    // written below once the library is scanned.
    const Locations locations(roots);
    LocalFileOperations disk;
    const QString live = dir + QStringLiteral("/home/Live.aukorv");
    const QString studio = dir + QStringLiteral("/home/Studio.vstkorv");
    PropertyList::writeXml(disk, locations.dataFilePath(QStringLiteral("ausets.plist")),
                           QVariantList{QStringLiteral("no set"), live});
    PropertyList::writeXml(disk, locations.dataFilePath(QStringLiteral("vstsets.plist")),
                           QVariantList{QStringLiteral("no set"), studio});

    if (variant == QLatin1String("linux"))
        makeLinuxLibrary(roots.systemRoot, roots.home);

    AppContext::Parts parts;
    parts.roots = roots;
    AppContext context(std::move(parts));
    AppController &main = *context.main();
    main.start();
    FormatManager &au = *context.manager(TypeAU);
    FormatManager &vst = *context.manager(TypeVST);
    au.sets().writeSet(live);
    vst.sets().writeSet(studio);
    au.sets().selectSet(1);
    vst.sets().selectSet(1);

    if (!variant.isEmpty()) {
        if (variant == QLatin1String("dark")) {
            QApplication::setStyle(QStringLiteral("Fusion"));
            QPalette dark;
            dark.setColor(QPalette::Window, QColor(0x2b, 0x2b, 0x2b));
            dark.setColor(QPalette::WindowText, QColor(0xe8, 0xe8, 0xe8));
            dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
            dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
            dark.setColor(QPalette::Text, QColor(0xe8, 0xe8, 0xe8));
            dark.setColor(QPalette::Button, QColor(0x35, 0x35, 0x35));
            dark.setColor(QPalette::ButtonText, QColor(0xe8, 0xe8, 0xe8));
            dark.setColor(QPalette::Highlight, QColor(0x2f, 0x6f, 0xdf));
            dark.setColor(QPalette::HighlightedText, Qt::white);
            dark.setColor(QPalette::PlaceholderText, QColor(0x90, 0x90, 0x90));
            QApplication::setPalette(dark);
        }
        MainWindow window(context);
        // 1600x1000 at a scale factor of 2 leaves 800x500 points, less a title bar.
        if (variant == QLatin1String("scale2"))
            window.resize(800, 470);
        else
            window.resize(1100, 560);
        main.setActiveType(TypeAU);
        au.selectRows({rowOf(au, QStringLiteral("Ember EQ.component"))});
        if (variant == QLatin1String("linux")) {
            const int lv2 = FormatTable::builtIn().typeOfName(QStringLiteral("lv2")).value_or(-1);
            if (FormatManager *manager = context.manager(lv2)) {
                main.setActiveType(lv2);
                manager->selectRows({rowOf(*manager, QStringLiteral("MVerb.lv2"))});
            }
        }
        return save(window, out + QStringLiteral("/main-window-") + variant + ".png") ? 0 : 1;
    }

    bool ok = true;
    {
        MainWindow window(context);
        window.resize(1100, 560);
        main.setActiveType(TypeAU);
        ok &= save(window, out + QStringLiteral("/main-window.png"));
        main.setActiveType(TypeVST);
        ok &= save(window, out + QStringLiteral("/main-window-vst.png"));
        main.setActiveType(TypeAU);
        // The quick filters in use: the user's plug-ins that are on, searched for "a".
        FormatTab *page = window.page(TypeAU);
        page->placeFilter()->setCurrentIndex(2);
        page->stateFilter()->setCurrentIndex(1);
        page->searchField()->setText(QStringLiteral("a"));
        ok &= save(window, out + QStringLiteral("/main-window-filters.png"));
        page->searchField()->clear();
        page->placeFilter()->setCurrentIndex(0);
        page->stateFilter()->setCurrentIndex(0);
        // A format with nothing installed says where it looked.
        for (int row = vst.rowCount() - 1; row >= 0; --row)
            QFile::rename(vst.plugins().pathOnDisk(*vst.itemAt(row)),
                          dir + QStringLiteral("/put-aside-") + QString::number(row));
        vst.rescan();
        main.setActiveType(TypeVST);
        ok &= save(window, out + QStringLiteral("/main-window-empty.png"));
        main.setActiveType(TypeAU);
    }
    {
        PreferencesWindow window(*context.pref(), main);
        window.pages()->setCurrentIndex(TypeAU + 1);
        ok &= save(window, out + QStringLiteral("/preferences-audiounits.png"));
        window.pages()->setCurrentIndex(TypeVST + 1);
        ok &= save(window, out + QStringLiteral("/preferences-vst.png"));
        window.pages()->setCurrentIndex(0);
        ok &= save(window, out + QStringLiteral("/preferences-general.png"));
    }
    {
        GroupEditorWindow window(main);
        ok &= save(window, out + QStringLiteral("/group-editor.png"));
    }
    {
        LogWindow window(main);
        au.reportDuplicates();
        vst.reportDuplicates();
        ok &= save(window, out + QStringLiteral("/log.png"));
    }
    {
        context.pref()->store()->setValue(QStringLiteral("AUShowContent"), true);
        InfoPanel panel(*context.info());
        au.selectRows({rowOf(au, QStringLiteral("Ember EQ.component"))});
        au.requestInfo();
        ok &= save(panel, out + QStringLiteral("/info.png"));
    }
    {
        AboutPanel panel(*context.about());
        panel.openAbout();
        ok &= save(panel, out + QStringLiteral("/about.png"));
    }
    {
        LaunchScript &script = *context.script();
        script.setLayout(LaunchScript::Layout::Shell);
        script.setToolPath(QStringLiteral("/usr/bin/KorvaneCMD"));
        LaunchScriptPanel panel(script, context.formats());
        script.setFormatSelected(TypeAU, true);
        script.setFormatSelected(TypeVST, true);
        script.setHostCommand(QStringLiteral("ardour8 \"Live Session\""));
        panel.hostCommand()->setText(script.hostCommand());
        panel.openScriptWindow();
        ok &= save(panel, out + QStringLiteral("/launch-script.png"));
    }
    if (!ok) {
        err << "korvane_window_shots: could not save every picture in " << out << '\n';
        return 1;
    }
    return 0;
}
