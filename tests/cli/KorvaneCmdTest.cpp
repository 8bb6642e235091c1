// Runs the built KorvaneCMD against temporary roots and looks at what it printed and moved.

#include "PluginLibraryBuilder.h"
#include "cli/Options.h"
#include "managers/SetDocument.h"
#include "model/AUItem.h"
#include "platform/Bundle.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "support/TestRoots.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

namespace korvane {
namespace {

using Builder = PluginLibraryBuilder;

struct ToolRun {
    int exitCode = -1;
    QString out;
    QString err;
};

class KorvaneCmdTest : public TestRoots {
protected:
    void SetUp() override
    {
        TestRoots::SetUp();
        for (const char *path : {"Documents", "Library/Preferences"})
            QDir().mkpath(homePath(path));
        QDir().mkpath(support = homePath("Library/Application Support/Korvane/"));
        presets = au(LocSystemActive, "Beta Presets");
    }

    ToolRun tool(const QStringList &arguments, const QString &systemRoot = {})
    {
        QProcess process;
        const QString top = systemRoot.isEmpty() ? root() : systemRoot;
        process.start(KORVANE_CMD, QStringList{"--root", top, "--home", home()} + arguments);
        EXPECT_TRUE(process.waitForFinished(60000)) << arguments.join(' ').toStdString();
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    // An Audio Unit folder, or a path inside it.
    static QString au(int loc, const QString &name = {})
    {
        return Locations::folderPath(TypeAU, loc) + (name.isEmpty() ? "" : "/" + name);
    }

    // Every file and folder under both roots with a digest of its contents.
    QStringList snapshot() const
    {
        QStringList entries;
        const auto all = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
        for (const QString &top : {root(), home()}) {
            QDirIterator it(top, all, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString path = it.next();
                QFile file(path);
                QByteArray digest;
                if (it.fileInfo().isFile() && file.open(QIODevice::ReadOnly))
                    digest = QCryptographicHash::hash(file.readAll(), QCryptographicHash::Md5);
                entries << path + ' ' + digest.toHex();
            }
        }
        entries.sort();
        return entries;
    }

    static bool isWholeBundle(const QString &path)
    {
        return QFile::exists(path + "/Contents/Info.plist")
               && QFile::exists(path + "/Contents/MacOS/Plugin");
    }

    // Alpha and Beta on system-wide, Gamma off and Delta on for the user; Beta has presets.
    void makeLibrary()
    {
        Builder::makeAudioUnit(au(LocSystemActive), "Alpha.component", MachO::universal2());
        Builder::makeAudioUnit(au(LocSystemActive), "Beta.component", MachO::intel());
        Builder::makeAudioUnit(au(LocUserDisabled), "Gamma.component", MachO::ppc());
        Builder::makeAudioUnit(au(LocUserActive), "Delta.component", MachO::x86_64());
        Builder::makeFile(presets, "Bright.preset");
        const QVariantList content{QStringList{"Beta.component", presets}};
        ASSERT_TRUE(PropertyList::writeXml(support + "content.plist", content));
        const QString prefs = homePath("Library/Preferences/com.velmora.Korvane.plist");
        ASSERT_TRUE(PropertyList::writeXml(prefs, QVariantMap{{"AUMoveContent", true}}));
    }

    // Beta goes off, Gamma comes on, Alpha and Delta stay; one entry names nothing installed.
    QString writeSet()
    {
        QList<AUItemPtr> items;
        for (const auto &[name, global, active] : {std::tuple("Alpha.component", true, true),
                                                   std::tuple("Beta.component", true, false),
                                                   std::tuple("Gamma.component", false, true),
                                                   std::tuple("Missing.component", false, true),
                                                   std::tuple("Delta.component", false, true)}) {
            items << std::make_shared<AUItem>();
            items.last()->setAUName(name);
            items.last()->setAUGlobal(global);
            items.last()->setAUActive(active);
            items.last()->checkObject(TypeAU);
        }
        EXPECT_TRUE(SetDocument::write(homePath("Documents/Live.aukorv"), items));
        return homePath("Documents/Live.aukorv");
    }

    QJsonArray json(const QStringList &arguments)
    {
        return QJsonDocument::fromJson(tool(arguments).out.toUtf8()).array();
    }

    QString support, presets;
};

TEST_F(KorvaneCmdTest, ApplyingASetMovesExactlyTheChangedPlugInsWithTheirContent)
{
    makeLibrary();
    const QString set = writeSet();

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, "disabled Beta.component\nenabled Gamma.component\n");
    EXPECT_EQ(run.err, "warning: AU set \"" + set
                           + "\": no installed plug-in \"Missing.component\"\n");
    EXPECT_TRUE(isWholeBundle(au(LocSystemDisabled, "Beta.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserActive, "Gamma.component")));
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserActive, "Delta.component")));
    EXPECT_FALSE(QFile::exists(presets));
    const QString movedPresets = au(LocSystemDisabled, "Beta Presets");
    EXPECT_TRUE(QFile::exists(movedPresets + "/Bright.preset"));
    EXPECT_TRUE(readText(support + "content.plist").contains(movedPresets));

