#include "codec/PackageDatabase.h"

#include "support/TestRoots.h"

#include <QDir>

// The package owning a path, from a fake dpkg database and a stand-in rpm under temporary roots.
namespace korvane {
namespace {

class PackageDatabaseTest : public TestRoots {
protected:
    void list(const QString &name, const QByteArray &paths)
    {
        QDir().mkpath(rootPath("var/lib/dpkg/info"));
        writeText(rootPath("var/lib/dpkg/info/" + name + ".list"), paths);
    }
};

TEST_F(PackageDatabaseTest, DpkgListsNameTheOwners)
{
    list("lsp-plugins-lv2", "/.\n/usr\n/usr/lib\n/usr/lib/lv2\n/usr/lib/lv2/lsp-plugins.lv2\n"
                            "/usr/lib/lv2/lsp-plugins.lv2/manifest.ttl\n");
    list("swh-lv2", "/.\n/usr/lib/lv2\n/usr/lib/lv2/amp-swh.lv2\n");
    list("libc6:amd64",
         "/lib/x86_64-linux-gnu/ladspa-like.so\r\n/usr/lib/x86_64-linux-gnu/dssi/\n");
    list("empty", "");
    writeText(rootPath("var/lib/dpkg/info/swh-lv2.md5sums"), "0123 /usr/lib/lv2/other.lv2\n");

    PackageDatabase database = PackageDatabase::open(root());
    EXPECT_EQ(database.kind(), PackageDatabase::Dpkg);
    EXPECT_EQ(database.owners("/usr/lib/lv2/lsp-plugins.lv2"), QStringList{"lsp-plugins-lv2"});
    EXPECT_EQ(database.owners("/usr/lib/lv2/lsp-plugins.lv2/"), QStringList{"lsp-plugins-lv2"});
    EXPECT_EQ(database.owners("/usr/lib/lv2/amp-swh.lv2"), QStringList{"swh-lv2"});
    EXPECT_EQ(database.owners("/usr/lib/lv2"), QStringList({"lsp-plugins-lv2", "swh-lv2"}));
    EXPECT_EQ(database.owners("/usr/lib/x86_64-linux-gnu/dssi"), QStringList{"libc6:amd64"});
    // Listed as /lib on a system whose /lib is /usr/lib.
    EXPECT_EQ(database.owners("/usr/lib/x86_64-linux-gnu/ladspa-like.so"),
              QStringList{"libc6:amd64"});
    EXPECT_TRUE(database.owners("/usr/lib/lv2/other.lv2").isEmpty()) << "only .list files count";
    EXPECT_TRUE(database.owners("/usr/local/lib/lv2/mine.lv2").isEmpty());

    const auto many = database.owners(QStringList{"/usr/lib/lv2/amp-swh.lv2", "/nowhere"});
    EXPECT_EQ(many.size(), 1);
    EXPECT_EQ(many.value("/usr/lib/lv2/amp-swh.lv2"), QStringList{"swh-lv2"});
}

TEST_F(PackageDatabaseTest, PrefixesKeepTheIndexSmall)
{
    list("lsp-plugins-lv2", "/usr/lib/lv2\n/usr/lib/lv2/lsp-plugins.lv2\n/usr/lib/lv2x/odd\n"
                            "/usr/share/doc/lsp-plugins-lv2\n");
    PackageDatabase database = PackageDatabase::open(root(), {"/usr/lib/lv2/"});
    EXPECT_EQ(database.size(), 2);
    EXPECT_EQ(database.owners("/usr/lib/lv2/lsp-plugins.lv2"), QStringList{"lsp-plugins-lv2"});
    EXPECT_TRUE(database.owners("/usr/share/doc/lsp-plugins-lv2").isEmpty());
}

TEST_F(PackageDatabaseTest, AListThatCannotBeReadIsReportedAndTheRestIndexed)
{
    list("good", "/usr/lib/ladspa/amp.so\n");
    QDir().mkpath(rootPath("var/lib/dpkg/info/folder.list"));
    PackageDatabaseLimits limits;
    limits.maxListBytes = 64;
    list("huge", QByteArray(100, 'x'));
    PackageDatabase database = PackageDatabase::open(root(), {}, {}, limits);
    EXPECT_EQ(database.owners("/usr/lib/ladspa/amp.so"), QStringList{"good"});
    EXPECT_EQ(database.problems().size(), 1) << "a folder is not a list file";
    EXPECT_TRUE(database.problems().value(0).endsWith("huge.list larger than 64 bytes"))
        << qPrintable(database.problems().join('\n'));
}

TEST_F(PackageDatabaseTest, WithoutADatabaseNothingIsOwned)
{
    PackageDatabase none = PackageDatabase::open(root(), {}, "/no/rpm");
    EXPECT_EQ(none.kind(), PackageDatabase::None);
    EXPECT_TRUE(none.owners("/usr/lib/lv2/x.lv2").isEmpty());
    // An rpm database without the rpm program is no database either.
    QDir().mkpath(rootPath("var/lib/rpm"));
    EXPECT_EQ(PackageDatabase::open(root()).kind(), PackageDatabase::None);
}

#ifdef KORVANE_FAKE_RPM
TEST_F(PackageDatabaseTest, RpmIsAskedInOneBatchAndRemembered)
{
    QDir().mkpath(rootPath("var/lib/rpm"));
    // The stand-in answers from this file (as rpm would from its database) and logs its calls.
    writeText(rootPath("fake-rpm-files"),
              "/usr/lib/lv2/a.lv2\tlv2-a\n/usr/lib/lv2/a.lv2/m.ttl\tlv2-a\n"
              "/usr/lib/lv2\tlv2-a\n/usr/lib/lv2\tfilesystem\n"
              "/usr/lib/ladspa/b.so\tladspa-b\n");
    qputenv("FAKE_RPM_FILES", rootPath("fake-rpm-files").toUtf8());
    qputenv("FAKE_RPM_LOG", rootPath("fake-rpm-log").toUtf8());
    PackageDatabase database = PackageDatabase::open(root(), {}, KORVANE_FAKE_RPM);
    ASSERT_EQ(database.kind(), PackageDatabase::Rpm);
    const auto owners = database.owners(QStringList{"/usr/lib/lv2/a.lv2", "/usr/lib/lv2",
                                                    "/usr/lib/ladspa/b.so", "/none; rm -rf x"});
    EXPECT_EQ(owners.value("/usr/lib/lv2/a.lv2"), QStringList{"lv2-a"});
    EXPECT_EQ(owners.value("/usr/lib/lv2"), QStringList({"filesystem", "lv2-a"}));
    EXPECT_EQ(owners.value("/usr/lib/ladspa/b.so"), QStringList{"ladspa-b"});
    EXPECT_FALSE(owners.contains("/none; rm -rf x"));
    // Asked again: remembered, rpm is not run again.
    EXPECT_EQ(database.owners("/usr/lib/ladspa/b.so"), QStringList{"ladspa-b"});
    const QStringList calls = readText(rootPath("fake-rpm-log")).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(calls.size(), 2);
    EXPECT_EQ(calls[0], "--root|" + root()
                            + "|-qf|--queryformat|%{NAME}\\n|/usr/lib/lv2/a.lv2|"
                              "/usr/lib/lv2|/usr/lib/ladspa/b.so|/none; rm -rf x");
    EXPECT_EQ(calls[1], "--root|" + root()
                            + "|-q|--queryformat|[%{FILENAMES}\\t%{NAME}\\n]|"
                              "filesystem|ladspa-b|lv2-a");
    qunsetenv("FAKE_RPM_FILES");
    qunsetenv("FAKE_RPM_LOG");
}
#endif

} // namespace
} // namespace korvane
