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

} // namespace
} // namespace korvane
