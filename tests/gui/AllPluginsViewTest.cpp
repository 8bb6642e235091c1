#include "AllFormatsFixture.h"

#include "gui/main/AllPluginsModel.h"
#include "gui/main/AllPluginsView.h"
#include "gui/main/FormatTab.h"
#include "gui/main/StatusLine.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"
#include "gui/table/QuickFilterBar.h"
#include "library/TableColumns.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

namespace korvane {
namespace {

class AllPluginsViewTest : public AllFormatsTest {
protected:
    AllPluginsView &view() const { return *window->allPlugins(); }
    AllPluginsModel &model() const { return view().model(); }

    // The products shown, with their formats: "Echo Chamber=VST, LV2, VST3".
    QStringList shown() const
    {
        QStringList rows;
        const QAbstractItemModel &filter = view().filter();
        const int format = int(AllPluginsModel::defaultColumns().indexOf(TableColumn::Format));
        for (int row = 0; row < filter.rowCount(); ++row)
            rows << filter.index(row, 1).data().toString() + "="
                        + filter.index(row, format).data().toString();
        return rows;
    }
    QModelIndex productRow(const QString &name) const
    {
        for (int row = 0; row < model().rowCount(); ++row)
            if (model().index(row, 1).data().toString() == name)
                return model().index(row, 0);
        return {};
    }
    // The formats of the plug-ins shown beneath a product.
    QStringList shownBeneath(const QString &name) const
    {
        const QModelIndex product = view().filter().mapFromSource(productRow(name));
        const int format = int(AllPluginsModel::defaultColumns().indexOf(TableColumn::Format));
        QStringList formats;
        for (int row = 0; row < view().filter().rowCount(product); ++row)
            formats << view().filter().index(row, format, product).data().toString();
        return formats;
    }
    static QStringList offered(const QComboBox *filter)
    {
        QStringList items;
        for (int i = 0; i < filter->count(); ++i)
            items << filter->itemText(i);
        return items;
    }
    static void choose(QComboBox *filter, const QString &text)
    {
        ASSERT_GE(filter->findText(text), 0) << text.toStdString();
        filter->setCurrentIndex(filter->findText(text));
    }
    QString tabStatus(int type) const
    {
        window->page(type)->statusLine()->refresh();
        return window->page(type)->statusLine()->text();
    }
};

TEST_F(AllPluginsViewTest, OneRowPerProductWithItsFormatsAndTheFilterAndSearchNarrowIt)
{
    openWindow();
    window->action("miAllPlugins")->trigger();
    ASSERT_TRUE(window->isAllPluginsInFront());
    EXPECT_EQ(window->frontPage(), nullptr);
    EXPECT_EQ(shown(), QStringList({"duo=LV2", "Echo Chamber=VST, LV2, VST3", "Solo Synth=LV2"}))
        << "a bundle of two plug-ins is one row, by the bundle's name; case does not sort";
    // The product unfolds into its plug-ins, each with its own format and place.
    const QModelIndex echo = productRow("Echo Chamber");
    ASSERT_EQ(model().rowCount(echo), 3);
    EXPECT_EQ(model().index(2, 2, echo).data().toString(), "VST3");
    EXPECT_EQ(model().index(2, 1, echo).data().toString(), "Echo Chamber.vst3");
    EXPECT_EQ(model().index(0, 3, echo).data().toString(), "") << "the VST bundle names no vendor";
    EXPECT_EQ(model().index(echo.row(), 3).data().toString(), "Korvane Tests");
    EXPECT_EQ(model().rowCount(productRow("Solo Synth")), 0) << "one plug-in: nothing to unfold";
    view().refreshStatus();
    EXPECT_EQ(view().statusLine()->text(), "3 products · 1 in more than one format");

    view().severalFormats()->setChecked(true);
    EXPECT_EQ(shown(), QStringList({"Echo Chamber=VST, LV2, VST3"}));
    EXPECT_EQ(view().statusLine()->text(), "3 products · 1 in more than one format · 1 shown");
    view().severalFormats()->setChecked(false);
    // The search looks at names, vendors and groups, never at a folder: every path here holds
    // ".lv2" and the home's name.
    view().searchField()->setText("elsewhere");
    EXPECT_EQ(shown(), QStringList({"Solo Synth=LV2"}));
    view().searchField()->setText(".vst3");
    EXPECT_EQ(shown(), QStringList({"Echo Chamber=VST, LV2, VST3"})) << "a plug-in's own name";
    view().searchField()->setText(QFileInfo(home()).fileName());
    EXPECT_EQ(shown(), QStringList());
    // Ctrl+F reaches this search while the list is in front.
    view().searchField()->clear();
    window->action("miFind")->trigger();
    EXPECT_TRUE(view().searchField()->hasFocus() || !window->isActiveWindow());

    // One format's commands would act on a tab nobody sees: they wait for the tabs.
    EXPECT_FALSE(window->action("miBackup")->isEnabled());
    EXPECT_FALSE(window->action("miSave")->isEnabled());
    EXPECT_TRUE(window->action("miSelectedOff")->isEnabled());
    window->action("miAllPlugins")->trigger();
    EXPECT_FALSE(window->isAllPluginsInFront());
    EXPECT_EQ(window->frontPage(), window->page(TypeVST));
    EXPECT_TRUE(window->action("miBackup")->isEnabled());
}

TEST_F(AllPluginsViewTest, AProductsBoxMarksItsPlugInsInEveryFormatAndTheTabsSayTheSame)
{
    openWindow();
    window->showAllPlugins(true);
    const QModelIndex echo = productRow("Echo Chamber");
    ASSERT_TRUE(echo.isValid());
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::Checked);

