#include "codec/Lv2Bundle.h"

#include "LinuxPluginFixtures.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QMap>
#include <QProcessEnvironment>

// The LV2 reader against lilv's own lv2ls on Debian's real bundles (copied), and on broken ones.
namespace korvane {
namespace {

using F = LinuxPluginFixtures;

// Files held in memory; records what the reader asked for.
struct MemoryFiles {
    QMap<QString, QByteArray> files;
    QStringList asked;

    Lv2Bundle::FileReader reader()
    {
        return [this](const QString &path, qsizetype maxBytes) {
            asked.append(path);
            Lv2Bundle::FileRead read;
            if (!files.contains(path))
                read.error = QStringLiteral("cannot be read: No such file or directory");
            else if (files[path].size() > maxBytes)
                read.error = QStringLiteral("larger than %1 bytes").arg(maxBytes);
            else
                read.bytes = files[path];
            return read;
        };
    }
};

const QByteArray kPrefixes = R"ttl(@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
)ttl";

class Lv2BundleTest : public TestRoots {
protected:
    // Debian's LV2 folder copied once for the suite: about 160 bundles, 370 plug-ins.
    static void SetUpTestSuite()
    {
        if (!F::systemHas(QStringLiteral("/usr/lib/lv2/lsp-plugins.lv2")))
            return;
        s_copy = new QTemporaryDir;
        s_bundles = F::copySystemFolder(QStringLiteral("/usr/lib/lv2"), s_copy->path());
    }
    static void TearDownTestSuite()
    {
        delete s_copy;
        s_copy = nullptr;
    }

    static QString lv2Folder() { return s_copy->path() + "/usr/lib/lv2"; }

    // lv2ls (or lv2ls -n) on the copied folder alone, one line per plug-in in lilv's order.
    static QStringList lv2ls(bool names)
    {
        QProcess process;
        QProcessEnvironment environment;
        environment.insert("LV2_PATH", lv2Folder());
        environment.insert("HOME", s_copy->path());
        environment.insert("LANG", "C.UTF-8");
        process.setProcessEnvironment(environment);
        process.start("lv2ls", names ? QStringList{"-n"} : QStringList{});
        process.waitForFinished(120000);
        return QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    }

