#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyAdminObj.h"
#include "platform/FileOperations.h"

#include <QDir>

namespace korvane {

// Counts moves and passes them on.
class CountingOperations : public FileOperations {
public:
    int moves = 0;
    bool move(const QString &from, const QString &to, FileError *error) override
    {
        ++moves;
        return FileOperations::move(from, to, error);
    }
};

QVariantMap component(const char *type, const char *manufacturer, const QString &name)
{
    return {{"type", type}, {"subtype", "test"}, {"manufacturer", manufacturer}, {"name", name}};
}

class SpecialEnvTest : public FormatManagerFixture {
protected:
    MyAdminObj *au = nullptr;
    CountingOperations counting;

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        instrument(LocSystemActive, "Synth.component",
                   {component("aumu", "appl", "Apple: DLS"),
                    component("aumu", "Acme", "Acme: Big Synth"),
                    component("aufx", "Acme", "Acme: Delay")});
        instrument(LocUserActive, "Apple.component", {component("aumu", "appl", "Apple: Sampler")});
        addAU(LocUserDisabled, "Off.component");
        au = MyAdminObj::getAUObj();
        au->reloadData();
        FileOperations::setCurrent(&counting);
    }
    static void instrument(int loc, const QString &name, const QVariantList &components)
    {
        PluginLibraryBuilder::makeBundle(folder(TypeAU, loc), name, MachO::intel(),
                                         {{"AudioComponents", components}});
    }
    QString logText() const { return AppServices::getMainObj()->logText(); }
};

TEST_F(SpecialEnvTest, DestroyWithoutCreateMovesNothing)
{
    EXPECT_FALSE(au->destroySpecialEnv());
    EXPECT_EQ(counting.moves, 0);
    EXPECT_TRUE(exists(folder(TypeAU, LocSystemActive) + "/Synth.component"));
}

TEST_F(SpecialEnvTest, TwoCreatesMoveOnceAndDestroyRestoresOnce)
{
    EXPECT_TRUE(au->createSpecialEnv(item(au, "Synth.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_TRUE(exists(folder(TypeAU, LocSystemDisabled) + "/Synth.component"));
    EXPECT_FALSE(
        exists(folder(TypeAU, LocSystemActive) + "/Synth.component")); // the copy is gone again
    EXPECT_TRUE(exists(folder(TypeAU, LocUserDisabled) + "/Apple.component"));
    EXPECT_EQ(logText(), "----- Plug-In Info -----\nType: aumu\n");

    EXPECT_TRUE(au->createSpecialEnv(item(au, "Apple.component")));
    EXPECT_EQ(counting.moves, 2);
    EXPECT_EQ(logText(), "----- Plug-In Info -----\nType: aumu\n"); // Apple's own components only

    EXPECT_FALSE(au->destroySpecialEnv());
    EXPECT_EQ(counting.moves, 4);
    EXPECT_TRUE(exists(folder(TypeAU, LocSystemActive) + "/Synth.component/Contents/Info.plist"));
    EXPECT_TRUE(exists(folder(TypeAU, LocUserActive) + "/Apple.component"));
    EXPECT_TRUE(exists(folder(TypeAU, LocUserDisabled) + "/Off.component"));
}

TEST_F(SpecialEnvTest, FailedMovesAreSilent)
{
    QDir(folder(TypeAU, LocSystemDisabled)).removeRecursively();
    au->createSpecialEnv(item(au, "Synth.component"));
    EXPECT_TRUE(
        exists(folder(TypeAU, LocSystemActive) + "/Synth.component")); // never removed in place
    au->destroySpecialEnv();
    EXPECT_TRUE(exists(folder(TypeAU, LocSystemActive) + "/Synth.component"));
    EXPECT_TRUE(exists(folder(TypeAU, LocUserActive) + "/Apple.component"));
    EXPECT_EQ(counting.moves, 4);
}

TEST_F(SpecialEnvTest, ComponentListIsSystemThenUserAndInstrumentsOnly)
{
    instrument(LocUserActive, "Another.component", {component("aumu", "Zeta", "Zeta: Pad")});
    au->getPluginList();
    QStringList names;
    for (const auto &wrapper : au->pluginList)
        names << wrapper->effectName().value_or("?");
    EXPECT_EQ(names, QStringList({"DLS", "Big Synth", "Pad", "Sampler"}));
    EXPECT_EQ(au->pluginList[1]->manufacturer(), "Acme");
}

TEST(AUEffectWrapperNames, ParsesManufacturerAndEffect)
{
    AUEffectWrapper wrapper(Component{"/nowhere.component", 0});
    EXPECT_FALSE(wrapper.manufacturer().has_value());
    auto parse = [&wrapper](const QByteArray &text) {
        wrapper.parseName(QByteArray(1, char(text.size())) + text);
    };
    parse("Acme:   Big Synth");
    EXPECT_EQ(wrapper.manufacturer(), "Acme");
    EXPECT_EQ(wrapper.effectName(), "Big Synth");
    parse("No colon here");
    EXPECT_FALSE(wrapper.manufacturer().has_value());
    EXPECT_FALSE(wrapper.effectName().has_value());
    parse("Acme: ");
    EXPECT_EQ(wrapper.manufacturer(), "Acme");
    EXPECT_EQ(wrapper.effectName(), "");
    wrapper.parseName(QByteArray("\xC8"
                                 "Acme: X")); // a negative length is no name
    EXPECT_FALSE(wrapper.manufacturer().has_value());
    wrapper.parseName(QByteArray("\x40"
                                 "Acme: X")); // shorter than announced
    EXPECT_EQ(wrapper.effectName(), "X");
    wrapper.parseName({});
    EXPECT_FALSE(wrapper.effectName().has_value());
}

} // namespace korvane
