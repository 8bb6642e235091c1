#include "ShellFixture.h"

#include "managers/MyAdminObj.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "panels/MyInfoObj.h"
#include "panels/MyMissingItems.h"
#include "platform/SharedInstances.h"
#include "privileged/BLAuthentication.h"
#include "shell/LumoScript.h"
#include "shell/MyMainObj.h"

namespace korvane {

using Context = ShellTest;

TEST_F(Context, EveryAccessorAnswersTheContextsControllers)
{
    {
        AppContext ctx;
        EXPECT_EQ(MyMainObj::getMainObj(), ctx.main());
        EXPECT_EQ(AppServices::getMainObj(), ctx.main());
        EXPECT_EQ(MyPrefObj::getPref(), ctx.pref());
        EXPECT_EQ(MyAdminObj::getAUObj(), ctx.au());
        EXPECT_EQ(MyRTASObj::getRTASObj(), ctx.rtas());
        EXPECT_EQ(MyMASObj::getMASObj(), ctx.mas());
        EXPECT_EQ(MyVSTObj::getVSTObj(), ctx.vst());
        EXPECT_EQ(TypeManager::forType(TypeVST), ctx.vst());
        EXPECT_EQ(MyInfoObj::getInfo(), ctx.info());
        EXPECT_EQ(MyMissingItems::getMI(), ctx.missingItems());
        EXPECT_EQ(BLAuthentication::sharedInstance(), ctx.authentication());
        EXPECT_EQ(LumoScript::getLumoScript(), ctx.script());

        // Loaded by default: the tabs and every manager's window-load name.
        EXPECT_EQ(ctx.main()->tabCount(), 4);
        EXPECT_EQ(ctx.au()->setName(), "Untitled.aukorv");
        EXPECT_EQ(ctx.mas()->setName(), "Untitled.maskorv");

        // A second controller leaves the installed one in place.
        MyMainObj second;
        EXPECT_EQ(MyMainObj::getMainObj(), ctx.main());
    }
    EXPECT_EQ(SharedInstance<MyMainObj>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<AppServices>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<MyPrefObj>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<MyAdminObj>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<BLAuthentication>::peek(), nullptr);
    EXPECT_EQ(SharedInstance<LumoScript>::peek(), nullptr);
}

TEST_F(Context, AControllerMadeOnDemandIsBothSharedInstances)
{
    MyMainObj *main = MyMainObj::getMainObj();
    EXPECT_EQ(AppServices::getMainObj(), main);
    EXPECT_EQ(main->tabCount(), 4);
}

} // namespace korvane
