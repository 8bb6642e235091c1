#include "HelperFixture.h"

#include "helper/HelperRun.h"
#include "helper/SystemFolders.h"

namespace korvane {
namespace {

using helper::OwnedPrefixes;

class SystemFoldersTest : public HelperFixture {};

// What the distribution's packages own is refused by whole steps, its administrator's own
// folders excepted, and a format whose folders lie there (as a Linux format's may) is refused
// although its folders are otherwise fine.
TEST_F(SystemFoldersTest, FoldersTheDistributionOwnsAreRefused)
{
    const OwnedPrefixes distribution = OwnedPrefixes::distribution();
    EXPECT_TRUE(distribution.owns("/usr/lib/lv2/Echo.lv2"));
    EXPECT_TRUE(distribution.owns("/usr"));
    EXPECT_FALSE(distribution.owns("/usr/local/lib/lv2/Echo.lv2"));
    EXPECT_FALSE(distribution.owns("/usrlocal/Echo.lv2"));
    EXPECT_FALSE(distribution.owns("/Library/Audio/Plug-Ins/VST/Echo.vst"));

    makeBundle(vst("Echo.vst"));
    const helper::HelperArguments arguments{roots(), 0};
    const QByteArray request = helper::encodeRequest({{vst("Echo.vst"), vstOff("Echo.vst")}});
    QByteArray answer;
    const auto write = [&answer](const QByteArray &line) { answer += line; };
    const OwnedPrefixes packaged{{"/Library/Audio/Plug-Ins/VST"}, {}};
    EXPECT_EQ(helper::runRequest(request, arguments, disk(), write, packaged), helper::ExitRefused);
    EXPECT_TRUE(answer.contains("distribution")) << answer.constData();
    EXPECT_TRUE(isWholeBundle(vst("Echo.vst")));
}

// Every system pair of a row is the helper's, each on its own: LV2's /usr/local/lib/lv2 switches
// as the first four's folders do, and a move from one pair into another is refused, even where
// both pairs are system folders only root may change.
TEST_F(SystemFoldersTest, EachSystemPairOfARowIsServedAndMovesStayInTheirPair)
{
    const Format &lv2 = FormatTable::builtIn().at(*FormatTable::builtIn().typeOfName("lv2"));
    const QString local = locations().folderPath(lv2, LocSystemActive);
    ASSERT_TRUE(local.endsWith("/usr/local/lib/lv2"));
    makeBundle(local + "/Echo.lv2");
    QByteArray answer;
    const auto write = [&answer](const QByteArray &line) { answer += line; };
    const helper::HelperArguments arguments{roots(), 0};
    EXPECT_EQ(helper::runRequest(
                  helper::encodeRequest({{local + "/Echo.lv2", local + " (Disabled)/Echo.lv2"}}),
                  arguments, disk(), write),
              helper::ExitAllMoved)
        << answer.constData();
    EXPECT_TRUE(isWholeBundle(local + " (Disabled)/Echo.lv2"));

    Format twoPairs = Format::derived("Two", "Two", "/Library/Two", nullptr);
    twoPairs.pairs << FolderPair{"/Library/Other", true, false};
    const FormatTable table = FormatTable().with(twoPairs);
    const helper::SystemFolders folders(table, roots(), OwnedPrefixes{});
    const QString first = locations().folderPath(table.at(0), LocSystemActive);
    const QString other = locations().folderPath(table.at(0), 4);
    makeBundle(first + "/Echo.vst");
    QDir().mkpath(other + " (Disabled)");
    EXPECT_FALSE(folders.check({{first + "/Echo.vst", first + " (Disabled)/Echo.vst"}}));
    const std::optional<helper::Refusal> across =
        folders.check({{first + "/Echo.vst", other + " (Disabled)/Echo.vst"}});
    ASSERT_TRUE(across);
    EXPECT_TRUE(across->reason.contains("other system folder")) << qPrintable(across->reason);
}

} // namespace
} // namespace korvane
