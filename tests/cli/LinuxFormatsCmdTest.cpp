// KorvaneCMD on the Linux formats: Debian's real plug-ins copied into temporary roots, each
// switch confirmed by a real host library (lilv's lv2ls, ladspa-sdk's listplugins).

#include "LinuxPluginFixtures.h"
#include "support/RunKorvaneCmd.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

namespace korvane {
namespace {

const QString kEqBundle = QStringLiteral("/usr/lib/lv2/3BandEQ.lv2");
const QString kEqUri = QStringLiteral("http://distrho.sf.net/plugins/3BandEQ");
const QString kAmp = QStringLiteral("/usr/lib/ladspa/amp.so");

class LinuxFormatsCmdTest : public TestRoots {
protected:
    // KorvaneCMD under the test's roots, with only the given host variables.
    ToolRun tool(const QStringList &arguments, const QMap<QString, QString> &variables = {})
    {
        return run(KORVANE_CMD, QStringList{"--root", root(), "--home", home()} + arguments,
                   variables);
    }

    static ToolRun run(const QString &program, const QStringList &arguments,
                       const QMap<QString, QString> &variables = {})
    {
        EnvironmentChanges changes;
        for (const char *name : {"LV2_PATH", "VST3_PATH", "CLAP_PATH", "LADSPA_PATH", "DSSI_PATH",
                                 "VST_PATH", "LXVST_PATH", "KORVANE_ROOT", "COLUMNS"})
            changes.append({QString::fromLatin1(name), std::nullopt});
        for (auto it = variables.cbegin(); it != variables.cend(); ++it)
            changes.append({it.key(), it.value()});
        return runKorvaneCmd(program, arguments, changes);
    }

    // list --json of one format, by plug-in name.
    QHash<QString, QJsonObject> listed(const QString &format,
                                       const QMap<QString, QString> &variables = {})
    {
        const ToolRun listing = tool({"list", "--format", format, "--json"}, variables);
        EXPECT_EQ(listing.exitCode, 0) << listing.err.toStdString();
        QHash<QString, QJsonObject> byName;
        for (const QJsonValue value : QJsonDocument::fromJson(listing.out.toUtf8()).array())
            byName.insert(value["name"].toString(), value.toObject());
        return byName;
    }

    // What lv2ls finds in the given folders.
    static QString lv2ls(const QStringList &folders)
    {
        return run("lv2ls", {}, {{"LV2_PATH", folders.join(':')}}).out;
    }
    static QString listplugins(const QStringList &folders)
    {
        return run("listplugins", {}, {{"LADSPA_PATH", folders.join(':')}}).out;
    }
};

// The text listing gives vendor, version and package each a column of its own, split by two
// spaces or more; at 80 columns the package goes first and the path stays whole.
TEST_F(LinuxFormatsCmdTest, TheTextListingGivesEachFieldItsColumnAndFitsEightyColumns)
{
    const QString tone = homePath(".lv2/Tone.lv2");
    const QString hall = rootPath("usr/lib/lv2/Hall.lv2");
    for (const QString &bundle : {tone, hall}) {
        QDir().mkpath(bundle);
        writeText(bundle + "/manifest.ttl",
                  "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
                  "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
                  "@prefix foaf: <http://xmlns.com/foaf/0.1/> .\n"
                  "<urn:x> a lv2:Plugin ; lv2:binary <x.so> ; lv2:minorVersion 1 ;\n"
                  "  lv2:microVersion 2 ; doap:maintainer [ foaf:name \"Velmora Audio\" ] .\n");
    }
    QDir().mkpath(rootPath("var/lib/dpkg/info"));
    writeText(rootPath("var/lib/dpkg/info/hall-lv2.list"), "/usr/lib/lv2/Hall.lv2\n");

    const ToolRun piped = tool({"list", "--format", "lv2"});
    ASSERT_EQ(piped.exitCode, 0) << piped.err.toStdString();
    QStringList lines = piped.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2) << "no titles for a script: " << piped.out.toStdString();
    const QRegularExpression gap(" {2,}");
    EXPECT_EQ(lines.first().split(gap), (QStringList{"LV2", "on", "system", "-", "-",
                                                     "Velmora Audio", "1.2", "hall-lv2", hall}));
    EXPECT_EQ(lines.last().split(gap),
              (QStringList{"LV2", "on", "user", "-", "-", "Velmora Audio", "1.2", "-", tone}));