    static inline QTemporaryDir *s_copy = nullptr;
    static inline QStringList s_bundles;
};

TEST_F(Lv2BundleTest, DebiansBundlesGiveLilvsUrisAndNames)
{
    if (!s_copy)
        GTEST_SKIP() << "lsp-plugins-lv2 is not installed (tools/setup.sh)ttl";
    const QStringList uris = lv2ls(false);
    const QStringList names = lv2ls(true);
    ASSERT_GT(uris.size(), 300);
    ASSERT_EQ(uris.size(), names.size());
    QMap<QString, QString> expected;
    for (qsizetype i = 0; i < uris.size(); ++i)
        expected.insert(uris[i], names[i]);

    QMap<QString, QString> ours;
    int lsp = 0;
    for (const QString &bundle : s_bundles) {
        const Lv2BundleInfo info = Lv2Bundle::read(bundle);
        EXPECT_TRUE(info.problems.isEmpty()) << qPrintable(info.problems.join('\n'));
        for (const Lv2Plugin &plugin : info.plugins) {
            EXPECT_FALSE(ours.contains(plugin.uri)) << qPrintable(plugin.uri);
            ours.insert(plugin.uri, plugin.name);
            EXPECT_TRUE(QFileInfo::exists(bundle + "/" + plugin.binary)) << qPrintable(plugin.uri);
            if (bundle.endsWith("/lsp-plugins.lv2"))
                ++lsp;
        }
    }
    EXPECT_EQ(ours, expected);
    EXPECT_GT(lsp, 100);
}

TEST_F(Lv2BundleTest, VendorsAndVersionsOfRealBundles)
{
    if (!s_copy)
        GTEST_SKIP() << "lsp-plugins-lv2 is not installed (tools/setup.sh)ttl";
    const struct {
        const char *bundle;
        const char *uri;
        const char *vendor;
        const char *version;
    } cases[] = {
        // doap:maintainer names a person described in the same file
        {"lsp-plugins.lv2", "http://lsp-plug.in/plugins/lv2/comp_delay_mono", "LSP LV2", "0.11"},
        // a blank node: doap:maintainer [ foaf:name ... ]
        {"amp-swh.lv2", "http://plugin.org.uk/swh-plugins/amp", "Steve Harris", ""},
        // the maintainer of the lv2:project
        {"meters.lv2", "http://gareus.org/oss/lv2/meters#VUmono", "Robin Gareus", ""},
    };
    for (const auto &c : cases) {
        const Lv2BundleInfo info = Lv2Bundle::read(lv2Folder() + "/" + c.bundle);
        const auto it = std::find_if(info.plugins.cbegin(), info.plugins.cend(),
                                     [&](const Lv2Plugin &p) { return p.uri == c.uri; });
        ASSERT_NE(it, info.plugins.cend()) << c.uri;
        EXPECT_EQ(it->vendor, QString::fromUtf8(c.vendor)) << c.uri;
        if (*c.version) {
            EXPECT_EQ(it->version(), QString::fromUtf8(c.version)) << c.uri;
        }
    }
}

TEST_F(Lv2BundleTest, ReadsOnlyThePluginsDataFilesOnceEach)
{
    MemoryFiles disk;
    const QString b = "/lib/lv2/Duo.lv2";
    disk.files[b + "/manifest.ttl"] = kPrefixes + R"ttl(
<urn:duo:a> a lv2:Plugin ; lv2:binary <duo.so> ; rdfs:seeAlso <duo.ttl> , <a%20b.ttl> .
<urn:duo:b> a lv2:Plugin ; lv2:binary <sub/../duo.so> ; rdfs:seeAlso <duo.ttl> .
<urn:duo:ui> a <http://lv2plug.in/ns/extensions/ui#X11UI> ; rdfs:seeAlso <ui.ttl> .
<urn:duo:preset> a <http://lv2plug.in/ns/ext/presets#Preset> ; rdfs:seeAlso <preset.ttl> .
)ttl";
    disk.files[b + "/duo.ttl"] = kPrefixes + R"ttl(
<urn:duo:a> doap:name "Duo A"@de , "Duo A" , "Duo A (en)"@en ; lv2:minorVersion 2 ;
    lv2:microVersion 4 ; lv2:project <urn:duo> .
<urn:duo> doap:maintainer <urn:someone> .
<urn:someone> foaf:name "Someone" .
<urn:duo:b> doap:name "Duo B"@fr , "Duo B (en)"@en-GB ; lv2:minorVersion "x" ;
    doap:maintainer [ foaf:name "Nobody" ] .
)ttl";
    disk.files[b + "/a b.ttl"] = kPrefixes + "<urn:duo:a> lv2:microVersion 5 .";

    const Lv2BundleInfo info = Lv2Bundle::read(b, disk.reader());
    EXPECT_TRUE(info.error.isEmpty());
    EXPECT_TRUE(info.problems.isEmpty()) << qPrintable(info.problems.join('\n'));
    ASSERT_EQ(info.plugins.size(), 2);
    EXPECT_EQ(info.plugins[0].uri, "urn:duo:a");
    EXPECT_EQ(info.plugins[0].name, "Duo A");
    EXPECT_EQ(info.plugins[0].version(), "2.4"); // the first value in the files' order
    EXPECT_EQ(info.plugins[0].vendor, "Someone");
    EXPECT_EQ(info.plugins[0].binary, "duo.so");
    EXPECT_EQ(info.plugins[1].name, "Duo B (en)");
    EXPECT_EQ(info.plugins[1].version(), "");
    EXPECT_EQ(info.plugins[1].vendor, "Nobody");
    EXPECT_EQ(info.plugins[1].binary, "duo.so");
    EXPECT_EQ(disk.asked, QStringList({b + "/manifest.ttl", b + "/duo.ttl", b + "/a b.ttl"}))
        << "user interfaces and presets are not read, a shared file is read once";
}

// Plain paths take a short way to and from file URIs; one that needs escapes takes serd's.
TEST_F(Lv2BundleTest, ABundleWhosePathNeedsEscapesReadsItsFilesByTheirOwnNames)
{
    for (const QString &b :
         {QStringLiteral("/lib/lv2/Big Hall é.lv2"), QStringLiteral("/lib/lv2/Plain-1_0~x.lv2")}) {
        MemoryFiles disk;
        disk.files[b + "/manifest.ttl"] = kPrefixes + R"ttl(
<urn:hall> a lv2:Plugin ; lv2:binary <hall.so> ; rdfs:seeAlso <hall.ttl> , <b%C3%A9.ttl> .
)ttl";
        disk.files[b + "/hall.ttl"] = kPrefixes + R"ttl(<urn:hall> doap:name "Hall" .)ttl";
        disk.files[b + "/bé.ttl"] = kPrefixes + "<urn:hall> lv2:minorVersion 3 .";
        const Lv2BundleInfo info = Lv2Bundle::read(b, disk.reader());
        ASSERT_EQ(info.plugins.size(), 1) << qPrintable(b);
        EXPECT_EQ(info.plugins[0].name, "Hall");
        EXPECT_EQ(info.plugins[0].binary, "hall.so");
        EXPECT_EQ(info.plugins[0].version(), "3.0");
        EXPECT_TRUE(info.problems.isEmpty()) << qPrintable(info.problems.join('\n'));
    }
}

