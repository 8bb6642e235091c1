#include "GuiFixture.h"

#include "gui/windows/PreferencesWindow.h"
#include "managers/TypeManager.h"
#include "platform/PropertyList.h"

#include <QCheckBox>
#include <QTabWidget>

namespace korvane {
namespace {

const QString kPlist = QStringLiteral("Library/Preferences/com.velmora.Korvane.plist");

class PreferencesWindowTest : public GuiTest {
protected:
    QCheckBox *box(PreferencesWindow &window, const QString &name)
    {
        auto *found = window.findChild<QCheckBox *>(name);
        EXPECT_NE(found, nullptr) << name.toStdString();
        return found;
    }
    QVariantMap stored() const
    {
        return PropertyList::readDictionary(homePath(kPlist)).value_or(QVariantMap());
    }
};

TEST_F(PreferencesWindowTest, OnBoxTakesTheTabOutAndPutsItBackAtItsIndex)
{
    const struct {
        std::initializer_list<bool> on; // AU, RTAS, MAS, VST at start-up
        int clicked;
        QStringList withoutIt;
        QStringList withIt;
    } cases[] = {
        // RTAS on, so MAS asks for index 2, one past the last tab: it goes last.
        {{false, true, true, true},
         TypeMAS,
         {"tabRTAS", "tabVST"},
         {"tabRTAS", "tabVST", "tabMAS"}},
        {{true, false, false, true}, TypeVST, {"tabAU"}, {"tabAU", "tabVST"}},
        {{true, true, true, true},
         TypeAU,
         {"tabRTAS", "tabMAS", "tabVST"},
         {"tabAU", "tabRTAS", "tabMAS", "tabVST"}},
    };
    for (const auto &c : cases) {
        makeContext();
        switchOn(c.on);
        context->awakeFromNib();
        MyMainObj *main = context->main();
        const Format &format = context->formats().at(c.clicked);
        PreferencesWindow window(*context->pref(), *main);
        window.show();
        // The page's other settings, which must survive the format's absence.
        box(window, "cb" + format.prefix + "MoveContent")->click();
        QWidget *page = window.pages()->widget(c.clicked + 1);
        ASSERT_EQ(page->objectName(), format.preferencesTabIdentifier());

        QCheckBox *on = box(window, "cb" + format.prefix + "On");
        ASSERT_TRUE(on->isChecked());
        on->click();
        EXPECT_EQ(main->tabIdentifiers(), c.withoutIt) << format.prefix.toStdString();
        EXPECT_EQ(stored().value(format.prefix + "On"), QVariant(false));
        EXPECT_TRUE(main->hasKeptView(c.clicked));

        window.pages()->setCurrentIndex(0); // the click decides the format, not the page in front
        on->click();
        EXPECT_EQ(main->tabIdentifiers(), c.withIt) << format.prefix.toStdString();
        const int index = int(c.withIt.indexOf(format.tabIdentifier()));
        EXPECT_EQ(main->labelAt(index), format.tabLabel);
        EXPECT_EQ(stored().value(format.prefix + "On"), QVariant(true));
        EXPECT_EQ(window.pages()->widget(c.clicked + 1), page);
        EXPECT_TRUE(box(window, "cb" + format.prefix + "MoveContent")->isChecked());
        EXPECT_EQ(stored().value(format.prefix + "MoveContent"), QVariant(true));
    }
}

TEST_F(PreferencesWindowTest, OpeningAndClosingWritesNothingNewAndAnEditWritesOnlyItself)
{
    // Switched off in the file; the controllers are made without loading any window.
    makeContext();
    switchOn({false, true, false, true});
    makeContext();
    const QString before = readText(homePath(kPlist));
    const QVariantMap values = stored();

    {
        PreferencesWindow window(*context->pref(), *context->main());
        window.show();
        EXPECT_FALSE(box(window, "cbAUOn")->isChecked());
        EXPECT_TRUE(box(window, "cbRTASOn")->isChecked());
        // Audio Units never recurse.
        EXPECT_EQ(window.findChild<QCheckBox *>("cbAUScanSubfolders"), nullptr);
        window.close();
    }
    EXPECT_EQ(readText(homePath(kPlist)), before);

    makeContext();
    PreferencesWindow window(*context->pref(), *context->main());
    window.show();
    box(window, "cbVSTShowContent")->click();
    QVariantMap expected = values;
    expected["VSTShowContent"] = true;
    expected["SUCheckAtStartup"] = false; // every control is stored, and reads as before
    EXPECT_EQ(PropertyList::toXml(stored()), PropertyList::toXml(expected));
}

TEST_F(PreferencesWindowTest, TypeBoxShowsAndHidesTheColumnAtOnce)
{
    makeContext();
    context->awakeFromNib();
    TypeManager *vst = context->manager(TypeVST);
    PreferencesWindow window(*context->pref(), *context->main());
    window.show();
    QCheckBox *type = box(window, "cbVSTType");
    type->click();
    EXPECT_EQ(vst->columns().count("AUType"), 1);
    EXPECT_EQ(stored().value("VSTType"), QVariant(true));
    window.close();
    window.show(); // read again from the file: no second column
    EXPECT_TRUE(type->isChecked());
    type->click();
    EXPECT_EQ(vst->columns().count("AUType"), 0);
    EXPECT_EQ(stored().value("VSTType"), QVariant(false));
}

} // namespace
} // namespace korvane
