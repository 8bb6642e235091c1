#include "GuiFixture.h"

#include "app/UndoManager.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginItemDelegate.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"
#include "managers/TypeManager.h"

#include <QComboBox>
#include <QHeaderView>
#include <QMimeData>
#include <QSignalSpy>
#include <QStyleOptionViewItem>
#include <QTest>
#include <QTextDocument>
#include <QUrl>

namespace korvane {
namespace {

// Three Audio Units by made-up vendors, the table of their manager shown as a person sees it.
class PluginTableTest : public GuiTest {
protected:
    TypeManager *au = nullptr;
    std::unique_ptr<PluginTableView> view;

    void SetUp() override
    {
        GuiTest::SetUp();
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Alder Chorus",
                                            MachO::intel());
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserDisabled), "Birch Delay",
                                            MachO::ppc());
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocUserActive), "Cedar <b>EQ",
                                            MachO::intel());
        makeContext();
        au = context->manager(TypeAU);
        au->reloadData();
        openTable();
    }
    void TearDown() override
    {
        view.reset();
        GuiTest::TearDown();
    }

    void openTable()
    {
        view.reset();
        view = std::make_unique<PluginTableView>(*au);
        view->resize(900, 300);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    }
    UndoManager &undo() { return *context->main()->getUndoManager(); }
    int rowOf(const QString &name) const
    {
        for (int row = 0; row < au->numberOfRowsInTableView(); ++row)
            if (au->itemAt(row)->getAUName() == name + ".component")
                return row;
        return -1;
    }
    // The cell of a plug-in in the view, whatever the order and filter.
    QModelIndex cell(const QString &name, const QString &column) const
    {
        const int shown = view->filterProxy().proxyRow(rowOf(name));
        return view->model()->index(shown, view->tableModel().columnOf(column));
    }
    QStringList shownNames() const
    {
        QStringList names;
        for (int row = 0; row < view->model()->rowCount(); ++row)
            names << view->model()->index(row, 1).data().toString();
        return names;
    }
    QStringList selectedNames() const
    {
        QStringList names;
        for (const AUItemPtr &item : au->selectedItems())
            names << item->getAUName();
        names.sort();
        return names;
    }
    void clickCheckBox(const QModelIndex &index)
    {
        QStyleOptionViewItem option;
        option.initFrom(view->viewport());
        option.rect = view->visualRect(index);
        option.features = QStyleOptionViewItem::HasCheckIndicator;
        const QRect box = view->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator,
                                                        &option, view.get());
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, box.center());
    }
    void clickHeader(int section)
    {
        QHeaderView *header = view->horizontalHeader();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                          {header->sectionViewportPosition(section) + 20, header->height() / 2});
    }
};

