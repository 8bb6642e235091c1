#include "GuiFixture.h"

#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/windows/PreferencesWindow.h"
#include "managers/TypeManager.h"
#include "platform/PropertyList.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QMenu>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>

namespace korvane {
namespace {

bool isClapPlugIn(const QString &path)
{
    return path.endsWith(QLatin1String(".clap"));
}

class MainWindowTest : public GuiTest {
protected:
    // Two Audio Units and two VST plug-ins, all switched on, scanned as at start-up.
    std::unique_ptr<MainWindow> openLibrary()
    {
        for (const char *name : {"Alder Echo", "Birch Verb"}) {
            PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), name,
                                                MachO::intel());
            PluginLibraryBuilder::makeVST(folder(TypeVST, LocUserActive), name, MachO::intel());
        }
        makeContext();
        context->awakeFromNib();
        auto window = std::make_unique<MainWindow>(*context);
        window->show();
        window->startWhenRunning();
        QCoreApplication::processEvents();
        return window;
    }
    QStringList labels(const MainWindow &window) const
    {
        QStringList shown;
        for (int i = 0; i < window.tabs()->count(); ++i)
            shown << window.tabs()->tabText(i);
        return shown;
    }
};

TEST_F(MainWindowTest, TabsAreTheSwitchedOnFormatsInTableOrderWithTheStoredOneInFront)
{
    const FormatTable withClap = FormatTable::builtIn().with(
        Format::derived("CLAP", "CLAP", "/Library/Audio/Plug-Ins/CLAP", &isClapPlugIn));
    const struct {
        std::initializer_list<bool> on;
        int stored; // ActiveTabView
        QStringList labels;
        QString front;
    } cases[] = {
        {{true, true, true, true, true},
         TypeMAS,
         {"AudioUnits", "RTAS", "MAS", "VST", "CLAP"},
         "MAS"},
        {{true, false, false, true, true}, 4, {"AudioUnits", "VST", "CLAP"}, "CLAP"},
        // The stored tab is switched off: some tab still stands in front.
        {{false, true, true, false, false}, TypeVST, {"RTAS", "MAS"}, "RTAS"},
    };
    for (const auto &c : cases) {
        makeContext(withClap);
        switchOn(c.on);
        context->pref()->setDefaultType(c.stored);
        context->awakeFromNib();
        MainWindow window(*context);
        EXPECT_EQ(labels(window), c.labels);
        EXPECT_EQ(window.tabs()->tabText(window.tabs()->currentIndex()), c.front);
        for (int i = 0; i < window.tabs()->count(); ++i) {
            auto *page = qobject_cast<FormatTab *>(window.tabs()->widget(i));
            ASSERT_TRUE(page);
            EXPECT_EQ(page->manager().traits().tabLabel, c.labels.at(i));
        }
    }
}

TEST_F(MainWindowTest, MenuCommandsReachTheManagerOfTheTabInFront)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    TypeManager &au = *context->manager(TypeAU);
    TypeManager &vst = *context->manager(TypeVST);
    ASSERT_EQ(au.numberOfRowsInTableView(), 2);
    ASSERT_EQ(vst.numberOfRowsInTableView(), 2);

    window->tabs()->tabBar()->setCurrentIndex(3); // the person clicks VST
    EXPECT_EQ(context->main()->getActiveType(), TypeVST);
    window->action("miAllOff")->trigger();
    EXPECT_TRUE(vst.isApplyEnabled());
    EXPECT_FALSE(au.isApplyEnabled());
    EXPECT_TRUE(window->page(TypeVST)->applyButton()->isEnabled());
    EXPECT_FALSE(window->page(TypeAU)->applyButton()->isEnabled());
    const QString set = homePath("Documents/Studio.vstkorv");
    ui.savePanelAnswers.enqueue(set);
    window->action("miSaveAs")->trigger(); // routed by the tab's identifier
    EXPECT_EQ(ui.savePanels.value(0).fileName, "untitled.vstkorv");
    EXPECT_EQ(window->page(TypeVST)->setList()->currentText(), set);
    EXPECT_FALSE(window->action("miSpecialEnv")->isEnabled());

    window->page(TypeVST)->applyButton()->click();
    for (const char *name : {"Alder Echo.vst", "Birch Verb.vst"})
        EXPECT_TRUE(QFileInfo::exists(folder(TypeVST, LocUserDisabled) + "/" + name)) << name;
    EXPECT_FALSE(window->page(TypeVST)->applyButton()->isEnabled());

    window->tabs()->tabBar()->setCurrentIndex(0);
    window->action("miAllOff")->trigger();
    EXPECT_TRUE(au.isApplyEnabled());
    EXPECT_TRUE(window->action("miSpecialEnv")->isEnabled());
    // The undo title names the edit, through the menu; undoing it there undoes it in the core.
    au.changeObject(au.itemAt(0), "AUGlobal", false);
    EXPECT_EQ(window->action("miUndo")->text(), context->main()->undoTitle());
    EXPECT_NE(window->action("miUndo")->text(), "Undo");
}

