#include "GuiFixture.h"

#include "gui/windows/InfoPanel.h"
#include "managers/TypeManager.h"
#include "panels/MyInfoObj.h"

#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

namespace korvane {
namespace {

class InfoPanelTest : public GuiTest {};

TEST_F(InfoPanelTest, FollowsTheTableSelectionOnlyWhileOpen)
{
    const QString folder = this->folder(TypeAU, LocSystemActive);
    PluginLibraryBuilder::makeBundle(folder, "Alder Chorus.component", MachO::intel(),
                                     {{"CFBundleGetInfoString", "Alder <b>Chorus</b> 2.1"}});
    PluginLibraryBuilder::makeBundle(folder, "Birch Delay.component", MachO::intel());
    makeContext();
    context->awakeFromNib();
    TypeManager *au = context->manager(TypeAU);
    au->reloadData();
    ASSERT_EQ(au->numberOfRowsInTableView(), 2);
    InfoPanel panel(*context->info());
    const auto rowOf = [au](const QString &name) {
        for (int row = 0; row < au->numberOfRowsInTableView(); ++row)
            if (au->itemAt(row)->getAUName() == name)
                return row;
        return -1;
    };

    au->shouldSelectRow(rowOf("Alder Chorus.component")); // a click in the table
    EXPECT_FALSE(panel.isVisible());

    au->selectRows({rowOf("Alder Chorus.component")});
    au->getInfo(); // the info command
    ASSERT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.nameField()->text(), "Alder Chorus");
    EXPECT_EQ(panel.infoField()->text(), "Alder <b>Chorus</b> 2.1");
    EXPECT_EQ(panel.infoField()->textFormat(), Qt::PlainText);

    au->shouldSelectRow(rowOf("Birch Delay.component"));
    EXPECT_EQ(panel.nameField()->text(), "Birch Delay");
    EXPECT_EQ(panel.versionField()->text(), "1.0");
    EXPECT_EQ(panel.infoField()->text(), "");

    panel.close();
    au->shouldSelectRow(rowOf("Alder Chorus.component"));
    EXPECT_FALSE(panel.isVisible());
    EXPECT_EQ(panel.nameField()->text(), "Birch Delay");
}

TEST_F(InfoPanelTest, ContentListIsShownAndEditedOnlyWhereThePreferenceAllowsIt)
{
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Cedar EQ",
                                        MachO::intel());
    const QString presets = PluginLibraryBuilder::makeFolder(homePath("Documents/Cedar Presets"));
    makeContext();
    context->awakeFromNib();
    TypeManager *au = context->manager(TypeAU);
    au->reloadData();
    InfoPanel panel(*context->info());
    QListWidget *list = panel.contentList();

    au->selectRows({0});
    au->getInfo();
    EXPECT_FALSE(list->isVisible());

    context->pref()->defaults()->setObject("AUShowContent", true);
    au->getInfo();
    ASSERT_TRUE(list->isVisible());
    ui.openPanelAnswers.enqueue(presets);
    panel.findChild<QPushButton *>("pbAdd")->click();
    EXPECT_TRUE(ui.openPanels.value(0).canChooseDirectories);
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), presets);
    EXPECT_EQ(au->itemAt(0)->getContentMaxIndex(), 1);

    list->setCurrentRow(-1);
    panel.findChild<QPushButton *>("pbRemove")->click(); // nothing chosen: nothing goes
    EXPECT_EQ(list->count(), 1);
    list->setCurrentRow(0);
    panel.findChild<QPushButton *>("pbRemove")->click();
    EXPECT_EQ(list->count(), 0);
    EXPECT_EQ(au->itemAt(0)->getContentMaxIndex(), 0);
}

} // namespace
} // namespace korvane
