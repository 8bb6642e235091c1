#include "AllFormatsFixture.h"

#include "gui/main/AllPluginsModel.h"
#include "gui/main/AllPluginsView.h"
#include "gui/main/DetailsPane.h"

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTest>
#include <QTreeView>

namespace korvane {
namespace {

class DetailsPaneTest : public AllFormatsTest {
protected:
    DetailsPane &pane() const { return *window->details(); }
    QString shown(const char *label) const
    {
        return pane().isFieldShown(label) ? pane().field(label)->text() : QString();
    }
    void select(int type, const QString &name)
    {
        context->main()->setActiveType(type);
        FormatManager &manager = *context->manager(type);
        manager.table().selectRows({rowOf(manager, name)});
        QCoreApplication::processEvents();
    }
};

TEST_F(DetailsPaneTest, ThePaneShowsWhatThePlugInsFilesSayAsPlainText)
{
    writeLv2(homePath(".lv2/broken.lv2"), {}, "");
    writeText(homePath(".lv2/broken.lv2/manifest.ttl"), "<a> <b> [[[ not turtle");
    openWindow();
    window->action("miDetails")->trigger();
    ASSERT_TRUE(pane().isVisible());

    select(TypeLV2, "duo.lv2");
    EXPECT_EQ(shown("Name"), "duo.lv2");
    EXPECT_EQ(shown("Formats"), "LV2");
    EXPECT_EQ(shown("Vendor"), "Korvane Tests");
    EXPECT_FALSE(shown("Version").isEmpty());
    EXPECT_EQ(shown("Identifiers"), "urn:korvane:duo:a\nurn:korvane:duo:b");
    // A name from the bundle is text, never markup.
    EXPECT_EQ(shown("Plug-ins inside"), "<b>Duo</b> A\nDuo B");
    EXPECT_EQ(pane().field("Plug-ins inside")->textFormat(), Qt::PlainText);
    EXPECT_EQ(shown("Location"), homePath(".lv2/duo.lv2"));
    EXPECT_EQ(shown("State"), "On");
    EXPECT_TRUE(shown("Cannot be read").isEmpty());
    EXPECT_TRUE(pane().showButton()->isVisible());

    // A mark shows at once; companion content comes under its heading.
    FormatManager &lv2 = *context->manager(TypeLV2);
    const PluginPtr duo = lv2.itemAt(rowOf(lv2, "duo.lv2"));
    lv2.marking().changeItem(duo, "AUActive", false);
    EXPECT_EQ(shown("State"), "Off (switched off at the next Apply)");
    auto *content = pane().findChild<QLabel *>("lbDetailContent");
    EXPECT_FALSE(content->isVisible());
    duo->addContent(homePath("Presets/Duo"));
    pane().refresh();
    EXPECT_TRUE(content->isVisible());
    EXPECT_EQ(content->text(), homePath("Presets/Duo"));

    select(TypeVST3, "Echo Chamber.vst3");
    EXPECT_EQ(shown("Name"), "Echo Chamber");
    EXPECT_EQ(shown("File"), "Echo Chamber.vst3");
    EXPECT_TRUE(shown("Identifiers").contains("VST2:Echo")) << shown("Identifiers").toStdString();
    EXPECT_EQ(shown("Architectures"), "x86_64");
    // A bundle whose files the scan does not read says what its Mach-O header holds, as named
    // there.
    select(TypeVST, "Echo Chamber.vst");
    EXPECT_EQ(shown("Architectures"), "i386");

    select(TypeLV2, "broken.lv2");
    EXPECT_TRUE(shown("Cannot be read").startsWith("manifest.ttl: not Turtle"))
        << shown("Cannot be read").toStdString();

    lv2.table().selectRows({});
    QCoreApplication::processEvents();
    EXPECT_TRUE(pane().findChild<QLabel *>("lbDetailsEmpty")->isVisible());
}

TEST_F(DetailsPaneTest, ThePaneFollowsTheListAcrossFormatsAndEnterThereShowsIt)
{
    openWindow();
    window->showAllPlugins(true);
    EXPECT_FALSE(pane().isVisible());
    QTreeView *tree = window->allPlugins()->tree();
    AllPluginsModel &model = window->allPlugins()->model();
    for (int row = 0; row < model.rowCount(); ++row)
        if (model.index(row, 1).data().toString() == "Echo Chamber")
            tree->setCurrentIndex(
                window->allPlugins()->filter().mapFromSource(model.index(row, 1)));
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_TRUE(pane().isVisible());
    EXPECT_TRUE(window->action("miDetails")->isChecked());
    EXPECT_EQ(shown("Formats"), "VST, LV2, VST3");
    EXPECT_EQ(shown("Name"), "Echo Chamber.vst") << "a product's row shows its first plug-in";
}

TEST_F(DetailsPaneTest, ThePaneAndTheListComeBackAtTheNextStart)
{
    openWindow();
    EXPECT_FALSE(pane().isVisible());
    EXPECT_FALSE(window->isAllPluginsInFront());
    window->showDetails(true);
    window->showAllPlugins(true);
    window->splitter()->setSizes({600, 280});
    window->allPlugins()->tree()->sortByColumn(3, Qt::DescendingOrder); // by vendor
    const QList<int> sizes = window->splitter()->sizes();
    window->saveState();
    window = std::make_unique<MainWindow>(*context);
    window->show();
    QCoreApplication::processEvents();
    EXPECT_TRUE(pane().isVisible());
    EXPECT_TRUE(window->action("miDetails")->isChecked());
    EXPECT_TRUE(window->isAllPluginsInFront());
    EXPECT_TRUE(window->action("miAllPlugins")->isChecked());
    EXPECT_EQ(window->splitter()->sizes().value(1), sizes.value(1)) << "the pane's width";
    const QHeaderView *header = window->allPlugins()->tree()->header();
    EXPECT_EQ(header->sortIndicatorSection(), 3);
    EXPECT_EQ(header->sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_EQ(window->allPlugins()->model().index(0, 3).data().toString(), "Korvane Tests")
        << "the products come back in the order chosen";

    window->action("miDetails")->trigger();
    window->action("miAllPlugins")->trigger();
    window->saveState();
    window = std::make_unique<MainWindow>(*context);
    window->show();
    EXPECT_FALSE(pane().isVisible());
    EXPECT_FALSE(window->isAllPluginsInFront());
}

} // namespace
} // namespace korvane
