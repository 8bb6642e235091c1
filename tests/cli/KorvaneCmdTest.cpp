// Runs the built KorvaneCMD against temporary roots and looks at what it printed and moved.

#include "PluginLibraryBuilder.h"
#include "managers/SetDocument.h"
#include "model/AUItem.h"
#include "platform/Bundle.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "support/TestRoots.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

namespace korvane {
namespace {

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
        QDir().mkpath(homePath("Library/Application Support/Korvane"));
        QDir().mkpath(homePath("Documents"));
        QDir().mkpath(homePath("Library/Preferences"));
    }

    ToolRun tool(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral(KORVANE_CMD),
                      QStringList{"--root", root(), "--home", home()} + arguments);
        EXPECT_TRUE(process.waitForFinished(60000)) << arguments.join(' ').toStdString();
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    static QString folder(int type, int loc) { return Locations::folderPath(type, loc); }

    // Every file and folder under both roots with a digest of its contents.
    QStringList snapshot() const
    {
        QStringList entries;
        for (const QString &top : {root(), home()}) {
            QDirIterator it(top, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                            QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString path = it.next();
                QFile file(path);
                QByteArray digest;
                if (it.fileInfo().isFile() && file.open(QIODevice::ReadOnly))
                    digest = QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1).toHex();
                entries << path + QLatin1Char(' ') + QString::fromLatin1(digest);
            }
        }
        entries.sort();
        return entries;
    }

    static bool isWholeBundle(const QString &path)
    {
        return QFile::exists(path + "/Contents/Info.plist") && QFile::exists(path + "/Contents/MacOS/Plugin");
    }

    // Alpha and Beta on system-wide, Gamma off for the user, Delta on for the user; Beta has presets.
    void makeLibrary()
    {
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Alpha.component", MachO::universal2());
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Beta.component", MachO::intel());
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserDisabled), "Gamma.component", MachO::ppc());
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserActive), "Delta.component", MachO::x86_64());
        m_presets = folder(TypeAU, LocSystemActive) + "/Beta Presets";
        PluginLibraryBuilder::makeFile(m_presets, "Bright.preset");
        PropertyList::writeXml(homePath("Library/Application Support/Korvane/content.plist"),
                               QVariantList{QStringList{"Beta.component", m_presets}});
        ASSERT_TRUE(PropertyList::writeXml(homePath("Library/Preferences/com.velmora.Korvane.plist"),
                                           QVariantMap{{"AUMoveContent", true}}));
    }

    static AUItemPtr savedItem(const QString &name, int loc, bool active)
    {
        auto item = std::make_shared<AUItem>();
        item->setAUName(name);
        item->setAUGlobal(loc < LocUserActive);
        item->setAUActive(active);
        item->checkObject(TypeAU);
        return item;
    }

    // Beta goes off, Gamma comes on, Alpha and Delta stay; one entry names nothing installed.
    QString writeSet()
    {
        const QString path = homePath("Documents/Live.aukorv");
        EXPECT_TRUE(SetDocument::write(path, {savedItem("Alpha.component", LocSystemActive, true),
                                              savedItem("Beta.component", LocSystemActive, false),
                                              savedItem("Gamma.component", LocUserActive, true),
                                              savedItem("Missing.component", LocUserActive, true),
                                              savedItem("Delta.component", LocUserActive, true)}));
        return path;
    }

    QString m_presets;
};