    // One plug-in off: the product's box is partly ticked, the VST3 tab counts one change.
    ASSERT_TRUE(model().setData(model().index(2, 0, echo), Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::PartiallyChecked);
    EXPECT_EQ(context->manager(TypeVST3)->pendingCount(), 1);
    EXPECT_EQ(context->manager(TypeLV2)->pendingCount(), 0);
    EXPECT_TRUE(tabStatus(TypeVST3).contains("1 change pending"))
        << tabStatus(TypeVST3).toStdString();
    EXPECT_TRUE(model().index(2, 1, echo).data(Qt::FontRole).value<QFont>().bold());

    // The product's box with some on: all go off, in each format's own list.
    ASSERT_TRUE(model().setData(echo, Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    for (const int type : {int(TypeVST), TypeLV2, TypeVST3})
        EXPECT_EQ(context->manager(type)->pendingCount(), 1) << type;
    EXPECT_TRUE(tabStatus(TypeLV2).contains("1 change pending"))
        << tabStatus(TypeLV2).toStdString();
    // Undo takes back the last format's step: the marks are the managers' own.
    window->action("miUndo")->trigger();
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::PartiallyChecked);

    // Space on the selected product row flips all of it, as on a tab.
    QTreeView *tree = view().tree();
    tree->setFocus();
    tree->setCurrentIndex(view().filter().mapFromSource(echo));
    tree->selectionModel()->select(tree->currentIndex(),
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::Checked);
    for (const int type : {int(TypeVST), TypeLV2, TypeVST3})
        EXPECT_EQ(context->manager(type)->pendingCount(), 0) << type;
    // Selected Off from the menu bar acts on the product's plug-ins too, and the row menu's On
    // brings them back.
    window->action("miSelectedOff")->trigger();
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(context->manager(TypeLV2)->pendingCount(), 1);
    emit tree->customContextMenuRequested(tree->visualRect(tree->currentIndex()).center());
    auto *menu = view().findChild<QMenu *>("menuAllRows");
    ASSERT_NE(menu, nullptr);
    menu->findChild<QAction *>("miAllRowOn")->trigger();
    menu->close();
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_EQ(context->manager(TypeLV2)->pendingCount(), 0);
}

TEST_F(AllPluginsViewTest, TheListRegroupsAfterARescanWhileShownAndOnlyNotesItWhileHidden)
{
    openWindow();
    window->showAllPlugins(true);
    EXPECT_EQ(model().rowCount(), 3);
    window->showAllPlugins(false);
    writeVst3(homePath(".vst3"), "Solo Synth", "Elsewhere");
    context->manager(TypeVST3)->rescan();
    QCoreApplication::processEvents();
    EXPECT_TRUE(model().isStale()) << "a hidden list is not grouped on every rescan";
    EXPECT_EQ(model().rowCount(), 3);

    window->showAllPlugins(true);
    EXPECT_FALSE(model().isStale());
    EXPECT_EQ(model().rowCount(productRow("Solo Synth")), 2);

    // While shown, a rescan regroups once the event loop runs again.
    writeLv2(homePath(".lv2/new.lv2"), {{"urn:korvane:new", "Newcomer"}}, "Elsewhere");
    context->manager(TypeLV2)->rescan();
    QCoreApplication::processEvents();
    EXPECT_TRUE(productRow("Newcomer").isValid());
}

TEST_F(AllPluginsViewTest, OnlyTheFormatsShownAsTabsAreListed)
{
    openWindow();
    window->showAllPlugins(true);
    EXPECT_TRUE(productRow("Solo Synth").isValid());
    // LV2's tab taken out (as its On box in the preferences does): its plug-ins go from here.
    context->pref()->form.selectedTab = TypeLV2 + 1;
    context->main()->showSelectedFormatTab(false);
    QCoreApplication::processEvents();
    EXPECT_FALSE(productRow("Solo Synth").isValid());
    const QModelIndex echo = productRow("Echo Chamber");
    ASSERT_TRUE(echo.isValid());
    EXPECT_EQ(model().index(echo.row(), 2).data().toString(), "VST, VST3");
}

TEST_F(AllPluginsViewTest, TheListLaysOutTheTablesColumnsAndNamesArchitecturesAsTheTablesDo)
{
    // The tables' own column ids and order, without Global: a product may lie in both scopes.
    EXPECT_EQ(AllPluginsModel::defaultColumns(),
              QStringList({"AUActive", "AUName", "AUFormat", "AUVendor", "AUVersion", "AUType",
                           "AULocation", "AUPackage", "AUGroup"}));
    EXPECT_EQ(AllPluginsModel::title(TableColumn::Vendor), PluginTableModel::title("AUVendor"));

    openWindow();
    window->showAllPlugins(true);
    const QModelIndex echo = productRow("Echo Chamber");
    ASSERT_EQ(model().rowCount(echo), 3);
    const int architecture =
        int(AllPluginsModel::defaultColumns().indexOf(TableColumn::Architecture));
    // The VST bundle's 32-bit Intel header reads as the binary names it, not as the word "Intel",
    // and as its own tab's cell shows it.
    const QString vstCell = model().index(0, architecture, echo).data().toString();
    EXPECT_EQ(vstCell, "i386");
    FormatManager &vst = *context->manager(TypeVST);
    vst.table().showArchitectureColumn(true);
    const PluginTableModel &tab = window->page(TypeVST)->table()->tableModel();
    EXPECT_EQ(tab.index(rowOf(vst, "Echo Chamber.vst"), tab.columnOf("AUType")).data().toString(),
              vstCell);
    EXPECT_EQ(model().index(2, architecture, echo).data().toString(), "x86_64");
}

TEST_F(AllPluginsViewTest, ALaterFolderShowsAsTheTabsLocationColumnShowsIt)
{
    writeVst3(rootPath("usr/lib/vst3"), "Solo Synth", "Elsewhere");
    openWindow();
    window->showAllPlugins(true);
    const int location = int(AllPluginsModel::defaultColumns().indexOf(TableColumn::Location));
    const QModelIndex solo = productRow("Solo Synth");
    ASSERT_EQ(model().rowCount(solo), 2);
    QStringList places;
    for (int row = 0; row < model().rowCount(solo); ++row)
        places << model().index(row, location, solo).data().toString();
    places.sort();
    // The home's LV2 bundle lies in the user's first folder, the VST 3 in the distribution's.
    EXPECT_EQ(places, QStringList({"/usr/lib/vst3", "User"}));
    EXPECT_EQ(model().index(solo.row(), location).data().toString(), "User, /usr/lib/vst3");
}

TEST_F(AllPluginsViewTest, TheFormatFilterKeepsTheProductsOfThatFormatAndActsOnlyOnItsPlugIns)
{
    openWindow();
    window->showAllPlugins(true);
    QComboBox *format = view().filters()->formatFilter();
    EXPECT_TRUE(format->isVisibleTo(&view()));
    EXPECT_EQ(offered(format), QStringList({"All formats", "VST", "LV2", "VST3"}))
        << "the formats that hold something, in the tabs' order";

    choose(format, "VST3");
    // The product row still names every format it is installed in; the rows below, the shown.
    EXPECT_EQ(shown(), QStringList({"Echo Chamber=VST, LV2, VST3"})) << "the LV2-only ones go";
    EXPECT_EQ(shownBeneath("Echo Chamber"), QStringList({"VST3"}));
    EXPECT_EQ(view().statusLine()->text(), "3 products · 1 in more than one format · 1 shown");

    // The product's box and Space stand for the plug-ins shown: the hidden ones keep their state.
    const QModelIndex echo = view().filter().mapFromSource(productRow("Echo Chamber"));
    ASSERT_TRUE(view().filter().setData(echo, Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_EQ(echo.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_EQ(context->manager(TypeVST3)->pendingCount(), 1);
    EXPECT_EQ(context->manager(TypeLV2)->pendingCount(), 0);
    EXPECT_EQ(context->manager(TypeVST)->pendingCount(), 0);
    QTreeView *tree = view().tree();
    tree->setCurrentIndex(echo);
    tree->selectionModel()->select(echo,
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_EQ(context->manager(TypeVST3)->pendingCount(), 0);

    // All Off takes the rows shown, not the products' other formats.
    choose(format, "LV2");
    EXPECT_EQ(shown().size(), 3);
    window->action("miAllOff")->trigger();
    EXPECT_EQ(context->manager(TypeLV2)->pendingCount(), 3);
    EXPECT_EQ(context->manager(TypeVST)->pendingCount(), 0);
    EXPECT_EQ(context->manager(TypeVST3)->pendingCount(), 0);

    // Beside the multi-format filter, both apply.
    view().severalFormats()->setChecked(true);
    EXPECT_EQ(shown(), QStringList({"Echo Chamber=VST, LV2, VST3"}));
    EXPECT_EQ(shownBeneath("Echo Chamber"), QStringList({"LV2"}));
}

TEST_F(AllPluginsViewTest, TheArchitecturePlaceStateAndUnreadableFiltersLookAtEachPlugIn)
{
    writeVst3(rootPath("usr/lib/vst3"), "Solo Synth", "Elsewhere");
    writeText(homePath(".vst3/Broken.vst3/Contents/Resources/moduleinfo.json"), "{ not json");
    openWindow();
    window->showAllPlugins(true);
    QuickFilterBar &filters = *view().filters();
    EXPECT_EQ(offered(filters.architectureFilter()),
              QStringList({"All architectures", "i386", "x86_64"}));

    choose(filters.architectureFilter(), "i386");
    EXPECT_EQ(shown(), QStringList({"Echo Chamber=VST, LV2, VST3"}));
    EXPECT_EQ(shownBeneath("Echo Chamber"), QStringList({"VST"}));
    choose(filters.architectureFilter(), "x86_64");
    EXPECT_EQ(shown(), QStringList({"Echo Chamber=VST, LV2, VST3", "Solo Synth=LV2, VST3"}));
    filters.architectureFilter()->setCurrentIndex(0);

    choose(filters.placeFilter(), "System only");
    EXPECT_EQ(shown(), QStringList({"Solo Synth=LV2, VST3"}));
    EXPECT_EQ(shownBeneath("Solo Synth"), QStringList({"VST3"}));
    filters.placeFilter()->setCurrentIndex(0);

    filters.unreadableFilter()->setChecked(true);
    ASSERT_EQ(shown().size(), 1);
    EXPECT_TRUE(shown().constFirst().startsWith("Broken")) << shown().constFirst().toStdString();
    filters.unreadableFilter()->setChecked(false);

    // A plug-in just unticked counts as off, and leaves "Off only" once ticked again.
    ASSERT_TRUE(model().setData(model().index(0, 0, productRow("Solo Synth")), Qt::Unchecked,
                                Qt::CheckStateRole));
    choose(filters.stateFilter(), "Off only");
    EXPECT_EQ(shown(), QStringList({"Solo Synth=LV2, VST3"}));
    EXPECT_EQ(shownBeneath("Solo Synth").size(), 1);
    ASSERT_TRUE(model().setData(model().index(0, 0, productRow("Solo Synth")), Qt::Checked,
                                Qt::CheckStateRole));
    EXPECT_EQ(shown(), QStringList());
    EXPECT_EQ(view().statusLine()->text(), "4 products · 2 in more than one format · 0 shown");
}

TEST_F(AllPluginsViewTest, TabVisitsTheFiltersTheSearchAndTheButtonThenTheListAsOneStop)
{
    openWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    window->showAllPlugins(true);
    QuickFilterBar &filters = *view().filters();
    const QList<QWidget *> expected{
        filters.stateFilter(),        filters.placeFilter(),        filters.formatFilter(),
        filters.architectureFilter(), filters.unreadableFilter(),   view().severalFormats(),
        view().searchField(),         view().unusedFormatsButton(), view().tree()};
    filters.stateFilter()->setFocus();
    QList<QWidget *> visited{QApplication::focusWidget()};
    for (qsizetype i = 1; i < expected.size(); ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited << QApplication::focusWidget();
    }
    EXPECT_EQ(visited, expected);
    QTest::keyClick(view().tree(), Qt::Key_Tab);
    QWidget *next = QApplication::focusWidget();
    EXPECT_TRUE(next != view().tree() && !view().tree()->isAncestorOf(next))
        << "the list is one stop";
}

} // namespace
} // namespace korvane
