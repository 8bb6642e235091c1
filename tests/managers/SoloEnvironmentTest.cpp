#include "FormatManagerFixture.h"

namespace korvane {

class SoloEnvironmentTest : public FormatManagerFixture {
protected:
    FaultyOperations counting{roots()};

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        instrument(
            LocSystemActive, "Synth.component",
            {"aumu appl Osmaker: Tone", "aumu Acme Acme: Big Synth", "aufx Acme Acme: Delay"});
        instrument(LocUserActive, "System.component", {"aumu appl Osmaker: Sampler"});
        addAU(LocUserDisabled, "Off.component");
        relaunch(&counting);
        au->reloadData();
    }
    // Components given as "type manufacturer name".
    void instrument(int loc, const QString &name, const QStringList &components)
    {
        QVariantList list;
        for (const QString &c : components)
            list << QVariantMap{{"type", c.section(' ', 0, 0)},
                                {"subtype", "test"},
                                {"manufacturer", c.section(' ', 1, 1)},
                                {"name", c.section(' ', 2)}};
        B::makeBundle(folder(TypeAU, loc), name, MachO::intel(), {{"AudioComponents", list}});
    }
};

TEST_F(SoloEnvironmentTest, TwoCreatesMoveOnceAndDestroyRestoresOnce)
{
    EXPECT_FALSE(au->destroySpecialEnv()); // nothing set up: nothing moves
    EXPECT_TRUE(au->createSpecialEnv(item(au, "Synth.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_TRUE(exists(auPath(LocSystemDisabled, "Synth.component")));
    EXPECT_FALSE(exists(auPath(LocSystemActive, "Synth.component"))); // the copy is gone again
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "System.component")));
    // The system maker's components are left out.
    EXPECT_TRUE(au->createSpecialEnv(item(au, "System.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_EQ(logText(), "----- Plug-In Info -----\nType: aumu\n");

    EXPECT_FALSE(au->destroySpecialEnv());
    EXPECT_EQ(counting.moves, 4);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component/Contents/Info.plist")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Off.component")));

    instrument(LocUserActive, "Another.component", {"aumu Zeta Zeta: Pad"});
    au->getPluginList(); // system then user, instruments only
    QStringList names;
    for (const auto &wrapper : au->pluginList)
        names << wrapper->manufacturer().value_or("?") + ":" + wrapper->effectName().value_or("?");
    EXPECT_EQ(names,
              QStringList({"Osmaker:Tone", "Acme:Big Synth", "Zeta:Pad", "Osmaker:Sampler"}));
}

TEST_F(SoloEnvironmentTest, FailedMovesAreSilentAndRemoveNothing)
{
    QDir(folder(TypeAU, LocSystemDisabled)).removeRecursively();
    au->createSpecialEnv(item(au, "Synth.component"));
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component")));
    au->destroySpecialEnv();
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_EQ(counting.moves, 4);
    EXPECT_TRUE(ui.alerts.isEmpty());
}

TEST(AUEffectWrapperNames, ParsesManufacturerAndEffect)
{
    AUEffectWrapper wrapper(Component{"/nowhere.component", 0});
    const auto parsed = [&wrapper](const QByteArray &pascalName) {
        wrapper.parseName(pascalName);
        return wrapper.manufacturer().value_or("-") + "|" + wrapper.effectName().value_or("-");
    };
    const auto counted = [](const QByteArray &text) { return char(text.size()) + text; };
    EXPECT_EQ(parsed(counted("Acme:   Big Synth")), "Acme|Big Synth");
    EXPECT_EQ(parsed(counted("No colon here")), "-|-");
    EXPECT_EQ(parsed(counted("Acme: ")), "Acme|");
    EXPECT_EQ(parsed(char(0xC8) + QByteArray("Acme: X")), "-|-");    // a negative length is no name
    EXPECT_EQ(parsed(char(0x40) + QByteArray("Acme: X")), "Acme|X"); // shorter than announced
    EXPECT_EQ(parsed({}), "-|-");
}

} // namespace korvane