TEST_F(KorvaneCmdTest, ApplyingASetMovesExactlyTheChangedPlugInsWithTheirContent)
{
    makeLibrary();
    const QString set = writeSet();

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, "disabled Beta.component\nenabled Gamma.component\n");
    EXPECT_EQ(run.err, QString("warning: AU set \"%1\": no installed plug-in \"Missing.component\"\n").arg(set));

    EXPECT_TRUE(isWholeBundle(folder(TypeAU, LocSystemDisabled) + "/Beta.component"));
    EXPECT_TRUE(isWholeBundle(folder(TypeAU, LocUserActive) + "/Gamma.component"));
    EXPECT_TRUE(isWholeBundle(folder(TypeAU, LocSystemActive) + "/Alpha.component"));
    EXPECT_TRUE(isWholeBundle(folder(TypeAU, LocUserActive) + "/Delta.component"));
    EXPECT_FALSE(QFile::exists(m_presets));
    EXPECT_TRUE(QFile::exists(folder(TypeAU, LocSystemDisabled) + "/Beta Presets/Bright.preset"));
    EXPECT_TRUE(readText(homePath("Library/Application Support/Korvane/content.plist"))
                    .contains(folder(TypeAU, LocSystemDisabled) + "/Beta Presets"));

    const QStringList before = snapshot();
    const ToolRun again = tool({"-AU", set});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(again.out, "");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(KorvaneCmdTest, BadArgumentsExitTwoAndChangeNothing)
{
    makeLibrary();
    ASSERT_EQ(tool({"list"}).exitCode, 0); // lets the first run make its folders and preferences
    const QStringList before = snapshot();

    const QList<QStringList> bad{
        {"--bogus"}, {"-AU"}, {"frobnicate"}, {"list", "--format", "wav"}, {"list", "extra"},
        {"disable", "--format", "au", "Alpha.component", "Nope.component"},
        {"disable", "Alpha.component"}, {"save-set", "--format", "au"},
    };
    for (const QStringList &arguments : bad) {
        const ToolRun run = tool(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments.join(' ').toStdString();
        EXPECT_TRUE(run.err.startsWith("KorvaneCMD: ")) << run.err.toStdString();
        EXPECT_EQ(run.out, "");
    }
    EXPECT_TRUE(tool({"disable", "--format", "au", "Alpha", "Nope.component"}).err.contains("Nope.component"));

    QProcess missingRoot;
    missingRoot.start(QStringLiteral(KORVANE_CMD), {"--root", root() + "/nowhere", "--home", home(), "list"});
    ASSERT_TRUE(missingRoot.waitForFinished(60000));
    EXPECT_EQ(missingRoot.exitCode(), 2);
    EXPECT_EQ(snapshot(), before);
}

TEST_F(KorvaneCmdTest, AMissingOrGarbageSetDocumentExitsTwoBeforeAnythingMoves)
{
    makeLibrary();
    const QString set = writeSet();
    ASSERT_EQ(tool({"list"}).exitCode, 0);
    static const char garbage[] = "\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\xff\xfe";
    writeText(homePath("Documents/garbage.aukorv"), QByteArray(garbage, sizeof garbage - 1));
    PropertyList::writeXml(homePath("Documents/plist.aukorv"), QVariantList{"Alpha.component"});
    const QStringList before = snapshot();

    for (const QString &unreadable : {homePath("Documents/none.aukorv"), homePath("Documents/garbage.aukorv"),
                                      homePath("Documents/plist.aukorv")}) {
        // The readable AU set would move plug-ins; the unreadable VST set stops the whole run first.
        const ToolRun run = tool({"-AU", set, "-VST", unreadable});
        EXPECT_EQ(run.exitCode, 2) << unreadable.toStdString();
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
    QDir().mkpath(folder(TypeAU, LocSystemDisabled));
    ImmutableGuard guard(folder(TypeAU, LocSystemDisabled));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "enabled Gamma.component\n"); // the other change still happens
    const QString source = folder(TypeAU, LocSystemActive) + "/Beta.component";
    EXPECT_TRUE(run.err.contains("error: could not disable \"Beta.component\"")) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(source)) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(folder(TypeAU, LocSystemDisabled))) << run.err.toStdString();
    EXPECT_TRUE(isWholeBundle(source));
    EXPECT_TRUE(QFile::exists(m_presets + "/Bright.preset"));
    EXPECT_FALSE(QFile::exists(folder(TypeAU, LocSystemDisabled) + "/Beta.component"));
}

TEST_F(KorvaneCmdTest, ASetHoldingTwoCopiesOfANameReplacesNeitherCopy)
{
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Twin.component", MachO::intel());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserActive), "Twin.component", MachO::ppc());
    const QString set = homePath("Documents/twins.aukorv");
    ASSERT_EQ(tool({"save-set", "--format", "au", set}).exitCode, 0);

    const ToolRun run = tool({"-AU", set});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.contains("warning: AU \"Twin.component\" stays in")) << run.err.toStdString();
    EXPECT_EQ(MachOHeader::classify(MachOHeader::firstBytes(folder(TypeAU, LocSystemActive)
                                                            + "/Twin.component/Contents/MacOS/Plugin")),
              MachOHeader::Intel);
    EXPECT_EQ(MachOHeader::classify(MachOHeader::firstBytes(folder(TypeAU, LocUserActive)
                                                            + "/Twin.component/Contents/MacOS/Plugin")),
              MachOHeader::PPC);
}

TEST_F(KorvaneCmdTest, EnableAndDisableSwitchEveryPlugInOfTheName)
{
    makeLibrary();
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserActive), "Alpha.component", MachO::ppc());

    ToolRun off = tool({"disable", "--format", "AU", "Alpha", "Delta.component"});
    EXPECT_EQ(off.exitCode, 0) << off.err.toStdString();
    EXPECT_EQ(off.out, "disabled Alpha.component\ndisabled Alpha.component\ndisabled Delta.component\n");
    EXPECT_TRUE(isWholeBundle(folder(TypeAU, LocSystemDisabled) + "/Alpha.component"));
    EXPECT_TRUE(isWholeBundle(folder(TypeAU, LocUserDisabled) + "/Alpha.component"));
    EXPECT_TRUE(isWholeBundle(folder(TypeAU, LocUserDisabled) + "/Delta.component"));

    ToolRun on = tool({"enable", "--format", "au", "Delta.component", "Gamma.component"});
    EXPECT_EQ(on.exitCode, 0);
    EXPECT_EQ(on.out, "enabled Delta.component\nenabled Gamma.component\n");
    EXPECT_EQ(tool({"enable", "--format", "au", "Gamma.component"}).out, ""); // already on
}