    const QStringList before = snapshot();
    const ToolRun again = tool({"-AU", set});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.out, "");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(KorvaneCmdTest, BadArgumentsAndUnreadableSetsExitTwoAndChangeNothing)
{
    makeLibrary();
    const QString set = writeSet();
    ASSERT_EQ(tool({"list"}).exitCode, 0); // lets the first run make its folders and preferences
    static const char garbage[] = "\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\xff\xfe";
    writeText(homePath("Documents/garbage.aukorv"), QByteArray(garbage, sizeof garbage - 1));
    PropertyList::writeXml(homePath("Documents/plist.aukorv"), QVariantList{"Alpha.component"});
    const QStringList before = snapshot();

    const QList<QStringList> bad{{"--bogus"}, {"-AU"}, {"frobnicate"}, {"list", "--format", "wav"},
                                 {"list", "extra"}, {"disable", "Alpha.component"},
                                 {"disable", "--format", "au", "Alpha", "Nope.component"},
                                 {"save-set", "--format", "au"}};
    for (const QStringList &arguments : bad) {
        const ToolRun run = tool(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(run.err.startsWith("KorvaneCMD: ")) << run.err.toStdString();
        EXPECT_EQ(run.out, "");
    }
    EXPECT_TRUE(tool(bad[6]).err.contains("Nope.component"));
    EXPECT_EQ(tool({"list"}, root() + "/nowhere").exitCode, 2);

    for (const char *name : {"none.aukorv", "garbage.aukorv", "plist.aukorv"}) {
        // The readable AU set would move plug-ins; the unreadable VST set stops the run first.
        const QString unreadable = homePath("Documents/") + name;
        const ToolRun run = tool({"-AU", set, "-VST", unreadable});
        EXPECT_EQ(run.exitCode, 2) << name;
        EXPECT_TRUE(run.err.contains(unreadable)) << run.err.toStdString();
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(tool({"show-set", unreadable}).exitCode, 2);
    }
    EXPECT_EQ(snapshot(), before);
}

TEST_F(KorvaneCmdTest, AFailedMoveExitsOneNamesThePathAndLosesNothing)
{
    makeLibrary();
    const QString set = writeSet();
    QDir().mkpath(au(LocSystemDisabled));
    ImmutableGuard guard(au(LocSystemDisabled));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, ""); // the tool answers Stop, which ends the apply
    EXPECT_TRUE(run.err.contains("\"Gamma.component\"")) << run.err.toStdString();
    for (const QString &part : {QString("error: could not disable \"Beta.component\""),
                                au(LocSystemActive, "Beta.component"), au(LocSystemDisabled)})
        EXPECT_TRUE(run.err.contains(part)) << run.err.toStdString();
    EXPECT_TRUE(isWholeBundle(au(LocSystemActive, "Beta.component")));
    EXPECT_TRUE(QFile::exists(presets + "/Bright.preset"));
    EXPECT_FALSE(QFile::exists(au(LocSystemDisabled, "Beta.component")));
}

TEST_F(KorvaneCmdTest, ASetHoldingTwoCopiesOfANameReplacesNeitherCopy)
{
    Builder::makeAudioUnit(au(LocSystemActive), "Twin.component", MachO::intel());
    Builder::makeAudioUnit(au(LocUserActive), "Twin.component", MachO::ppc());
    const QString set = homePath("Documents/twins.aukorv");
    ASSERT_EQ(tool({"save-set", "--format", "au", set}).exitCode, 0);

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, ""); // each entry finds its own copy
    const QString executable = "Twin.component/Contents/MacOS/Plugin";
    EXPECT_EQ(MachOHeader::firstBytes(au(LocSystemActive, executable)), MachO::intel());
    EXPECT_EQ(MachOHeader::firstBytes(au(LocUserActive, executable)), MachO::ppc());
}

TEST_F(KorvaneCmdTest, EnableAndDisableSwitchEveryPlugInOfTheName)
{
    makeLibrary();
    Builder::makeAudioUnit(au(LocUserActive), "Alpha.component", MachO::ppc());

    ToolRun off = tool({"disable", "--format", "AU", "Alpha", "Delta.component"});
    EXPECT_EQ(off.exitCode, 0) << off.err.toStdString();
    EXPECT_EQ(off.out, "disabled Alpha.component\ndisabled Alpha.component\n"
                       "disabled Delta.component\n");
    EXPECT_TRUE(isWholeBundle(au(LocSystemDisabled, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserDisabled, "Alpha.component")));
    EXPECT_TRUE(isWholeBundle(au(LocUserDisabled, "Delta.component")));

    ToolRun on = tool({"enable", "--format", "au", "Delta.component", "Gamma.component"});
    EXPECT_EQ(on.exitCode, 0);
    EXPECT_EQ(on.out, "enabled Delta.component\nenabled Gamma.component\n");
    EXPECT_EQ(tool({"enable", "--format", "au", "Gamma.component"}).out, ""); // already on
}

TEST_F(KorvaneCmdTest, JsonOutputCarriesExactlyTheDocumentedKeys)
{
    makeLibrary();
    Builder::makeAudioUnit(au(LocUserDisabled), "Alpha.component", MachO::ppc());
    const QString echo = Locations::folderPath(TypeVST, LocSystemDisabled);
    Builder::makeVST(echo, "Echo.vst", MachO::ppc());
    PropertyList::writeXml(support + "groups.plist", QVariantList{"", "Synths"});
    PropertyList::writeXml(support + "augroups.plist", QVariantList{"Alpha.component", "Synths"});

    const QJsonArray all = json({"list", "--json"});
    ASSERT_EQ(all.size(), 6);
    for (const QJsonValue &value : all)
        EXPECT_EQ(value.toObject().keys(), QStringList({"active", "architecture", "format",
                                                        "global", "group", "location", "name"}));
    EXPECT_TRUE(all.contains(QJsonObject{
        {"format", "AU"}, {"name", "Alpha.component"}, {"location", au(LocSystemActive)},
        {"global", true}, {"active", true}, {"group", "Synths"},
        {"architecture", "Universal Binary"}}));
    EXPECT_TRUE(all.contains(QJsonObject{
        {"format", "VST"}, {"name", "Echo.vst"}, {"location", echo}, {"global", true},
        {"active", false}, {"group", ""}, {"architecture", "PPC"}}));
    const QString vst = tool({"list", "--format", "vst"}).out;
    EXPECT_EQ(vst.count('\n'), 1);
    EXPECT_TRUE(vst.contains(echo + "/Echo.vst")) << vst.toStdString();
    EXPECT_EQ(tool({"list"}).out.count('\n'), 6);

    const QString set = homePath("Documents/Now.aukorv");
    ASSERT_EQ(tool({"save-set", "--format", "au", set}).exitCode, 0);
    const QJsonArray items = json({"show-set", set, "--json"});
    ASSERT_EQ(items.size(), 5);
    for (const QJsonValue &value : items)
        EXPECT_EQ(value.toObject().keys(), QStringList({"active", "global", "location", "name"}));
    EXPECT_TRUE(items.contains(QJsonObject{{"name", "Gamma.component"}, {"global", false},
                                           {"location", au(LocUserDisabled)}, {"active", false}}));
    const QJsonObject twice{{"format", "AU"}, {"name", "Alpha.component"}, {"count", 2}};
    EXPECT_EQ(json({"duplicates", "--json"}), QJsonArray{twice});
    EXPECT_TRUE(tool({"duplicates", "--format", "vst"}).out.isEmpty());
}

TEST_F(KorvaneCmdTest, HelpAndVersionExitZero)
{
    const ToolRun help = tool({"--help"}), version = tool({"--version"});
    EXPECT_EQ(help.exitCode + version.exitCode, 0);
    EXPECT_EQ(help.out, helpText());
    EXPECT_EQ(version.out, versionText() + "\n");
}

} // namespace
} // namespace korvane