    const ToolRun narrow = tool({"list", "--format", "lv2"}, {{"COLUMNS", "80"}});
    lines = narrow.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    for (const QString &line : lines) {
        EXPECT_FALSE(line.contains("hall-lv2")) << line.toStdString();
        const QString path = line.split(gap).last();
        EXPECT_TRUE(path == hall || path == tone) << line.toStdString();
        EXPECT_LE(line.size() - path.size() + std::min<qsizetype>(path.size(), 40), 80)
            << line.toStdString();
    }
}

TEST_F(LinuxFormatsCmdTest, AnLv2BundleSwitchesOffAndOnAsLilvSeesIt)
{
    if (!LinuxPluginFixtures::systemHas(kEqBundle))
        GTEST_SKIP() << "dpf-plugins-lv2 is not installed";
    const QString home = homePath(".lv2");
    QDir().mkpath(home);
    // Copied into the home: the copy helper shapes paths under a root, so root it at the home.
    ASSERT_FALSE(LinuxPluginFixtures::copyFromSystem(kEqBundle, homePath("stage")).isEmpty());
    ASSERT_TRUE(QDir().rename(homePath("stage/usr/lib/lv2/3BandEQ.lv2"), home + "/3BandEQ.lv2"));
    const QStringList lilvFolders{home, home + " (Disabled)"};
    ASSERT_TRUE(lv2ls(lilvFolders).contains(kEqUri));

    const QJsonObject eq = listed("lv2").value("3BandEQ.lv2");
    ASSERT_FALSE(eq.isEmpty());
    EXPECT_FALSE(eq["global"].toBool());
    EXPECT_TRUE(eq["active"].toBool());
    EXPECT_EQ(eq["plugins"].toArray().first()["id"].toString(), kEqUri);
    EXPECT_TRUE(eq["identifiers"].toArray().contains(kEqUri));
    EXPECT_FALSE(eq["vendor"].toString().isEmpty());
    EXPECT_FALSE(eq.contains("unreadable"));

    const ToolRun off = tool({"disable", "--format", "lv2", "3BandEQ.lv2"});
    EXPECT_EQ(off.exitCode, 0) << off.err.toStdString();
    EXPECT_TRUE(QFileInfo(home + " (Disabled)/3BandEQ.lv2/manifest.ttl").isFile());
    EXPECT_FALSE(lv2ls({home}).contains(kEqUri));

    const ToolRun on = tool({"enable", "--format", "lv2", "3BandEQ"});
    EXPECT_EQ(on.exitCode, 0) << on.err.toStdString();
    EXPECT_TRUE(lv2ls({home}).contains(kEqUri));
}

TEST_F(LinuxFormatsCmdTest, ALadspaLibraryInUsrLocalSwitchesAsListpluginsSeesIt)
{
    if (!LinuxPluginFixtures::systemHas(kAmp))
        GTEST_SKIP() << "swh-plugins is not installed";
    const QString local = rootPath("usr/local/lib/ladspa");
    QDir().mkpath(local);
    ASSERT_TRUE(QFile::copy(kAmp, local + "/amp.so"));
    ASSERT_TRUE(listplugins({local}).contains("amp_mono"));

    const QJsonObject amp = listed("ladspa").value("amp.so");
    EXPECT_TRUE(amp["global"].toBool());
    EXPECT_EQ(amp["architectures"].toArray().size(), 1);

    EXPECT_EQ(tool({"disable", "--format", "ladspa", "amp.so"}).exitCode, 0);
    EXPECT_TRUE(QFileInfo::exists(local + " (Disabled)/amp.so"));
    EXPECT_FALSE(listplugins({local}).contains("amp_mono"));
    EXPECT_EQ(tool({"enable", "--format", "ladspa", "amp.so"}).exitCode, 0);
    EXPECT_TRUE(listplugins({local}).contains("amp_mono"));
}

TEST_F(LinuxFormatsCmdTest, TheDistributionsPlugInsAreListedWithTheirPackageAndNeverMoved)
{
    if (!LinuxPluginFixtures::systemHas(kEqBundle))
        GTEST_SKIP() << "dpf-plugins-lv2 is not installed";
    ASSERT_FALSE(LinuxPluginFixtures::copyFromSystem(kEqBundle, root()).isEmpty());
    QDir().mkpath(rootPath("var/lib/dpkg/info"));
    writeText(rootPath("var/lib/dpkg/info/dpf-plugins-lv2:amd64.list"),
              "/usr\n/usr/lib\n/usr/lib/lv2\n/usr/lib/lv2/3BandEQ.lv2\n"
              "/usr/lib/lv2/3BandEQ.lv2/manifest.ttl\n");

    const QJsonObject eq = listed("lv2").value("3BandEQ.lv2");
    EXPECT_EQ(eq["package"].toString(), "dpf-plugins-lv2:amd64");
    EXPECT_TRUE(eq["global"].toBool());

    // The check refuses as the move would, with the same reason.
    const ToolRun checked = tool({"disable", "--format", "lv2", "3BandEQ.lv2", "--check"});
    EXPECT_NE(checked.exitCode, 0);
    EXPECT_TRUE((checked.out + checked.err).contains("dpf-plugins-lv2:amd64"))
        << checked.out.toStdString() << checked.err.toStdString();
    const ToolRun refused = tool({"disable", "--format", "lv2", "3BandEQ.lv2"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains("dpf-plugins-lv2:amd64")) << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains("LV2_PATH"));
    // Moving it to the user's folder would take it out of the distribution's folder as well.
    EXPECT_EQ(tool({"apply", "--format", "lv2", "--only"}).exitCode, 1);
    EXPECT_TRUE(QFileInfo(rootPath("usr/lib/lv2/3BandEQ.lv2/manifest.ttl")).isFile());
    EXPECT_FALSE(QFileInfo::exists(rootPath("usr/lib/lv2 (Disabled)")));
    EXPECT_TRUE(QDir(rootPath("usr/lib")).entryList({"* (Disabled)"}, QDir::AllEntries).isEmpty());
}

TEST_F(LinuxFormatsCmdTest, ShapedVst3AndClapBundlesAndBrokenInputAreListedWithWhatTheirFilesSay)
{
    if (!LinuxPluginFixtures::systemHas(kAmp))
        GTEST_SKIP() << "swh-plugins is not installed";
    const QString vst3 = homePath(".vst3");
    const QString clap = homePath(".clap/nested");
    const QString lv2 = homePath(".lv2");
    for (const QString &folder : {vst3, clap, lv2})
        QDir().mkpath(folder);
    const QString cid = LinuxPluginFixtures::vst2Cid("Gain", "Shaped Gain");
    LinuxPluginFixtures::makeVst3Bundle(
        vst3, "Shaped Gain", kAmp,
        LinuxPluginFixtures::moduleInfo("Shaped Gain", "Korvane Tests", cid),
        {"x86_64-linux", "aarch64-linux"});
    LinuxPluginFixtures::makeVst3Bundle(vst3, "Broken", kAmp, "{ this is not: JSON5 ");
    LinuxPluginFixtures::makeClap(clap, "Shaped", kAmp);
    writeText(clap + "/Truncated.clap", QByteArray("\x7f"
                                                   "ELF\x02\x01",
                                                   6));
    QDir().mkpath(lv2 + "/NotTurtle.lv2");
    writeText(lv2 + "/NotTurtle.lv2/manifest.ttl", "<a> <b> [[[ not turtle");
    writeText(lv2 + "/AFile.lv2", "a bundle that is a file");
    QFile::link(lv2 + "/Loop.lv2", lv2 + "/Loop.lv2");

    const auto vst3s = listed("vst3");
    const QJsonObject gain = vst3s.value("Shaped Gain.vst3");
    EXPECT_EQ(gain["vendor"].toString(), "Korvane Tests");
    EXPECT_EQ(gain["architectures"].toArray(), QJsonArray({"aarch64", "x86_64"}));
    EXPECT_TRUE(gain["identifiers"].toArray().contains("VST2:Gain"))
        << QJsonDocument(gain).toJson().toStdString();
    EXPECT_TRUE(vst3s.value("Broken.vst3")["unreadable"].toString().contains("not JSON5"));

    const auto claps = listed("clap");
    EXPECT_EQ(claps.value("nested/Shaped.clap")["architectures"].toArray().size(), 1)
        << claps.keys().join(',').toStdString();
    EXPECT_TRUE(claps.value("nested/Truncated.clap")["unreadable"].toString().contains("cannot"));

    const auto lv2s = listed("lv2");
    for (const char *name : {"NotTurtle.lv2", "AFile.lv2", "Loop.lv2"})
        EXPECT_TRUE(lv2s.value(name)["unreadable"].toString().startsWith("cannot be read"))
            << name << ": " << QJsonDocument(lv2s.value(name)).toJson().toStdString();
}

TEST_F(LinuxFormatsCmdTest, AHostVariableAddsFoldersAndSetsNameTheNewFormats)
{
    if (!LinuxPluginFixtures::systemHas(kAmp))
        GTEST_SKIP() << "swh-plugins is not installed";
    const QString extra = homePath("studio/ladspa");
    const QString system = root() + "/opt/ladspa"; // outside the home: a system folder
    QDir().mkpath(extra);
    QDir().mkpath(system);
    ASSERT_TRUE(QFile::copy(kAmp, extra + "/amp.so"));
    ASSERT_TRUE(QFile::copy(kAmp, system + "/delay.so"));
    const QMap<QString, QString> paths{{"LADSPA_PATH", "~/studio/ladspa:" + system + ":"}};

    const auto found = listed("ladspa", paths);
    EXPECT_FALSE(found.value("amp.so")["global"].toBool());
    EXPECT_TRUE(found.value("delay.so")["global"].toBool());
    EXPECT_EQ(tool({"disable", "--format", "ladspa", "amp.so"}, paths).exitCode, 0);
    EXPECT_TRUE(QFileInfo::exists(extra + " (Disabled)/amp.so"));

    // A set document of the new format is written and applied as the others are.
    const QString set = homePath("studio/all.ladspakorv");
    EXPECT_EQ(tool({"enable", "--format", "ladspa", "amp.so"}, paths).exitCode, 0);
    EXPECT_EQ(tool({"save-set", "--format", "ladspa", set}, paths).exitCode, 0);
    EXPECT_EQ(tool({"disable", "--format", "ladspa", "amp.so"}, paths).exitCode, 0);
    const ToolRun applied = tool({"-LADSPA", set}, paths);
    EXPECT_EQ(applied.exitCode, 0) << applied.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(extra + "/amp.so"));
}