TEST_F(KorvaneCmdTest, ListJsonCarriesExactlyTheDocumentedKeys)
{
    makeLibrary();
    PluginLibraryBuilder::makeVST(folder(TypeVST, LocSystemDisabled), "Echo.vst", MachO::ppc());
    PropertyList::writeXml(homePath("Library/Application Support/Korvane/groups.plist"),
                           QVariantList{"", "Synths"});
    PropertyList::writeXml(homePath("Library/Application Support/Korvane/augroups.plist"),
                           QVariantList{"Alpha.component", "Synths"});

    const ToolRun run = tool({"list", "--json"});
    ASSERT_EQ(run.exitCode, 0);
    const QJsonArray all = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(all.size(), 5);
    for (const QJsonValue &value : all)
        EXPECT_EQ(value.toObject().keys(),
                  QStringList({"active", "architecture", "format", "global", "group", "location", "name"}));

    QJsonObject alpha, echo;
    for (const QJsonValue &value : all) {
        if (value["name"].toString() == "Alpha.component")
            alpha = value.toObject();
        if (value["name"].toString() == "Echo.vst")
            echo = value.toObject();
    }
    EXPECT_EQ(alpha, (QJsonObject{{"format", "AU"}, {"name", "Alpha.component"},
                                   {"location", folder(TypeAU, LocSystemActive)}, {"global", true},
                                   {"active", true}, {"group", "Synths"}, {"architecture", "Universal Binary"}}));
    EXPECT_EQ(echo, (QJsonObject{{"format", "VST"}, {"name", "Echo.vst"},
                                  {"location", folder(TypeVST, LocSystemDisabled)}, {"global", true},
                                  {"active", false}, {"group", ""}, {"architecture", "PPC"}}));

    const ToolRun vst = tool({"list", "--format", "vst"});
    EXPECT_EQ(vst.out.count('\n'), 1);
    EXPECT_TRUE(vst.out.contains(folder(TypeVST, LocSystemDisabled) + "/Echo.vst")) << vst.out.toStdString();
    EXPECT_EQ(tool({"list"}).out.count('\n'), 5);
}

TEST_F(KorvaneCmdTest, SavedSetsShowAsJsonAndDuplicatesAreCounted)
{
    makeLibrary();
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserDisabled), "Alpha.component", MachO::ppc());
    const QString set = homePath("Documents/Now.aukorv");
    ASSERT_EQ(tool({"save-set", "--format", "au", set}).exitCode, 0);

    const ToolRun show = tool({"show-set", set, "--json"});
    ASSERT_EQ(show.exitCode, 0);
    const QJsonArray items = QJsonDocument::fromJson(show.out.toUtf8()).array();
    ASSERT_EQ(items.size(), 5);
    EXPECT_TRUE(items.contains(QJsonObject{{"name", "Gamma.component"},
                                           {"location", folder(TypeAU, LocUserDisabled)},
                                           {"global", false},
                                           {"active", false}}));
    for (const QJsonValue &value : items)
        EXPECT_EQ(value.toObject().keys(), QStringList({"active", "global", "location", "name"}));

    const ToolRun duplicates = tool({"duplicates", "--json"});
    EXPECT_EQ(QJsonDocument::fromJson(duplicates.out.toUtf8()).array(),
              (QJsonArray{QJsonObject{{"format", "AU"}, {"name", "Alpha.component"}, {"count", 2}}}));
    EXPECT_TRUE(tool({"duplicates", "--format", "vst"}).out.isEmpty());
}

TEST_F(KorvaneCmdTest, HelpAndVersionExitZero)
{
    const ToolRun help = tool({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char *word : {"-AU", "-RTAS", "-MAS", "-VST", "--root", "--home", "--format", "--json", "list",
                             "enable", "disable", "duplicates", "save-set", "show-set", "--version", "Example"})
        EXPECT_TRUE(help.out.contains(word)) << word;

    const ToolRun version = tool({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(QRegularExpression("^KorvaneCMD \\d+\\.\\d+\\S*\n$").match(version.out).hasMatch())
        << version.out.toStdString();
}

} // namespace
} // namespace korvane
