#include "GuiFixture.h"

#include "app/Preferences.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/main/StatusLine.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"
#include "gui/table/QuickFilterBar.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>

namespace korvane {
namespace {

// Audio Units of every kind of Mach-O binary a library of the last twenty years holds, in the
// window with the Audio Units in front and their architecture column shown.
class ArchitecturesTest : public GuiTest {
protected:
    std::unique_ptr<MainWindow> window;
    FormatManager *au = nullptr;
    FormatTab *page = nullptr;

    void SetUp() override
    {
        GuiTest::SetUp();
        const QString folder = this->folder(TypeAU, LocSystemActive);
        using B = PluginLibraryBuilder;
        B::makeAudioUnit(folder, "Classic", MachO::ppc());
        B::makeAudioUnit(folder, "Core Duo", MachO::intel());
        B::makeAudioUnit(folder, "Sixty Four", MachO::x86_64());
        B::makeAudioUnit(folder, "Silicon", MachO::arm64());
        B::makeAudioUnit(folder, "Both Worlds", MachO::appleUniversal());
        B::makeAudioUnit(folder, "Transition", MachO::universal2());
        B::makeBundle(folder, "Hollow.component", MachO::intel(), {}, B::Xml, QString());
        makeContext();
        context->pref()->setDefaultType(TypeAU);
        context->prepareWindow();
        window = std::make_unique<MainWindow>(*context);
        window->show();
        window->startWhenRunning();
        QCoreApplication::processEvents();
        au = context->manager(TypeAU);
        au->table().showArchitectureColumn(true);
        page = window->page(TypeAU);
    }
    void TearDown() override
    {
        window.reset();
        GuiTest::TearDown();
    }
    QString shownArchitecture(const QString &name) const
    {
        const PluginTableModel &model = page->table()->tableModel();
        return model.index(rowOf(*au, name + ".component"), model.columnOf("AUType"))
            .data()
            .toString();
    }
    // The names marked off, without their extension, in the table's order.
    QStringList markedOff() const
    {
        QStringList names;
        for (const PluginPtr &item : au->items())
            if (!item->isActive())
                names << item->name().chopped(QStringLiteral(".component").size());
        return names;
    }
    QStringList shown() const
    {
        QStringList names;
        const PluginFilterProxy &proxy = page->table()->filterProxy();
        for (int row = 0; row < proxy.rowCount(); ++row)
            names << au->itemAt(proxy.sourceRow(row))->name().chopped(10);
        return names;
    }
};

TEST_F(ArchitecturesTest, EachPlugInShowsTheArchitecturesItsBinaryHolds)
{
    const struct {
        const char *name;
        const char *shown;
    } cases[] = {
        {"Classic", "ppc"},
        {"Core Duo", "i386"},
        {"Sixty Four", "x86_64"}, // "Unknown" before: the 64-bit header matched no pattern
        {"Silicon", "arm64"},
        {"Both Worlds", "arm64 + x86_64"}, // sorted, whatever the slice table's order
        {"Transition", "i386 + ppc"},
        {"Hollow", ""}, // a bundle without an executable tells nothing
    };
    for (const auto &c : cases)
        EXPECT_EQ(shownArchitecture(c.name), c.shown) << c.name;
    // KorvaneCMD's listing keeps the old words.
    EXPECT_EQ(au->itemAt(rowOf(*au, "Sixty Four.component"))->architectureName(), "Unknown");
    EXPECT_EQ(au->itemAt(rowOf(*au, "Transition.component"))->architectureName(),
              "Universal Binary");
}

TEST_F(ArchitecturesTest, ACommandReachesEveryBinaryThatHoldsItsArchitecture)
{
    const struct {
        const char *action;
        QStringList off;
    } cases[] = {
        {"miPPCOff", {"Classic", "Transition"}},    {"miIntelOff", {"Core Duo", "Transition"}},
        {"miUBOff", {"Both Worlds", "Transition"}}, {"miIntel64Off", {"Both Worlds", "Sixty Four"}},
        {"miArm64Off", {"Both Worlds", "Silicon"}},
    };
    for (const auto &c : cases) {
        au->rescan(); // every mark gone
        window->action(c.action)->trigger();
        EXPECT_EQ(markedOff(), c.off) << c.action;
    }
    // On brings back exactly what Off took.
    window->action("miArm64On")->trigger();
    EXPECT_TRUE(markedOff().isEmpty());
    window->action("miIntel64Off")->trigger();
    window->action("miIntel64On")->trigger();
    EXPECT_TRUE(markedOff().isEmpty());
    EXPECT_EQ(au->pendingCount(), 0);
}

TEST_F(ArchitecturesTest, TheArchitectureFilterOffersWhatTheTabHoldsAndNarrowsTheRows)
{
    QComboBox *filter = page->filters()->architectureFilter();
    QStringList offered;
    for (int i = 0; i < filter->count(); ++i)
        offered << filter->itemText(i);
    EXPECT_EQ(offered, QStringList({"All architectures", "arm64", "i386", "ppc", "x86_64"}));

    filter->setCurrentIndex(filter->findText("x86_64"));
    EXPECT_EQ(shown(), QStringList({"Both Worlds", "Sixty Four"}));
    page->statusLine()->refresh();
    EXPECT_EQ(page->statusLine()->text(), "7 plug-ins · 7 on · 2 shown");
    page->searchField()->setText("six");
    EXPECT_EQ(shown(), QStringList({"Sixty Four"}));

    // A rescan keeps the choice while the tab still holds it.
    au->rescan();
    EXPECT_EQ(filter->currentText(), "x86_64");
    EXPECT_EQ(shown(), QStringList({"Sixty Four"}));
}

} // namespace
} // namespace korvane