TEST_F(LinuxFormatsCmdTest, DetailsLoadALadspaLibraryOnlyWhenAskedAndSurviveOneThatIsNoLibrary)
{
    if (!LinuxPluginFixtures::systemHas(kAmp))
        GTEST_SKIP() << "swh-plugins is not installed";
    const QString folder = homePath(".ladspa");
    QDir().mkpath(folder);
    ASSERT_TRUE(QFile::copy(kAmp, folder + "/amp.so"));
    writeText(folder + "/fake.so", QByteArray("\x7f"
                                              "ELF",
                                              4));
    // The listing never loads: it knows only the file's header.
    EXPECT_FALSE(listed("ladspa").value("amp.so").contains("loaded"));

    const ToolRun details = tool({"details", "--format", "ladspa", "--json", "amp.so", "fake"});
    ASSERT_EQ(details.exitCode, 0) << details.err.toStdString();
    const QJsonArray shown = QJsonDocument::fromJson(details.out.toUtf8()).array();
    ASSERT_EQ(shown.size(), 2);
    QStringList ids;
    for (const QJsonValue plugin : shown.at(0)["loaded"].toArray())
        ids << plugin["id"].toString();
    EXPECT_EQ(ids, QStringList({"1048", "1049"}));
    EXPECT_FALSE(shown.at(1)["probeError"].toString().isEmpty());
    EXPECT_EQ(tool({"details", "--format", "ladspa", "nothing.so"}).exitCode, 1);
}

} // namespace
} // namespace korvane