TEST_F(PluginTableTest, CellsComeFromTheManagerAndAChangeRepaintsOnlyItsRow)
{
    PluginTableModel &model = view->tableModel();
    ASSERT_EQ(model.columnCount(), 4);
    const QModelIndex birch = model.index(rowOf("Birch Delay"), model.columnOf("AUActive"));
    EXPECT_EQ(birch.data(Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_EQ(birch.siblingAtColumn(model.columnOf("AUGlobal")).data(Qt::CheckStateRole),
              Qt::Unchecked);
    EXPECT_EQ(birch.siblingAtColumn(model.columnOf("AUName")).data(), "Birch Delay.component");
    EXPECT_EQ(birch.data(Qt::ToolTipRole),
              folder(TypeAU, LocUserDisabled) + "/Birch Delay.component");

    // A name that looks like markup reaches the tool tip as the same text.
    const QString cedar = cell("Cedar <b>EQ", "AUName").data(Qt::ToolTipRole).toString();
    QTextDocument tip;
    tip.setHtml(PluginItemDelegate::plainToolTip(cedar));
    EXPECT_EQ(tip.toPlainText(), cedar);

    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    au->changeObject(au->itemAt(rowOf("Birch Delay")), "AUActive", true);
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed.at(0).at(0).value<QModelIndex>().row(), rowOf("Birch Delay"));
    EXPECT_EQ(changed.at(0).at(1).value<QModelIndex>().row(), rowOf("Birch Delay"));
    EXPECT_EQ(birch.data(Qt::CheckStateRole), Qt::Checked);
    EXPECT_EQ(reset.size(), 0);

    // The architecture column follows the manager, and the rows stay where they were.
    au->setPlattformVisible(true);
    ASSERT_EQ(model.columnCount(), 5);
    EXPECT_EQ(model.headerData(4, Qt::Horizontal), "Type");
    EXPECT_EQ(model.index(rowOf("Birch Delay"), 4).data(), "PPC");
    au->setPlattformVisible(false);
    EXPECT_EQ(model.columnCount(), 4);
    EXPECT_EQ(reset.size(), 0);
}

TEST_F(PluginTableTest, EachEditIsOneUndoStepWithTheManagersName)
{
    clickCheckBox(cell("Alder Chorus", "AUActive"));
    EXPECT_FALSE(au->itemAt(rowOf("Alder Chorus"))->getAUActive());
    EXPECT_EQ(undo().undoActionName(), "disable \"Alder Chorus.component\"");
    EXPECT_TRUE(au->isApplyEnabled());

    clickCheckBox(cell("Birch Delay", "AUGlobal"));
    EXPECT_TRUE(au->itemAt(rowOf("Birch Delay"))->getAUGlobal());
    EXPECT_EQ(undo().undoActionName(), "setGlobal for \"Birch Delay.component\"");

    context->main()->getGroups() << "Synths";
    const QModelIndex group = cell("Alder Chorus", "AUGroup");
    view->edit(group);
    auto *combo = view->findChild<QComboBox *>();
    ASSERT_NE(combo, nullptr);
    EXPECT_EQ(combo->count(), au->numberOfItemsInComboBoxCell());
    const int synths = combo->findText("Synths");
    combo->setCurrentIndex(synths);
    emit combo->activated(synths); // the pick, as the list reports it
    EXPECT_EQ(au->itemAt(rowOf("Alder Chorus"))->getAUGroup(), "Synths");
    EXPECT_EQ(group.data(), "Synths");
    EXPECT_EQ(undo().undoActionName(), "setGroup Synths for \"Alder Chorus.component\"");

    undo().undo();
    undo().undo();
    EXPECT_FALSE(au->itemAt(rowOf("Birch Delay"))->getAUGlobal());
    EXPECT_FALSE(au->itemAt(rowOf("Alder Chorus"))->getAUActive());
    undo().undo();
    EXPECT_TRUE(au->itemAt(rowOf("Alder Chorus"))->getAUActive());
    EXPECT_EQ(cell("Alder Chorus", "AUActive").data(Qt::CheckStateRole), Qt::Checked);
    EXPECT_FALSE(undo().canUndo());
}

TEST_F(PluginTableTest, SortingAndRescanningKeepTheSelectedPlugIns)
{
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                      view->visualRect(cell("Alder Chorus", "AUName")).center());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      view->visualRect(cell("Birch Delay", "AUName")).center());
    const QStringList selected{"Alder Chorus.component", "Birch Delay.component"};
    ASSERT_EQ(selectedNames(), selected);

    const QStringList before = shownNames();
    clickHeader(view->tableModel().columnOf("AUName")); // sorted by name already: now descending
    ASSERT_FALSE(au->sortDescriptors().isEmpty());
    EXPECT_EQ(au->sortDescriptors().first().key, "AUName");
    EXPECT_FALSE(au->sortDescriptors().first().ascending);
    EXPECT_EQ(view->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    QStringList reversed = before;
    std::reverse(reversed.begin(), reversed.end());
    EXPECT_EQ(shownNames(), reversed);
    EXPECT_EQ(selectedNames(), selected);
    QStringList shownSelected;
    for (const QModelIndex &index : view->selectionModel()->selectedRows(1))
        shownSelected << index.data().toString();
    shownSelected.sort();
    EXPECT_EQ(shownSelected, selected);

    au->reloadData();
    EXPECT_EQ(selectedNames(), selected);
    EXPECT_EQ(view->selectionModel()->selectedRows().size(), 2);
    EXPECT_EQ(shownNames(), reversed);
}

