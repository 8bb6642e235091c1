#include "GuiFixture.h"

#include "core/FormatTable.h"
#include "core/UndoStack.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginItemDelegate.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>
#include <QUrl>

namespace korvane {
namespace {

// Three Audio Units by made-up vendors, the table of their manager shown as a person sees it.
class PluginTableTest : public GuiTest {
protected:
    FormatManager *au = nullptr;
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
        au->rescan();
        view = std::make_unique<PluginTableView>(*au, context->pref());
        view->resize(900, 300);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    }
    void TearDown() override
    {
        view.reset();
        GuiTest::TearDown();
    }
    UndoStack &undo() { return *context->main()->undoHistory().stack(); }
    PluginPtr item(const QString &name) const
    {
        return au->itemAt(rowOf(*au, name + ".component"));
    }
    QString groupOf(const QString &name) const { return au->groupName(*item(name)); }
    // The cell of a plug-in in the view, whatever the order and filter.
    QModelIndex cell(const QString &name, const QString &column) const
    {
        const int shown = view->filterProxy().proxyRow(rowOf(*au, name + ".component"));
        return view->model()->index(shown, view->tableModel().columnOf(column));
    }
    QStringList shownNames() const
    {
        QStringList names;
        for (int row = 0; row < view->model()->rowCount(); ++row)
            names << view->model()->index(row, 1).data().toString();
        return names;
    }
    // The selection as the manager holds it and as the view shows it, which must agree.
    QStringList selectedNames() const
    {
        QStringList names, shown;
        for (const PluginPtr &selected : au->table().selectedItems())
            names << selected->name();
        for (const QModelIndex &index : view->selectionModel()->selectedRows(1))
            shown << index.data().toString();
        names.sort();
        shown.sort();
        EXPECT_EQ(shown, names);
        return names;
    }
};

TEST_F(PluginTableTest, CellsComeFromTheManagerAndAChangeRepaintsOnlyItsRow)
{
    PluginTableModel &model = view->tableModel();
    const int birchRow = rowOf(*au, "Birch Delay.component");
    const QModelIndex birch = model.index(birchRow, model.columnOf("AUActive"));
    EXPECT_EQ(birch.data(Qt::CheckStateRole), Qt::Unchecked);
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
    au->marking().changeItem(item("Birch Delay"), "AUActive", true);
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed.at(0).at(0).value<QModelIndex>().row(), birchRow);
    EXPECT_EQ(changed.at(0).at(1).value<QModelIndex>().row(), birchRow);
    EXPECT_EQ(birch.data(Qt::CheckStateRole), Qt::Checked);
    // Marked, not applied: the tip still says where the plug-in lies, and what Apply will do.
    EXPECT_EQ(birch.data(Qt::ToolTipRole), folder(TypeAU, LocUserDisabled)
                                               + "/Birch Delay.component\n"
                                                 "Switched on at the next Apply");

    // The architecture column follows the manager, and the rows stay where they were.
    au->table().showArchitectureColumn(true);
    EXPECT_EQ(model.index(birchRow, model.columnOf("AUType")).data(), "ppc");
    EXPECT_EQ(reset.size(), 0);
}

TEST_F(PluginTableTest, SortingAndRescanningKeepTheSelectedPlugIns)
{
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                      view->visualRect(cell("Alder Chorus", "AUName")).center());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      view->visualRect(cell("Birch Delay", "AUName")).center());
    const QStringList selected{"Alder Chorus.component", "Birch Delay.component"};
    ASSERT_EQ(selectedNames(), selected);

    QStringList reversed = shownNames();
    std::reverse(reversed.begin(), reversed.end());
    // Sorted by name already: a click on its header sorts descending.
    QHeaderView *header = view->horizontalHeader();
    const int name = view->tableModel().columnOf("AUName");
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      {header->sectionViewportPosition(name) + 20, header->height() / 2});
    EXPECT_EQ(au->table().sortKeys().value(0).column, "AUName");
    EXPECT_FALSE(au->table().sortKeys().value(0).ascending);
    EXPECT_EQ(shownNames(), reversed);
    EXPECT_EQ(selectedNames(), selected);

    au->rescan();
    EXPECT_EQ(selectedNames(), selected);
    EXPECT_EQ(shownNames(), reversed);
}

