// korvane_window_shots DIR OUT [VARIANT]: opens the main window and each secondary window of
// Korvane on the demo library in DIR (made by korvane_demo) and saves a picture of it as
// OUT/<window>.png, the list across formats (all-plugins.png, with LV2 and VST 3 copies of some
// demo plug-ins added), the details pane (details-pane.png) and Switch Off Unused Formats
// (unused-formats.png) among them. With a VARIANT (dark, scale2, german, linux) only the main
// window, as OUT/main-window-VARIANT.png: in a dark palette, at the size a 1600x1000 screen at a
// scale factor of 2 leaves (QT_SCALE_FACTOR is the caller's), in the translations the locale
// picks, or on the LV2 tab of Debian's own LV2 bundles copied into DIR (their vendors, versions
// and packages). Meant for Qt's offscreen platform; tools/screenshots.sh runs it.

#include "LinuxPluginFixtures.h"
#include "app/AboutText.h"
#include "app/AppContext.h"
#include "app/AppController.h"
#include "app/LaunchScript.h"
#include "app/Preferences.h"
#include "codec/PropertyList.h"
#include "core/Locations.h"
#include "gui/Translations.h"
#include "gui/dialogs/DuplicatesDialog.h"
#include "gui/dialogs/UnusedFormatsDialog.h"
#include "gui/main/AllPluginsModel.h"
#include "gui/main/AllPluginsView.h"
#include "gui/main/DetailsPane.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/windows/AboutPanel.h"
#include "gui/windows/GroupEditorWindow.h"
#include "gui/windows/InfoPanel.h"
#include "gui/windows/LaunchScriptPanel.h"
#include "gui/windows/LogWindow.h"
#include "gui/windows/PreferencesWindow.h"
#include "library/DuplicateReport.h"
#include "library/FormatManager.h"
#include "os/LocalFileOperations.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPalette>
#include <QSplitter>
#include <QTabWidget>
#include <QTextStream>
#include <QTreeView>

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

// The demo's instruments again as LV2 bundles and VST 3 modules in the home's folders, so the
// list across formats has products in more than one.
void addLinuxCopies(const QString &home)
{
    const auto write = [](const QString &path, const QByteArray &bytes) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    };
    const QByteArray prefixes = "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                                "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
                                "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
                                "@prefix foaf: <http://xmlns.com/foaf/0.1/> .\n";
    const QList<QPair<QString, QString>> lv2{
        {QStringLiteral("Aurora Synth"), QStringLiteral("aurora")},
        {QStringLiteral("Iris Pad"), QStringLiteral("iris")},
        {QStringLiteral("Tundra Bass"), QStringLiteral("tundra")}};
    for (const auto &[name, stem] : lv2) {
        const QString bundle = home + QStringLiteral("/.lv2/") + stem + QStringLiteral(".lv2");
        const QByteArray uri = "<https://velmora.example/plugins/" + stem.toUtf8() + ">";
        write(bundle + QStringLiteral("/manifest.ttl"),
              prefixes + uri + " a lv2:Plugin ; lv2:binary <" + stem.toUtf8()
                  + ".so> ; rdfs:seeAlso <" + stem.toUtf8() + ".ttl> .\n");
        write(bundle + QLatin1Char('/') + stem + QStringLiteral(".ttl"),
              prefixes + uri + " doap:name \"" + name.toUtf8()
                  + "\" ; lv2:minorVersion 3 ; lv2:microVersion 1 ; doap:maintainer [ foaf:name "
                    "\"Velmora Audio\" ] .\n");
    }
    for (const QString &name : {QStringLiteral("Aurora Synth"), QStringLiteral("Delta Delay")}) {
        const QString bundle = home + QStringLiteral("/.vst3/") + name + QStringLiteral(".vst3");
        write(bundle + QStringLiteral("/Contents/x86_64-linux/") + name + QStringLiteral(".so"),
              "not loaded");
        write(bundle + QStringLiteral("/Contents/Resources/moduleinfo.json"),
              LinuxPluginFixtures::moduleInfo(name, QStringLiteral("Velmora Audio"),
                                              LinuxPluginFixtures::vst2Cid("Velm", name.toUtf8()),
                                              "Vlm1"));
    }
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

    if (variant.isEmpty())
        addLinuxCopies(dir + QStringLiteral("/home"));
    else if (variant == QLatin1String("linux"))
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
        au.table().selectRows({rowOf(au, QStringLiteral("Ember EQ.component"))});
        if (variant == QLatin1String("linux")) {
            const int lv2 = FormatTable::builtIn().typeOfName(QStringLiteral("lv2")).value_or(-1);
            if (FormatManager *manager = context.manager(lv2)) {
                main.setActiveType(lv2);
                manager->table().selectRows({rowOf(*manager, QStringLiteral("MVerb.lv2"))});
            }
        }
        return save(window, out + QStringLiteral("/main-window-") + variant + ".png") ? 0 : 1;
    }

    bool ok = true;
    {
        // The list across formats, its products in more than one format unfolded, the details
        // of one plug-in beside it, and Switch Off Unused Formats with LV2 unticked.
        MainWindow window(context);
        window.resize(1100, 560);
        window.showAllPlugins(true);
        AllPluginsView &all = *window.allPlugins();
        QTreeView *tree = all.tree();
        for (int row = 0; row < all.filter().rowCount(); ++row) {
            const QModelIndex index = all.filter().index(row, 0);
            if (all.model().productAt(all.filter().mapToSource(index))->inSeveralFormats())
                tree->expand(index);
        }
        ok &= save(window, out + QStringLiteral("/all-plugins.png"));
        all.severalFormats()->setChecked(true);
        window.showDetails(true);
        window.splitter()->setSizes({740, 360});
        for (int row = 0; row < all.filter().rowCount(); ++row) {
            const QModelIndex index = all.filter().index(row, 1);
            if (index.data().toString() == QLatin1String("Aurora Synth")) {
                tree->expand(index.siblingAtColumn(0));
                tree->setCurrentIndex(all.filter().index(2, 1, index.siblingAtColumn(0)));
            }
        }
        ok &= save(window, out + QStringLiteral("/details-pane.png"));
        all.model().refresh();
        UnusedFormatsDialog dialog(all.model().products(), &window);
        if (QCheckBox *box = dialog.formatBox(QStringLiteral("LV2")))
            box->setChecked(false);
        ok &= save(dialog, out + QStringLiteral("/unused-formats.png"));
    }
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
        GroupEditorWindow window(main.groupRegistry());
        ok &= save(window, out + QStringLiteral("/group-editor.png"));
    }
    {
        LogWindow window(main.log());
        au.maintenance().reportDuplicates();
        vst.maintenance().reportDuplicates();
        ok &= save(window, out + QStringLiteral("/log.png"));
    }
    {
        DuplicatesDialog report(
            au,
            DuplicateReport::find(au.plugins(), context.locations().allFolderPaths(au.traits())));
        ok &= save(report, out + QStringLiteral("/duplicates.png"));
    }
    {
        context.pref()->store()->setValue(QStringLiteral("AUShowContent"), true);
        InfoPanel panel(*context.info());
        au.table().selectRows({rowOf(au, QStringLiteral("Ember EQ.component"))});
        au.maintenance().requestInfo();
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
