#include "core/LinuxFormats.h"
#include "core/FormatTable.h"
#include "core/LinuxRecognition.h"
#include "core/Plugin.h"
#include "support/TestRoots.h"

#include <QDir>
#include <QFile>

namespace korvane {
namespace {

class LinuxFormatsTest : public TestRoots {
protected:
    static const Format &row(const char *name)
    {
        return FormatTable::builtIn().at(*FormatTable::builtIn().typeOfName(name));
    }
    static QStringList actives(const Format &format)
    {
        QStringList folders;
        for (const FolderPair &pair : format.pairs)
            folders << pair.active;
        return folders;
    }
};

TEST_F(LinuxFormatsTest, EachRowMovesIntoUsrLocalOrTheHomeAndLeavesTheDistributionsFoldersAlone)
{
    for (const char *name : {"lv2", "vst3", "clap", "ladspa", "dssi", "lxvst"}) {
        const Format &format = row(name);
        EXPECT_EQ(format.commandLineName(), QString::fromLatin1(name));
        // Codes 0..3 are the first system and user pair, as for the first four formats.
        EXPECT_TRUE(format.pairs.at(0).system);
        EXPECT_TRUE(format.pairs.at(0).active.startsWith("/usr/local/lib/"));
        EXPECT_FALSE(format.pairs.at(1).system);
        for (const FolderPair &pair : format.pairs)
            EXPECT_EQ(pair.distributionOwned, pair.active.startsWith("/usr/lib")) << name;
        EXPECT_EQ(format.firstPair(true), 0);
        EXPECT_EQ(format.firstPair(false), 1);
    }
    EXPECT_TRUE(actives(row("lxvst")).contains("~/.lxvst"));
    EXPECT_TRUE(actives(row("lv2")).contains("/usr/lib64/lv2"));
    EXPECT_EQ(row("vst3-mac").folder(LocUserDisabled), "~/Library/Audio/Plug-Ins/VST3 (Disabled)");
    EXPECT_EQ(row("AAX").folder(LocSystemActive),
              "/Library/Application Support/Avid/Audio/Plug-Ins");
    EXPECT_EQ(FormatTable::builtIn().typeOfName("-LADSPA"), std::nullopt); // the dash is the flag's

    // A plug-in the distribution owns that is moved to the user goes to the home, and back to
    // system goes to /usr/local, never into the distribution's folder.
    const Format &lv2 = row("lv2");
    Plugin item;
    item.setGlobal(true);
    item.setPair(2); // /usr/lib/lv2
    item.setActive(true);
    EXPECT_EQ(lv2.folder(item.locationCode(lv2)), "/usr/lib/lv2");
    item.setGlobal(false);
    EXPECT_EQ(lv2.folder(item.locationCode(lv2)), "~/.lv2");
    item.setGlobal(true);
    item.setActive(false);
    EXPECT_EQ(lv2.folder(item.locationCode(lv2)), "/usr/local/lib/lv2 (Disabled)");
}

TEST_F(LinuxFormatsTest, ARunAddsTheRootsArchitectureFoldersAndTheHostVariablesOnce)
{
    QDir().mkpath(rootPath("usr/lib/aarch64-linux-gnu"));
    QDir().mkpath(homePath("mine/lv2"));
    QDir().mkpath(rootPath("shared/lv2"));
    QFile::link(homePath("mine/lv2"), homePath("same-as-mine"));
    QDir().mkpath(homePath(".lv2"));
    const QHash<QString, QString> variables{
        {"LV2_PATH", "~/mine/lv2:" + home() + "/same-as-mine:" + rootPath("shared/lv2")
                         + "::relative/lv2:" + home() + "/.lv2"},
        {"LXVST_PATH", "~/vst-here"}};
    const FormatTable table = withRunFolders(FormatTable::builtIn(), roots(), variables);
    ASSERT_EQ(table.count(), FormatTable::builtIn().count());

    const Format &lv2 = table.at(*table.typeOfName("lv2"));
    const QStringList added = actives(lv2).mid(actives(row("lv2")).size());
    EXPECT_EQ(added, QStringList(
                         {"/usr/lib/aarch64-linux-gnu/lv2", "~/mine/lv2", rootPath("shared/lv2")}));
    const FolderPair &shared = lv2.pairs.last();
    EXPECT_TRUE(shared.system);
    EXPECT_FALSE(shared.distributionOwned);
    EXPECT_TRUE(lv2.pairs.at(lv2.pairs.size() - 3).distributionOwned);
    EXPECT_EQ(actives(table.at(*table.typeOfName("lxvst"))).last(), "~/vst-here");
    // The first four are as they were.
    EXPECT_EQ(actives(table.at(TypeVST)), actives(row("vst")));
}

TEST_F(LinuxFormatsTest, RecognitionGoesByNameAndListsWhatCannotBeRead)
{
    QDir().mkpath(rootPath("plain"));
    writeText(rootPath("plain/manifest.ttl"), "");
    QDir().mkpath(rootPath("Folder.so"));
    EXPECT_TRUE(isLv2BundlePath(rootPath("plain")));
    EXPECT_TRUE(isLv2BundlePath(rootPath("missing.lv2"))); // listed, then said to be unreadable
    EXPECT_FALSE(isLv2BundlePath(rootPath(".hidden.lv2")));
    EXPECT_FALSE(isLv2BundlePath(rootPath("._AppleDouble.lv2")));
    EXPECT_FALSE(isSharedObjectPath(rootPath("Folder.so")));
    EXPECT_TRUE(isSharedObjectPath(rootPath("amp.so")));
    EXPECT_FALSE(isSharedObjectPath(rootPath("amp.so.1")));
    EXPECT_TRUE(isVst3Path(rootPath("Old.VST3")));
    EXPECT_TRUE(isClapPath(rootPath("a.clap")));
    EXPECT_FALSE(isClapPath(rootPath(".clap")));
    EXPECT_TRUE(isAaxPath(rootPath("Pro.aaxplugin")));
}

} // namespace
} // namespace korvane