TEST_F(PluginTableTest, TheFilterMatchesNameGroupPlaceAndArchitectureAndMapsRowsBack)
{
    context->main()->getGroups() << "Modulation";
    au->changeObject(au->itemAt(rowOf("Alder Chorus")), "AUGroup", "Modulation");
    const struct {
        const char *text;
        QStringList shown;
    } cases[] = {
        {"birch", {"Birch Delay.component"}},
        {"modul", {"Alder Chorus.component"}},
        {"Disabled", {"Birch Delay.component"}},
        {"intel", {"Cedar <b>EQ.component", "Alder Chorus.component"}},
        {"", {"Cedar <b>EQ.component", "Alder Chorus.component", "Birch Delay.component"}},
    };
    for (const auto &c : cases) {
        view->setFilterText(c.text);
        QStringList shown = shownNames();
        QStringList wanted = c.shown;
        shown.sort();
        wanted.sort();
        EXPECT_EQ(shown, wanted) << c.text;
    }

    view->setFilterText("birch");
    ASSERT_EQ(view->filterProxy().sourceRow(0), rowOf("Birch Delay"));
    view->selectRow(0);
    EXPECT_EQ(selectedNames(), QStringList{"Birch Delay.component"});
    clickCheckBox(view->model()->index(0, view->tableModel().columnOf("AUActive")));
    EXPECT_TRUE(au->itemAt(rowOf("Birch Delay"))->getAUActive());
    EXPECT_TRUE(au->itemAt(rowOf("Alder Chorus"))->getAUActive());
}

TEST_F(PluginTableTest, DragsOutFileUrlsAsACopyAndInstallsOnlyDropsFromOutside)
{
    view->selectRow(view->filterProxy().proxyRow(rowOf("Birch Delay")));
    const std::unique_ptr<QMimeData> dragged(
        view->model()->mimeData(view->selectionModel()->selectedRows()));
    ASSERT_TRUE(dragged);
    EXPECT_EQ(dragged->urls(), QList<QUrl>{QUrl::fromLocalFile(folder(TypeAU, LocUserDisabled)
                                                               + "/Birch Delay.component")});
    EXPECT_EQ(view->model()->supportedDragActions(), Qt::CopyAction);

    const QString outside =
        PluginLibraryBuilder::makeAudioUnit(root() + "/Downloads", "Elm Reverb", MachO::intel());
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(outside)});
    const QPoint onRow = view->visualRect(view->model()->index(0, 1)).center();
    EXPECT_EQ(view->dropActionFor(dragged.get(), onRow, true), Qt::IgnoreAction);
    EXPECT_EQ(view->dropActionFor(&files, onRow, false), Qt::CopyAction);

    QDragEnterEvent enter(onRow, Qt::CopyAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view->viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_TRUE(view->isDropHighlighted());

    ui.alertAnswers << AlertFirst; // "AudioUnits only"
    QDropEvent drop(onRow, Qt::CopyAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view->viewport(), &drop);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    EXPECT_FALSE(view->isDropHighlighted());
    QCoreApplication::processEvents();
    EXPECT_TRUE(QFileInfo::exists(folder(TypeAU, LocUserActive) + "/Elm Reverb.component"));
    EXPECT_TRUE(QFileInfo::exists(outside));
    EXPECT_EQ(view->model()->rowCount(), 4);
}

TEST_F(PluginTableTest, ColumnOrderAndWidthsComeBackPerFormat)
{
    QHeaderView *header = view->horizontalHeader();
    const int name = view->tableModel().columnOf("AUName");
    const int group = view->tableModel().columnOf("AUGroup");
    header->moveSection(header->visualIndex(name), 0);
    header->resizeSection(group, 222);
    au->setPlattformVisible(true);
    const int type = view->tableModel().columnOf("AUType");
    header->resizeSection(type, 77);
    au->setPlattformVisible(false);
    view.reset(); // as at quit

    makeContext(); // the next start reads the preferences file again
    au = context->manager(TypeAU);
    au->reloadData();
    au->setPlattformVisible(true);
    openTable();
    header = view->horizontalHeader();
    EXPECT_EQ(header->logicalIndex(0), view->tableModel().columnOf("AUName"));
    EXPECT_EQ(header->sectionSize(view->tableModel().columnOf("AUGroup")), 222);
    EXPECT_EQ(header->sectionSize(view->tableModel().columnOf("AUType")), 77);

    PluginTableView vst(*context->manager(TypeVST));
    EXPECT_EQ(vst.horizontalHeader()->logicalIndex(0), 0);
    EXPECT_NE(vst.columnsKey(), view->columnsKey());
    EXPECT_EQ(view->accessibleName(), "Plug-ins of AudioUnits");
}

} // namespace
} // namespace korvane