TEST_F(PluginTableTest, TheFilterHidesRowsAndEditsReachTheShownPlugInAsOneUndoStep)
{
    context->main()->groupRegistry().setGroupAt(context->main()->groupRegistry().groupCount(),
                                                "Modulation");
    au->marking().changeItem(item("Alder Chorus"), "AUGroup", "Modulation");
    undo().clear();
    const struct {
        const char *text;
        QStringList shown;
    } cases[] = {
        {"modul", {"Alder Chorus.component"}},
        // The folder and the architecture are not searched: every path holds "Plug-Ins".
        {"Disabled", {}},
        {"Plug-Ins", {}},
        {"intel", {}},
        {"", {"Alder Chorus.component", "Birch Delay.component", "Cedar <b>EQ.component"}},
        {"birch", {"Birch Delay.component"}},
    };
    for (const auto &c : cases) {
        view->setFilterText(c.text);
        EXPECT_EQ(shownNames(), c.shown) << c.text;
    }

    view->selectRow(0);
    EXPECT_EQ(selectedNames(), QStringList{"Birch Delay.component"});
    view->setCurrentIndex(view->model()->index(0, view->tableModel().columnOf("AUActive")));
    QTest::keyClick(view.get(), Qt::Key_Space); // the check box, from the keyboard
    EXPECT_TRUE(item("Birch Delay")->isActive());
    EXPECT_TRUE(item("Alder Chorus")->isActive());
    EXPECT_EQ(undo().undoActionName(), "enable \"Birch Delay.component\"");

    const QModelIndex group = view->model()->index(0, view->tableModel().columnOf("AUGroup"));
    view->edit(group);
    auto *combo = view->findChild<QComboBox *>();
    ASSERT_NE(combo, nullptr);
    const int modulation = combo->findText("Modulation");
    combo->setCurrentIndex(modulation);
    emit combo->activated(modulation); // the pick, as the list reports it
    EXPECT_EQ(groupOf("Birch Delay"), "Modulation");
    EXPECT_EQ(group.data(), "Modulation");

    undo().undo();
    EXPECT_EQ(groupOf("Birch Delay"), "");
    undo().undo();
    EXPECT_EQ(cell("Birch Delay", "AUActive").data(Qt::CheckStateRole), Qt::Unchecked);
    EXPECT_FALSE(undo().canUndo());
}

