#include "ShellFixture.h"

#include "managers/MyVSTObj.h"
#include "platform/SharedInstances.h"
#include "privileged/BLAuthentication.h"
#include "shell/LumoScript.h"
#include "shell/MyMainObj.h"

namespace korvane {

using Context = ShellTest;

TEST_F(Context, InstallsEveryControllerWhileItLivesAndNothingAfter)
{
    {
        AppContext ctx; // window loaded by default
        EXPECT_EQ(MyMainObj::getMainObj(), ctx.main());
        EXPECT_EQ(AppServices::getMainObj(), ctx.main());
        EXPECT_EQ(MyPrefObj::getPref(), ctx.pref());
        EXPECT_EQ(TypeManager::forType(TypeVST), ctx.vst());
        EXPECT_EQ(BLAuthentication::sharedInstance(), ctx.authentication());
        EXPECT_EQ(LumoScript::getLumoScript(), ctx.script());
        MyMainObj second; // does not take over
        EXPECT_EQ(MyMainObj::getMainObj(), ctx.main());
    }
    EXPECT_EQ(SharedInstance<MyMainObj>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<MyVSTObj>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<BLAuthentication>::peek(), nullptr);
    MyMainObj *onDemand = MyMainObj::getMainObj();
    EXPECT_EQ(AppServices::getMainObj(), onDemand);
}

} // namespace korvane
