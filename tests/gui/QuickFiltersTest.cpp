#include "GuiFixture.h"

#include "app/Preferences.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/main/StatusLine.h"
#include "gui/table/EmptyTableNote.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginTableView.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

namespace korvane {
namespace {

// Four VST plug-ins, two for the system and two for the user, one of each switched off, in the
// window as a person opens it.
class QuickFiltersTest : public WindowTest {
protected:
    FormatManager *vst = nullptr;

    void SetUp() override
    {
        WindowTest::SetUp();
        using B = PluginLibraryBuilder;
        B::makeVST(folder(TypeVST, LocSystemActive), "Bass 10", MachO::intel());
        B::makeVST(folder(TypeVST, LocSystemDisabled), "Bass 2", MachO::intel());
        B::makeVST(folder(TypeVST, LocUserActive), "Choir", MachO::intel());
        B::makeVST(folder(TypeVST, LocUserDisabled), "Drums", MachO::intel());
        vst = openWindow(TypeVST);
    }
    QStringList shown() const
    {
        QStringList names;
        const PluginFilterProxy &proxy = page->table()->filterProxy();
        for (int row = 0; row < proxy.rowCount(); ++row)
            names << vst->itemAt(proxy.sourceRow(row))->name();
        return names;
    }
    QString status() const
    {
        page->statusLine()->refresh();
        return page->statusLine()->text();
    }
};

TEST_F(QuickFiltersTest, FiltersCombineWithTheSearchAndTheStatusLineCountsWhatIsShown)
{
    // Natural order: "Bass 2" before "Bass 10".
    EXPECT_EQ(shown(), QStringList({"Bass 2.vst", "Bass 10.vst", "Choir.vst", "Drums.vst"}));
    EXPECT_EQ(status(), "4 plug-ins · 2 on");

    page->stateFilter()->setCurrentIndex(2); // off only
    EXPECT_EQ(shown(), QStringList({"Bass 2.vst", "Drums.vst"}));
    page->placeFilter()->setCurrentIndex(1); // system only
    EXPECT_EQ(shown(), QStringList({"Bass 2.vst"}));
    EXPECT_EQ(status(), "4 plug-ins · 2 on · 1 shown");
    page->stateFilter()->setCurrentIndex(0);
    page->searchField()->setText("bass");
    EXPECT_EQ(shown(), QStringList({"Bass 2.vst", "Bass 10.vst"}));

    // A bulk command acts on the rows the filters leave; the line says what Apply will do.
    window->action("miAllOff")->trigger();
    EXPECT_FALSE(vst->itemAt(rowOf(*vst, "Bass 10.vst"))->isActive());
    EXPECT_TRUE(vst->itemAt(rowOf(*vst, "Choir.vst"))->isActive());
    EXPECT_EQ(status(), "4 plug-ins · 1 on · 1 change pending: 1 off, 0 on · 2 shown");
    page->applyButton()->click();
    EXPECT_TRUE(QFileInfo::exists(folder(TypeVST, LocSystemDisabled) + "/Bass 10.vst"));
    EXPECT_TRUE(QFileInfo::exists(folder(TypeVST, LocUserActive) + "/Choir.vst"));

    // "On only" keeps only what the rows show as on, marks included.
    page->searchField()->clear();
    page->placeFilter()->setCurrentIndex(0);
    page->stateFilter()->setCurrentIndex(1);
    EXPECT_EQ(shown(), QStringList({"Choir.vst"}));
}

TEST_F(QuickFiltersTest, TheStatusLineGroupsNumbersAsTheLocaleDoes)
{
    EXPECT_EQ(StatusLine::compose(2431, 2102, 9, 3, 0, 38),
              "2,431 plug-ins · 2,102 on · 12 changes pending: 9 off, 3 on · 38 shown");
    EXPECT_EQ(StatusLine::compose(1, 1, 0, 0, 2, 1),
              "1 plug-in · 1 on · 2 system plug-ins change only with administrator rights");
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_TRUE(StatusLine::compose(12345, 0, 0, 0, 0, 12345).startsWith("12.345 "));
    QLocale::setDefault(QLocale::system());
}

TEST_F(QuickFiltersTest, AnEmptyTabSaysWhereItLookedAndHowToAddAPlugIn)
{
    FormatTab *rtas = window->page(TypeRTAS);
    auto *note = rtas->table()->findChild<EmptyTableNote *>();
    ASSERT_TRUE(note);
    window->tabs()->setCurrentWidget(rtas);
    QCoreApplication::processEvents();
    EXPECT_TRUE(note->isVisible());
    EXPECT_EQ(note->textFormat(), Qt::PlainText);
    for (int loc = 0; loc < LocationCount; ++loc)
        EXPECT_TRUE(note->text().contains(folder(TypeRTAS, loc))) << loc;
    EXPECT_TRUE(note->text().contains("Rescan"));

    // A search that empties a full table is no empty library.
    page->searchField()->setText("nothing like this");
    EXPECT_FALSE(page->table()->findChild<EmptyTableNote *>()->isVisibleTo(page->table()));
}

} // namespace
} // namespace korvane