// A filter change is one layout change, not a removal per hidden row (2,000 of them made the
// architecture filter slow at 10,000 rows); the selected rows it hides still leave the manager's
// selection, though a layout change tells the selection model nothing.
TEST_F(PluginTableTest, AFilterChangesTheRowsAtOnceAndTheRowsItHidesLeaveTheSelection)
{
    view->selectRow(0);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      view->visualRect(cell("Cedar <b>EQ", "AUName")).center());
    ASSERT_EQ(selectedNames(), QStringList({"Alder Chorus.component", "Cedar <b>EQ.component"}));

    QSignalSpy removed(view->model(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy inserted(view->model(), &QAbstractItemModel::rowsInserted);
    QSignalSpy laidOut(view->model(), &QAbstractItemModel::layoutChanged);
    view->setFilterText("cedar");
    EXPECT_EQ(shownNames(), QStringList{"Cedar <b>EQ.component"});
    EXPECT_EQ(selectedNames(), QStringList{"Cedar <b>EQ.component"});
    view->setFilterText("");
    EXPECT_EQ(shownNames().size(), 3);
    EXPECT_EQ(selectedNames(), QStringList{"Cedar <b>EQ.component"});
    EXPECT_EQ(removed.count() + inserted.count(), 0);
    EXPECT_EQ(laidOut.count(), 2);
}

TEST_F(PluginTableTest, DragsOutFileUrlsAndInstallsOnlyDropsFromOutside)
{
    view->selectRow(cell("Birch Delay", "AUName").row());
    const std::unique_ptr<QMimeData> dragged(
        view->model()->mimeData(view->selectionModel()->selectedRows()));
    ASSERT_TRUE(dragged);
    EXPECT_EQ(dragged->urls(), QList<QUrl>{QUrl::fromLocalFile(folder(TypeAU, LocUserDisabled)
                                                               + "/Birch Delay.component")});

    const QString outside =
        PluginLibraryBuilder::makeAudioUnit(root() + "/Downloads", "Elm Reverb", MachO::intel());
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(outside)});
    const QPoint onRow = view->visualRect(view->model()->index(0, 1)).center();
    EXPECT_EQ(view->dropActionFor(dragged.get(), onRow, true), Qt::IgnoreAction);

    QDragEnterEvent enter(onRow, Qt::CopyAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view->viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    ui.alertAnswers << AlertAnswer::First; // "AudioUnits only"
    QDropEvent drop(onRow, Qt::CopyAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(view->viewport(), &drop);
    EXPECT_EQ(drop.dropAction(), Qt::CopyAction); // a move would delete the download
    QCoreApplication::processEvents();            // the install comes after the drop
    EXPECT_TRUE(QFileInfo::exists(folder(TypeAU, LocUserActive) + "/Elm Reverb.component"));
    EXPECT_TRUE(QFileInfo::exists(outside));
    EXPECT_EQ(view->model()->rowCount(), 4);
}

TEST_F(PluginTableTest, ColumnsAndSortOrderComeBackPerFormatAndNoTitleIsCut)
{
    const int name = view->tableModel().columnOf("AUName");
    const int group = view->tableModel().columnOf("AUGroup");
    const int global = view->tableModel().columnOf("AUGlobal");
    QHeaderView *header = view->horizontalHeader();
    header->moveSection(header->visualIndex(name), 0);
    header->resizeSection(group, 222);
    header->resizeSection(global, 5); // as a shorter title in another language left it
    header->setSectionHidden(group, true);
    header->setSortIndicator(name, Qt::DescendingOrder);
    view.reset(); // closed, as at quit
    au->table().sortBy({{"AUName", true, true}});
    view = std::make_unique<PluginTableView>(*au, context->pref());
    header = view->horizontalHeader();
    EXPECT_EQ(header->logicalIndex(0), name);
    EXPECT_TRUE(header->isSectionHidden(group));
    EXPECT_GE(header->sectionSize(global),
              header->fontMetrics().horizontalAdvance(PluginTableModel::title("AUGlobal")));
    EXPECT_FALSE(au->table().sortKeys().value(0).ascending);
    EXPECT_EQ(shownNames().value(0), "Cedar <b>EQ.component");
    header->setSectionHidden(group, false); // back with the width it had
    view.reset();
    view = std::make_unique<PluginTableView>(*au, context->pref());
    EXPECT_FALSE(view->horizontalHeader()->isSectionHidden(group));
    EXPECT_EQ(view->horizontalHeader()->sectionSize(group), 222);

    PluginTableView vst(*context->manager(TypeVST), context->pref());
    EXPECT_EQ(vst.horizontalHeader()->logicalIndex(0), 0);
    EXPECT_TRUE(context->manager(TypeVST)->table().sortKeys().value(0).ascending);
}

// The bytes of a file name that are no UTF-8 (kept as lone surrogates) show as U+FFFD; a real
// character beyond the first plane stays, and the name itself is what is edited.
TEST_F(PluginTableTest, NameBytesThatAreNoTextShowAsReplacementCharacters)
{
    const QModelIndex index = cell("Alder Chorus", "AUName");
    const QString pair = QString(QChar(0xD800)) + QChar(0xDC80); // U+10080
    const QString kept = "Alder" + QString(QChar(0xDC80)) + pair + ".component";
    item("Alder Chorus")->setName(kept);
    EXPECT_EQ(index.data().toString(), "Alder" + QString(QChar(0xFFFD)) + pair + ".component");
    EXPECT_EQ(index.data(Qt::EditRole).toString(), kept);
}

} // namespace
// A plug-in in a folder the distribution owns carries the padlock and says why before anyone
// clicks; one in the person's own folder carries neither.
TEST_F(PluginTableTest, TheDistributionsPlugInsAreMarkedBeforeAnyoneClicks)
{
    const FormatTable &all = FormatTable::builtIn();
    const int lv2Type = *all.typeOfName("lv2");
    for (const QString &bundle : {rootPath("usr/lib/lv2/Owned.lv2"), homePath(".lv2/Mine.lv2")}) {
        QDir().mkpath(bundle);
        QFile manifest(bundle + "/manifest.ttl");
        ASSERT_TRUE(manifest.open(QIODevice::WriteOnly));
        manifest.write("@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n");
    }
    view.reset();
    context.reset();
    makeContext(all);
    FormatManager &lv2 = *context->manager(lv2Type);
    lv2.rescan();
    PluginTableView table(lv2, context->pref());
    const PluginTableModel &model = table.tableModel();
    const int name = model.columnOf("AUName");
    const QModelIndex owned = model.index(rowOf(lv2, "Owned.lv2"), name);
    const QModelIndex mine = model.index(rowOf(lv2, "Mine.lv2"), name);
    ASSERT_TRUE(owned.isValid() && mine.isValid());
    EXPECT_FALSE(owned.data(Qt::DecorationRole).isNull());
    EXPECT_TRUE(owned.data(Qt::ToolTipRole)
                    .toString()
                    .endsWith("Belongs to the distribution: Korvane does not switch it"));
    EXPECT_TRUE(mine.data(Qt::DecorationRole).isNull());
    EXPECT_FALSE(mine.data(Qt::ToolTipRole).toString().contains("distribution"));
}

} // namespace korvane