TEST_F(Lv2BundleTest, RefusesDataFilesOutsideTheBundle)
{
    MemoryFiles disk;
    const QString b = "/lib/lv2/Sly.lv2";
    disk.files[b + "/manifest.ttl"] = kPrefixes + R"ttl(
<urn:sly> a lv2:Plugin ; lv2:binary <sly.so> ;
    rdfs:seeAlso <../Other.lv2/x.ttl> , </etc/passwd> , <http://example.org/x.ttl> ,
                 <sub/../../Sly.lv2x/y.ttl> , <sly.ttl> .
)ttl";
    disk.files[b + "/sly.ttl"] = kPrefixes + R"ttl(<urn:sly> doap:name "Sly" .)ttl";
    disk.files["/lib/lv2/Other.lv2/x.ttl"] = kPrefixes + R"ttl(<urn:sly> doap:name "Wrong" .)ttl";

    const Lv2BundleInfo info = Lv2Bundle::read(b, disk.reader());
    ASSERT_EQ(info.plugins.size(), 1);
    EXPECT_EQ(info.plugins[0].name, "Sly");
    EXPECT_EQ(disk.asked, QStringList({b + "/manifest.ttl", b + "/sly.ttl"}));
    EXPECT_EQ(info.problems.size(), 4) << qPrintable(info.problems.join('\n'));
    EXPECT_TRUE(info.problems.value(0).endsWith("a file outside the bundle is not read"));
    EXPECT_TRUE(info.error.isEmpty()) << "the bundle itself is readable";
}

TEST_F(Lv2BundleTest, BrokenBundlesGiveAReason)
{
    MemoryFiles disk;
    disk.files["/b/Garbage.lv2/manifest.ttl"] = QByteArray("\x7f"
                                                           "ELF\x02\x01\x01\0\0\0",
                                                           10);
    disk.files["/b/Half.lv2/manifest.ttl"] = kPrefixes + R"ttl(
<urn:half> a lv2:Plugin ; lv2:binary <half.so> ; rdfs:seeAlso <half.ttl>, <gone.ttl> .
<urn:broken> a lv2:Plugin ; rdfs:seeAlso <broken.ttl> .
)ttl";
    disk.files["/b/Half.lv2/half.ttl"] = kPrefixes + R"ttl(<urn:half> doap:name "Half" .)ttl";
    disk.files["/b/Half.lv2/broken.ttl"] = kPrefixes + "<urn:broken> doap:name \"Bro";
    disk.files["/b/Undefined.lv2/manifest.ttl"] = "nope:x a lv2:Plugin .";

    Lv2BundleInfo info = Lv2Bundle::read("/b/Garbage.lv2", disk.reader());
    EXPECT_TRUE(info.plugins.isEmpty());
    EXPECT_TRUE(info.error.startsWith("manifest.ttl: not Turtle: line 1, column "))
        << qPrintable(info.error);

    info = Lv2Bundle::read("/b/Missing.lv2", disk.reader());
    EXPECT_EQ(info.error, "manifest.ttl cannot be read: No such file or directory");

    info = Lv2Bundle::read("/b/Undefined.lv2", disk.reader());
    EXPECT_TRUE(info.plugins.isEmpty());
    EXPECT_TRUE(info.error.contains("not Turtle")) << qPrintable(info.error);

    // What could be read is kept, and each broken file is named.
    info = Lv2Bundle::read("/b/Half.lv2", disk.reader());
    EXPECT_TRUE(info.error.isEmpty());
    ASSERT_EQ(info.plugins.size(), 2);
    EXPECT_EQ(info.plugins[0].name, "Half");
    EXPECT_EQ(info.problems.size(), 2) << qPrintable(info.problems.join('\n'));
    EXPECT_EQ(info.problems.value(0), "gone.ttl cannot be read: No such file or directory");
    EXPECT_TRUE(info.problems.value(1).startsWith("broken.ttl: not Turtle: line 5"))
        << qPrintable(info.problems.value(1));

    // Files over the limit are not read at all.
    Lv2Limits limits;
    limits.maxFileBytes = 100;
    info = Lv2Bundle::read("/b/Half.lv2", disk.reader(), limits);
    EXPECT_EQ(info.error, "manifest.ttl larger than 100 bytes");
}

TEST_F(Lv2BundleTest, OnDiskAFileALoopAndAFifoAreRefusedPlainly)
{
    const QString lv2 = home() + "/.lv2";
    QDir().mkpath(lv2 + "/Fine.lv2");
    writeText(
        lv2 + "/Fine.lv2/manifest.ttl",
        kPrefixes
            + R"ttl(<urn:fine> a lv2:Plugin ; doap:name "Fine" ; rdfs:seeAlso <fifo.ttl> .)ttl");
    ASSERT_EQ(::mkfifo(QFile::encodeName(lv2 + "/Fine.lv2/fifo.ttl").constData(), 0600), 0);
    writeText(lv2 + "/File.lv2", "a bundle that is a file");
    ASSERT_TRUE(QFile::link(lv2 + "/Loop.lv2", lv2 + "/Loop.lv2"));

    Lv2BundleInfo info = Lv2Bundle::read(lv2 + "/Fine.lv2");
    ASSERT_EQ(info.plugins.size(), 1);
    EXPECT_EQ(info.plugins[0].name, "Fine");
    EXPECT_EQ(info.problems, QStringList{"fifo.ttl cannot be read: not a regular file"});

    info = Lv2Bundle::read(lv2 + "/File.lv2");
    EXPECT_EQ(info.error, "manifest.ttl cannot be read: the bundle is a file, not a folder");
    info = Lv2Bundle::read(lv2 + "/Loop.lv2");
    EXPECT_EQ(info.error, "manifest.ttl cannot be read: Too many levels of symbolic links");
}

} // namespace
} // namespace korvane