TEST_F(MainWindowTest, TheTabsFollowThePreferencesOnBox)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    auto *preferences = window->findChild<PreferencesWindow *>();
    ASSERT_TRUE(preferences);
    window->action("miPreferences")->trigger();
    FormatTab *rtas = window->page(TypeRTAS);
    auto *on = preferences->findChild<QCheckBox *>("cbRTASOn");
    ASSERT_TRUE(on);

    on->click();
    EXPECT_EQ(labels(*window), QStringList({"AudioUnits", "MAS", "VST"}));
    on->click();
    EXPECT_EQ(labels(*window), QStringList({"AudioUnits", "RTAS", "MAS", "VST"}));
    EXPECT_EQ(window->tabs()->widget(1), rtas); // the same page, edits and all
}

TEST_F(MainWindowTest, DeleteMovesToTheTrashOnlyWhenThePersonSaysSo)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    TypeManager &au = *context->manager(TypeAU);
    const QString path = folder(TypeAU, LocSystemActive) + "/Alder Echo.component";
    const struct {
        int answer;
        bool kept;
    } cases[] = {{AlertDefault, true}, {AlertAlternate, false}}; // "cancel", "move to trash"
    for (const auto &c : cases) {
        for (int row = 0; row < au.numberOfRowsInTableView(); ++row)
            if (au.itemAt(row)->getAUName() == "Alder Echo.component")
                au.selectRows({row});
        ASSERT_EQ(au.itemAt(au.selectedRow())->getAUName(), "Alder Echo.component");
        ui.alerts.clear();
        ui.alertAnswers.enqueue(c.answer);

        window->action("miDelete")->trigger();
        ASSERT_EQ(ui.alertMessages(), QStringList({"Move to trash"}));
        EXPECT_EQ(QFileInfo::exists(path), c.kept);
        EXPECT_EQ(au.numberOfRowsInTableView(), c.kept ? 2 : 1);
        EXPECT_TRUE(QFileInfo::exists(folder(TypeAU, LocSystemActive) + "/Birch Verb.component"));
    }
}

TEST_F(MainWindowTest, ClosingTheWindowSavesGroupsSetsAndTheFrontTabOnce)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    EXPECT_TRUE(context->manager(TypeVST)->hasScanned()); // started once the loop ran
    context->main()->addGroupEntry();
    QMenu *groups = window->findChild<QMenu *>("menuGroups");
    ASSERT_TRUE(groups);
    QStringList titles;
    for (QAction *item : groups->actions())
        titles << item->text();
    EXPECT_EQ(titles, QStringList({"none", "New Group"}));
    window->tabs()->tabBar()->setCurrentIndex(2);

    window->close();
    EXPECT_EQ(PropertyList::read(locations().dataFilePath("groups.plist")),
              QVariant(QVariantList{QString(), QStringLiteral("New Group")}));
    for (const Format &format : context->formats())
        EXPECT_TRUE(QFileInfo::exists(locations().dataFilePath(format.setsFile)))
            << format.setsFile.toStdString();
    EXPECT_EQ(context->pref()->getDefaultType(), TypeMAS);

    // The program's own end after the close writes nothing more.
    QFile::remove(locations().dataFilePath("groups.plist"));
    window->shutDown();
    EXPECT_FALSE(QFileInfo::exists(locations().dataFilePath("groups.plist")));
}

} // namespace
} // namespace korvane
