#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "platform/FileOperations.h"

namespace korvane {

// Counts moves and passes them on.
class CountingOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    int moves = 0;
    bool move(const QString &from, const QString &to, FileError *error) override
    {
        ++moves;
        return LocalFileOperations::move(from, to, error);
    }
};

QVariantMap component(const char *type, const char *manufacturer, const QString &name)
{
    return {{"type", type}, {"subtype", "test"}, {"manufacturer", manufacturer}, {"name", name}};
}

class SoloEnvironmentTest : public FormatManagerFixture {
protected:
    CountingOperations counting{roots()};

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        instrument(LocSystemActive, "Synth.component",
                   {component("aumu", "appl", "Osmaker: Tone"),
                    component("aumu", "Acme", "Acme: Big Synth"),
                    component("aufx", "Acme", "Acme: Delay")});
        instrument(LocUserActive, "System.component",
                   {component("aumu", "appl", "Osmaker: Sampler")});
        addAU(LocUserDisabled, "Off.component");
        relaunch(&counting);
        au->reloadData();
    }
    void instrument(int loc, const QString &name, const QVariantList &components)
    {
        PluginLibraryBuilder::makeBundle(folder(TypeAU, loc), name, MachO::intel(),
                                         {{"AudioComponents", components}});
    }
    QString logText() { return services().logText(); }
};

TEST_F(SoloEnvironmentTest, TwoCreatesMoveOnceAndDestroyRestoresOnce)
{
    EXPECT_FALSE(au->destroySpecialEnv()); // nothing set up: nothing moves
    EXPECT_EQ(counting.moves, 0);

    EXPECT_TRUE(au->createSpecialEnv(item(au, "Synth.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_TRUE(exists(auPath(LocSystemDisabled, "Synth.component")));
    EXPECT_FALSE(exists(auPath(LocSystemActive, "Synth.component"))); // the copy is gone again
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "System.component")));
    EXPECT_EQ(logText(), "----- Plug-In Info -----\nType: aumu\n");

    EXPECT_TRUE(au->createSpecialEnv(item(au, "System.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_EQ(
        logText(),
        "----- Plug-In Info -----\nType: aumu\n"); // the system maker's components are left out

    EXPECT_FALSE(au->destroySpecialEnv());
    EXPECT_EQ(counting.moves, 4);
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component/Contents/Info.plist")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_TRUE(exists(auPath(LocUserDisabled, "Off.component")));
}

TEST_F(SoloEnvironmentTest, FailedMovesAreSilent)
{
    QDir(folder(TypeAU, LocSystemDisabled)).removeRecursively();
    au->createSpecialEnv(item(au, "Synth.component"));
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component"))); // never removed in place
    au->destroySpecialEnv();
    EXPECT_TRUE(exists(auPath(LocSystemActive, "Synth.component")));
    EXPECT_TRUE(exists(auPath(LocUserActive, "System.component")));
    EXPECT_EQ(counting.moves, 4);
}

TEST_F(SoloEnvironmentTest, ComponentListIsSystemThenUserAndInstrumentsOnly)
{
    instrument(LocUserActive, "Another.component", {component("aumu", "Zeta", "Zeta: Pad")});
    au->getPluginList();
    QStringList names;
    for (const auto &wrapper : au->pluginList)
        names << wrapper->manufacturer().value_or("?") + ":" + wrapper->effectName().value_or("?");
    EXPECT_EQ(names,
              QStringList({"Osmaker:Tone", "Acme:Big Synth", "Zeta:Pad", "Osmaker:Sampler"}));
}

TEST(AUEffectWrapperNames, ParsesManufacturerAndEffect)
{
    AUEffectWrapper wrapper(Component{"/nowhere.component", 0});
    EXPECT_FALSE(wrapper.manufacturer().has_value());
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
