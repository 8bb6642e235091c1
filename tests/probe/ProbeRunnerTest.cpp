#include "probe/ProbeRunner.h"

#include "LinuxPluginFixtures.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcessEnvironment>
#include <QRegularExpression>

#include <utime.h>

// The probe on Debian's real LADSPA and DSSI plug-ins (copied) against ladspa-sdk's own tools,
// and on built libraries that crash, hang, eat memory or chatter.
namespace korvane {
namespace {

using F = LinuxPluginFixtures;

const QString kProbe = QStringLiteral(KORVANE_PROBE);
const QString kPlugins = QStringLiteral(KORVANE_PROBE_PLUGINS);

QString plugin(const char *name)
{
    return kPlugins + "/lib" + name + ".so";
}

class ProbeRunnerTest : public TestRoots {
protected:
    // ladspa-sdk's tool, with LADSPA_PATH on the copies alone.
    QString runTool(const QString &program, const QStringList &arguments, const QString &path)
    {
        QProcess process;
        QProcessEnvironment environment;
        environment.insert("LADSPA_PATH", path);
        environment.insert("HOME", home());
        process.setProcessEnvironment(environment);
        process.start(program, arguments);
        process.waitForFinished(60000);
        return QString::fromUtf8(process.readAllStandardOutput());
    }
};

TEST_F(ProbeRunnerTest, DebiansLadspaPluginsAsListpluginsAndAnalysepluginSeeThem)
{
    if (!F::systemHas("/usr/lib/ladspa/amp_1181.so"))
        GTEST_SKIP() << "swh-plugins is not installed (tools/setup.sh)";
    const QStringList copies = F::copySystemFolder("/usr/lib/ladspa", root(), {"*.so"});
    ASSERT_GT(copies.size(), 50);
    const QString folder = root() + "/usr/lib/ladspa";

    // listplugins: "PATH:" then "\tName (ID/label)" for each plug-in.
    QMap<QString, QStringList> expected;
    QString current;
    for (const QString &line : runTool("listplugins", {}, folder).split('\n')) {
        if (line.endsWith(':') && !line.startsWith('\t'))
            current = line.chopped(1);
        else if (line.startsWith('\t'))
            expected[current].append(line.mid(1));
    }
    ASSERT_EQ(expected.size(), copies.size());

    ProbeRunner runner(kProbe);
    QMap<QString, QStringList> probed;
    for (const QString &copy : copies) {
        const ProbeResult result = runner.probe(copy, "ladspa");
        ASSERT_TRUE(result.ok()) << qPrintable(copy) << ": " << qPrintable(result.message);
        EXPECT_EQ(result.report.format, "ladspa");
        for (const ProbedPlugin &p : result.report.plugins)
            probed[copy].append(QStringLiteral("%1 (%2/%3)").arg(p.name, p.id, p.label));
    }
    EXPECT_EQ(probed, expected);

    // analyseplugin's maker, copyright and ports for one file holding two plug-ins.
    const QString dj = folder + "/dj_eq_1901.so";
    const QString analysis = runTool("analyseplugin", {dj}, folder);
    const ProbeResult result = runner.probe(dj, "auto");
    ASSERT_EQ(result.report.plugins.size(), 2);
    EXPECT_EQ(result.report.format, "ladspa");
    for (const ProbedPlugin &p : result.report.plugins) {
        const qsizetype start =
            analysis.indexOf(QStringLiteral("Plugin Label: \"%1\"").arg(p.label));
        ASSERT_GE(start, 0);
        const QString block = analysis.mid(start, analysis.indexOf("\n\n", start) - start);
        EXPECT_TRUE(block.contains(QStringLiteral("Maker: \"%1\"").arg(p.vendor)));
        EXPECT_TRUE(block.contains(QStringLiteral("Copyright: \"%1\"").arg(p.copyright)));
        EXPECT_EQ(p.audioInputs, block.count("input, audio"));
        EXPECT_EQ(p.audioOutputs, block.count("output, audio"));
        EXPECT_EQ(p.controlInputs, block.count("input, control"));
        EXPECT_EQ(p.controlOutputs, block.count("output, control"));
    }
}

TEST_F(ProbeRunnerTest, DssiInstrumentsSayTheyRunASynth)
{
    const QString source = "/usr/lib/x86_64-linux-gnu/dssi/trivial_synth.so";
    if (!F::systemHas(source))
        GTEST_SKIP() << "dssi-example-plugins is not installed (tools/setup.sh)";
    ProbeRunner runner(kProbe);
    const ProbeResult result = runner.probe(F::copyFromSystem(source, root()));
    ASSERT_TRUE(result.ok()) << qPrintable(result.message);
    EXPECT_EQ(result.report.format, "dssi");
    ASSERT_EQ(result.report.plugins.size(), 1);
    const ProbedPlugin &synth = result.report.plugins[0];
    EXPECT_EQ(synth.label, "TS");
    EXPECT_EQ(synth.name, "Trivial synth");
    EXPECT_TRUE(synth.runSynth);
    EXPECT_EQ(synth.dssiApiVersion, 1);
    EXPECT_EQ(synth.audioOutputs, 1);
}

TEST_F(ProbeRunnerTest, ClapDescriptorsAfterInitWithThePath)
{
    const QString clap = F::makeClap(home() + "/.clap", "Pair", plugin("probe_clap_pair"));
    ProbeRunner runner(kProbe);
    const ProbeResult result = runner.probe(clap);
    ASSERT_TRUE(result.ok()) << qPrintable(result.message);
    EXPECT_EQ(result.report.format, "clap");
    EXPECT_EQ(result.report.clapVersion, "1.1.7");
    ASSERT_EQ(result.report.plugins.size(), 2);
    const ProbedPlugin &squash = result.report.plugins[0];
    EXPECT_EQ(squash.id, "org.example.squash");
    EXPECT_EQ(squash.vendor, "Velmora Audio");
    EXPECT_EQ(squash.version, "2.1.0");
    EXPECT_EQ(squash.description, clap) << "init is given the plug-in's path";
    EXPECT_EQ(squash.features, QStringList({"audio-effect", "stereo"}));
    EXPECT_EQ(result.report.plugins[1].name, "Wobble \"W\"");
    EXPECT_EQ(result.report.plugins[1].description, "two\nlines");
    EXPECT_TRUE(result.report.plugins[1].vendor.isEmpty());
}

TEST_F(ProbeRunnerTest, ACrashAHangAndExhaustionAreResultsOnThePlugin)
{
    ProbeLimits limits;
    limits.memoryBytes = qint64(512) << 20;
    ProbeRunner runner(kProbe, limits);

    ProbeResult result = runner.probe(plugin("probe_crashing"));
    EXPECT_EQ(result.status, ProbeResult::Crashed);
    EXPECT_EQ(result.message, "the plug-in crashed while loading: signal 11");

    result = runner.probe(plugin("probe_hungry"));
    EXPECT_EQ(result.status, ProbeResult::OutOfMemory) << qPrintable(result.message);
    EXPECT_EQ(result.message, "the plug-in ran out of memory while loading (limit 512 MiB)");

    limits.timeoutMs = 1000;
    QElapsedTimer timer;
    timer.start();
    result = ProbeRunner(kProbe, limits).probe(plugin("probe_hanging"));
    EXPECT_EQ(result.status, ProbeResult::TimedOut);
    EXPECT_EQ(result.message, "the plug-in did not answer within 1 s");
    EXPECT_LT(timer.elapsed(), 8000);
}

TEST_F(ProbeRunnerTest, WhatIsNotAPluginIsSaidPlainly)
{
    ProbeRunner runner(kProbe);
    const QString text = root() + "/notes.so";
    writeText(text, "not an object");
    ProbeResult result = runner.probe(text);
    EXPECT_EQ(result.status, ProbeResult::Loaded);
    EXPECT_FALSE(result.ok());
    EXPECT_TRUE(result.message.startsWith("cannot be loaded: ")) << qPrintable(result.message);

    // A library with none of the entry points, and one asked for the wrong format.
    result = runner.probe(plugin("probe_clap_pair"), "ladspa");
    EXPECT_EQ(result.message, "no ladspa_descriptor function");
    result = runner.probe(plugin("probe_crashing"), "clap");
    EXPECT_EQ(result.message, "no clap_entry");

    // A report past the output limit is not read at all.
    ProbeLimits small;
    small.maxOutput = 100;
    result = ProbeRunner(kProbe, small).probe(plugin("probe_clap_pair"));
    EXPECT_EQ(result.status, ProbeResult::BadReport);
    EXPECT_EQ(result.message, "the probe's report is longer than 100 bytes");

    ProbeRunner missing(root() + "/no-probe");
    result = missing.probe(text);
    EXPECT_EQ(result.status, ProbeResult::NotStarted);
    EXPECT_EQ(missing.cacheSize(), 0) << "a probe that never ran says nothing about the plug-in";
}

TEST_F(ProbeRunnerTest, ResultsAreCachedByPathSizeAndTime)
{
    const QString clap = F::makeClap(root() + "/clap", "Pair", plugin("probe_clap_pair"));
    const QString crashing = F::makeClap(root() + "/clap", "Crash", plugin("probe_crashing"));
    // Whole seconds, so that the time survives being set again exactly.
    const time_t when = QDateTime::currentSecsSinceEpoch() - 3600;
    auto setTime = [&](time_t seconds) {
        struct utimbuf times {
            seconds, seconds
        };
        ASSERT_EQ(::utime(QFile::encodeName(clap).constData(), &times), 0);
    };
    setTime(when);
    ProbeRunner runner(kProbe);
    ASSERT_TRUE(runner.probe(clap).ok());
    EXPECT_EQ(runner.probe(crashing, "ladspa").status, ProbeResult::Crashed);
    const QString cacheFile = home() + "/probe-cache.json";
    QString error;
    ASSERT_TRUE(runner.saveCache(cacheFile, &error)) << qPrintable(error);

    // Bytes that cannot load, of the same size and time: only the cache can still answer.
    const qint64 size = QFileInfo(clap).size();
    writeText(clap, QByteArray(int(size), '\0'));
    setTime(when);
    EXPECT_TRUE(runner.probe(clap).ok()) << "answered from memory, not loaded again";
    EXPECT_FALSE(ProbeRunner(kProbe).probe(clap).ok()) << "the binary really changed";

    ProbeRunner loaded(kProbe);
    ASSERT_TRUE(loaded.loadCache(cacheFile, &error)) << qPrintable(error);
    EXPECT_EQ(loaded.cacheSize(), 2);
    const ProbeResult cached = loaded.probe(clap);
    ASSERT_TRUE(cached.ok()) << "answered from the cache file: " << qPrintable(cached.message);
    EXPECT_EQ(cached.report.plugins.value(0).id, "org.example.squash");
    EXPECT_EQ(loaded.probe(crashing, "ladspa").message,
              "the plug-in crashed while loading: signal 11");

    // A new time is a new binary.
    setTime(when + 10);
    EXPECT_FALSE(loaded.probe(clap).ok());

    // A cache file that is not one is refused and changes nothing.
    writeText(cacheFile, "{\"entries\": 5}");
    EXPECT_FALSE(loaded.loadCache(cacheFile, &error));
    EXPECT_EQ(error, cacheFile + " is not a probe cache");
    EXPECT_EQ(loaded.cacheSize(), 2);
    EXPECT_TRUE(loaded.loadCache(home() + "/none.json")) << "no cache file is an empty cache";
    EXPECT_FALSE(loaded.saveCache(home() + "/missing/folder/cache.json", &error));
}

} // namespace
} // namespace korvane
