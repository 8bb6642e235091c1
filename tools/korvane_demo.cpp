// korvane_demo DIR: builds a demo plug-in library under DIR/root (the system's /Library) and
// DIR/home (the user's home), so KorvaneCMD and Korvane can be tried without touching real
// plug-ins. Prints the two folders.

#include "PluginLibraryBuilder.h"

#include "app/AppContext.h"
#include "app/Preferences.h"
#include "codec/PropertyList.h"
#include "core/Locations.h"
#include "core/Plugin.h"
#include "library/SetDocument.h"
#include "os/LocalFileOperations.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextStream>

#include <optional>

using namespace korvane;

namespace {

using Builder = PluginLibraryBuilder;

// The demo's own roots, set once in main.
std::optional<Locations> g_locations;

QString folder(int type, int loc)
{
    return g_locations->folderPath(FormatTable::builtIn().at(type), loc);
}

QString dataFile(const QString &name)
{
    return g_locations->dataFilePath(name);
}

struct DemoAudioUnit {
    const char *name;
    int loc;
    QByteArray header;
    Builder::PlistFormat plist;
    bool activeInSet; // its state in the Live set
};

// The Audio Units, which the demo set switches around: Basalt and Ember go off (Ember's presets
// move with it), Fjord and Harbor come on; the rest stay as they are.
QList<DemoAudioUnit> audioUnits()
{
    return {
        {"Aurora Synth.component", LocSystemActive, MachO::universal2(), Builder::Xml, true},
        {"Basalt Compressor.component", LocSystemActive, MachO::intel(), Builder::Binary, false},
        {"Cinder Reverb.component", LocSystemActive, MachO::ppc(), Builder::Xml, true},
        {"Delta Delay.component", LocSystemActive, MachO::x86_64(), Builder::Binary, true},
        {"Ember EQ.component", LocSystemActive, MachO::universal2(), Builder::Xml, false},
        {"Fjord Chorus.component", LocSystemDisabled, MachO::intel(), Builder::Xml, true},
        {"Aurora Synth.component", LocUserActive, MachO::ppc(), Builder::Binary, true},
        {"Granite Pad.component", LocUserActive, MachO::universal2(), Builder::Xml, true},
        {"Harbor Limiter.component", LocUserDisabled, MachO::intel(), Builder::Binary, true},
    };
}

void makeAudioUnits()
{
    for (const DemoAudioUnit &unit : audioUnits())
        Builder::makeAudioUnit(folder(TypeAU, unit.loc), QString::fromUtf8(unit.name), unit.header,
                               unit.plist);

    // Companion content of Ember EQ, inside the Components folder so that it moves along.
    const QString presets = folder(TypeAU, LocSystemActive) + QStringLiteral("/Ember EQ Presets");
    Builder::makeFile(presets, QStringLiteral("Warm.preset"), {}, "warm");
    Builder::makeFile(presets, QStringLiteral("Bright.preset"), {}, "bright");
    Builder::writePlist(dataFile(QStringLiteral("content.plist")),
                        QVariantList{QStringList{QStringLiteral("Ember EQ.component"), presets}});
}

void makeVST()
{
    Builder::makeVST(folder(TypeVST, LocSystemActive), QStringLiteral("Iris Pad.vst"),
                     MachO::universal2());
    Builder::makeVST(folder(TypeVST, LocSystemActive), QStringLiteral("Jade Flanger.vst"),
                     MachO::intel(), Builder::Binary);
    Builder::makeFile(folder(TypeVST, LocSystemActive), QStringLiteral("Kestrel Bass"),
                      QStringLiteral("aPcs"));
    Builder::makeVST(folder(TypeVST, LocSystemActive) + QStringLiteral("/Mosaic"),
                     QStringLiteral("Mosaic Drums.vst"), MachO::ppc());
    Builder::makeVST(folder(TypeVST, LocSystemDisabled), QStringLiteral("Lumen Phaser.vst"),
                     MachO::ppc());
    Builder::makeVST(folder(TypeVST, LocUserActive), QStringLiteral("Iris Pad.vst"),
                     MachO::intel());
    Builder::makeFile(folder(TypeVST, LocUserDisabled), QStringLiteral("Nova Tape"),
                      QStringLiteral("aPcs"));
}

void makeRTAS()
{
    Builder::makeRTAS(folder(TypeRTAS, LocSystemActive), QStringLiteral("Onyx Verb.dpm"),
                      MachO::ppc());
    Builder::makeRTAS(folder(TypeRTAS, LocSystemActive), QStringLiteral("Prism Comp.rtas"),
                      MachO::universal2(), Builder::Binary);
    Builder::makeFile(folder(TypeRTAS, LocSystemActive), QStringLiteral("Quartz Delay"),
                      QStringLiteral("TDMw"));
    Builder::makeRTAS(folder(TypeRTAS, LocSystemDisabled), QStringLiteral("Raven EQ.dpm"),
                      MachO::intel());
    Builder::makeRTAS(folder(TypeRTAS, LocUserActive), QStringLiteral("Onyx Verb.dpm"),
                      MachO::intel());
}

void makeMAS()
{
    Builder::makeMAS(folder(TypeMAS, LocSystemActive), QStringLiteral("Slate Filter.bundle"),
                     MachO::ppc());
    Builder::makeFile(folder(TypeMAS, LocSystemActive), QStringLiteral("Tundra Echo"),
                      QStringLiteral("Mas!"));
    Builder::makeMAS(folder(TypeMAS, LocUserActive), QStringLiteral("Umber Drive.bundle"),
                     MachO::universal2(), Builder::Binary);
    Builder::makeFile(folder(TypeMAS, LocUserDisabled), QStringLiteral("Vesper Gate"),
                      QStringLiteral("Mas!"));
}

void makeGroups()
{
    Builder::writePlist(
        dataFile(QStringLiteral("groups.plist")),
        QVariantList{QString(), QStringLiteral("Synths"), QStringLiteral("Effects")});
    Builder::writePlist(
        dataFile(QStringLiteral("augroups.plist")),
        QStringList{QStringLiteral("Aurora Synth.component"), QStringLiteral("Synths"),
                    QStringLiteral("Granite Pad.component"), QStringLiteral("Synths"),
                    QStringLiteral("Basalt Compressor.component"), QStringLiteral("Effects"),
                    QStringLiteral("Cinder Reverb.component"), QStringLiteral("Effects"),
                    QStringLiteral("Ember EQ.component"), QStringLiteral("Effects")});
    Builder::writePlist(dataFile(QStringLiteral("vstgroups.plist")),
                        QStringList{QStringLiteral("Iris Pad.vst"), QStringLiteral("Synths"),
                                    QStringLiteral("Kestrel Bass"), QStringLiteral("Synths"),
                                    QStringLiteral("Jade Flanger.vst"), QStringLiteral("Effects")});
}

// The Live set: every Audio Unit once (the user's copy of Aurora Synth is left out, since a set
// matches plug-ins by name), a few in another state than on disk, and one that is not installed.
bool writeLiveSet(const QString &path)
{
    QList<PluginPtr> items;
    auto add = [&](const QString &name, int loc, bool active) {
        auto item = std::make_shared<Plugin>();
        item->setName(name);
        item->setGlobal(isSystemLocation(loc));
        item->setActive(active);
        const Format &audioUnits = FormatTable::builtIn().at(TypeAU);
        item->updateLocation(audioUnits, g_locations->allFolderPaths(audioUnits));
        items << item;
    };
    QStringList seen;
    for (const DemoAudioUnit &unit : audioUnits()) {
        const QString name = QString::fromUtf8(unit.name);
        if (!seen.contains(name))
            add(name, unit.loc, unit.activeInSet);
        seen << name;
    }
    add(QStringLiteral("Zephyr Vocoder.component"), LocUserActive, true);
    LocalFileOperations disk;
    return SetDocument::write(disk, path, items);
}

bool isEmptyOrMissing(const QString &path)
{
    return QDir(path).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)
           || !QFile::exists(path);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout), err(stderr);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 2 || args.at(1).startsWith(QLatin1Char('-'))) {
        err << "Usage: korvane_demo DIR\n"
               "Builds a demo plug-in library in DIR/root (system) and DIR/home (user).\n";
        return 2;
    }
    const QString dir = QDir(args.at(1)).absolutePath();
    const QString root = dir + QStringLiteral("/root");
    const QString home = dir + QStringLiteral("/home");
    if (!isEmptyOrMissing(root) || !isEmptyOrMissing(home)) {
        err << "korvane_demo: " << dir << " already holds a library; give an empty folder\n";
        return 1;
    }
    for (const QString &path :
         {root, home + QStringLiteral("/.local/share"), home + QStringLiteral("/Documents"),
          home + QStringLiteral("/Library/Preferences"),
          home + QStringLiteral("/Library/Application Support/Korvane")}) {
        if (!QDir().mkpath(path)) {
            err << "korvane_demo: cannot create " << path << '\n';
            return 1;
        }
    }
    const Roots roots = Roots::at(root, home);
    g_locations.emplace(roots);

    makeGroups();
    makeAudioUnits();
    makeVST();
    makeRTAS();
    makeMAS();
    {
        // The preferences as a first start seeds them; presets of Ember EQ follow it.
        AppContext::Parts parts;
        parts.roots = roots;
        parts.prepareWindow = false;
        AppContext context(std::move(parts));
        context.pref()->store()->setValue(QStringLiteral("AUMoveContent"), true);
    }
    const QString set = home + QStringLiteral("/Documents/Live.aukorv");
    const bool written = writeLiveSet(set);
    if (!written) {
        err << "korvane_demo: cannot write " << set << '\n';
        return 1;
    }

    out << root << '\n' << home << '\n';
    return 0;
}
