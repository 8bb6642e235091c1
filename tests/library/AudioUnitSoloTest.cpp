#include "FormatManagerFixture.h"

#include "library/AudioUnitSolo.h"

namespace korvane {
namespace {

class AudioUnitSoloTest : public FormatManagerFixture {
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
        au->rescan();
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

// Set up, the solo environment moves the other instruments out of the way once; torn down, it
// brings them back once. Moves that fail are silent and remove nothing.
TEST_F(AudioUnitSoloTest, TwoBeginsMoveOnceAndEndRestoresOnce)
{
    AudioUnitSolo solo(*au);
    EXPECT_FALSE(solo.end()); // nothing set up: nothing moves
    EXPECT_TRUE(solo.begin(item(au, "Synth.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_TRUE(exists(auPath(LocSystemDisabled, "Synth.component")));
    EXPECT_FALSE(exists(auPath(LocSystemActive, "Synth.component"))); // the copy is gone again
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "System.component")));
    EXPECT_TRUE(solo.begin(item(au, "System.component")));
    EXPECT_EQ(counting.moves, 2);

    EXPECT_FALSE(solo.end());
    EXPECT_EQ(counting.moves, 4);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component/Contents/Info.plist")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Off.component")));

    QDir(folder(TypeAU, LocSystemDisabled)).removeRecursively();
    solo.begin(item(au, "Synth.component"));
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component")));
    solo.end();
    EXPECT_EQ(counting.moves, 8);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_TRUE(ui.alerts.isEmpty());

    instrument(LocUserActive, "Another.component", {"aumu Zeta Zeta: Pad"});
    QStringList names; // system then user, instruments only
    for (const AudioUnitComponent &component : solo.instruments())
        names << component.manufacturer().value_or("?") + ":" + component.name().value_or("?");
    EXPECT_EQ(names,
              QStringList({"Osmaker:Tone", "Acme:Big Synth", "Zeta:Pad", "Osmaker:Sampler"}));
}

} // namespace
} // namespace korvane
