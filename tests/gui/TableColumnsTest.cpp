#include "GuiFixture.h"

#include "app/Preferences.h"
#include "core/FormatTable.h"
#include "gui/table/PluginFilterProxy.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QTest>

namespace korvane {
namespace {

// Linux VST 3 bundles that say their vendor, version and architectures in their own files: one
// for the system in /usr/local, two of the user's, one in the distribution's folder and one
// whose module information is damaged.
class TableColumnsTest : public GuiTest {
protected:
    FormatManager *vst3 = nullptr;
    std::unique_ptr<PluginTableView> view;

    void SetUp() override
    {
        GuiTest::SetUp();
        bundle(rootPath("usr/local/lib/vst3"), "Squash", "Acme Audio", "1.10.0", {"x86_64-linux"});
        bundle(homePath(".vst3"), "Bend", "Bittern", "1.9.2", {"x86_64-linux", "aarch64-linux"});
        bundle(homePath(".vst3"), "Crush", "acme audio", "", {"x86_64-linux"});
        bundle(rootPath("usr/lib/vst3"), "Owned", "", "2.0", {"aarch64-linux"});
        bundle(homePath(".vst3"), "Broken", "", "", {}, "{ this is not: JSON5 ");
        makeContext(FormatTable::builtIn());
        vst3 = context->manager(*FormatTable::builtIn().typeOfName("vst3"));
        vst3->rescan();
        view = std::make_unique<PluginTableView>(*vst3, context->pref());
        view->resize(1200, 300);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    }
    void TearDown() override
    {
        view.reset();
        GuiTest::TearDown();
    }

    // folder/name.vst3 with a folder per architecture and a moduleinfo.json as the SDK writes it
    // (comments and trailing commas included), or the text given.
    static void bundle(const QString &folder, const QString &name, const QString &vendor,
                       const QString &version, const QStringList &architectures,
                       const QByteArray &text = {})
    {
        const QString contents = folder + "/" + name + ".vst3/Contents";
        for (const QString &architecture : architectures)
            ASSERT_TRUE(QDir().mkpath(contents + "/" + architecture));
        ASSERT_TRUE(QDir().mkpath(contents + "/Resources"));
        QFile info(contents + "/Resources/moduleinfo.json");
        ASSERT_TRUE(info.open(QIODevice::WriteOnly));
        info.write(!text.isEmpty() ? text
                                   : QStringLiteral("{ // written by the SDK\n"
                                                    "  \"Name\": \"%1\",\n  \"Version\": \"%2\",\n"
                                                    "  \"Factory Info\": { \"Vendor\": \"%3\", },\n"
                                                    "  \"Classes\": [],\n}\n")
                                         .arg(name, version, vendor)
                                         .toUtf8());
    }
    QModelIndex cell(const QString &name, const QString &column) const
    {
        const int shown = view->filterProxy().proxyRow(rowOf(*vst3, name + ".vst3"));
        return view->model()->index(shown, view->tableModel().columnOf(column));
    }
    QStringList shownColumn(const QString &column) const
    {
        QStringList values;
        for (int row = 0; row < view->model()->rowCount(); ++row)
            values
                << view->model()->index(row, view->tableModel().columnOf(column)).data().toString();
        return values;
    }
    QStringList visibleTitles(const PluginTableView &table) const
    {
        QStringList titles;
        const QHeaderView *header = table.horizontalHeader();
        for (int visual = 0; visual < header->count(); ++visual)
            if (const int logical = header->logicalIndex(visual); !header->isSectionHidden(logical))
                titles << table.model()->headerData(logical, Qt::Horizontal).toString();
        return titles;
    }
};

TEST_F(TableColumnsTest, CellsSayWhatTheFilesSayAndWhereEachPlugInLies)
{
    const struct {
        const char *name;
        const char *vendor;
        const char *version;
        QString location;
    } cases[] = {
        {"Squash", "Acme Audio", "1.10.0", "System"},
        {"Bend", "Bittern", "1.9.2", "User"},
        {"Crush", "acme audio", "", "User"},
        {"Owned", "", "2.0", "/usr/lib/vst3"}, // a later pair: its folder as written
        {"Broken", "", "", "User"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(cell(c.name, "AUVendor").data(), c.vendor) << c.name;
        EXPECT_EQ(cell(c.name, "AUVersion").data(), c.version) << c.name;
        EXPECT_EQ(cell(c.name, "AULocation").data(), c.location) << c.name;
        EXPECT_EQ(cell(c.name, "AUPackage").data(), "") << c.name; // no package database here
    }
    // The full path is the tip; a plug-in that cannot be read says why there.
    EXPECT_EQ(cell("Owned", "AULocation").data(Qt::ToolTipRole).toString(),
              rootPath("usr/lib/vst3/Owned.vst3")
                  + "\n"
                    "Belongs to the distribution: Korvane does not switch it");
    const QStringList broken =
        cell("Broken", "AUName").data(Qt::ToolTipRole).toString().split('\n');
    ASSERT_EQ(broken.size(), 2);
    EXPECT_EQ(broken.at(0), homePath(".vst3/Broken.vst3"));
    EXPECT_TRUE(broken.at(1).startsWith("cannot be read: moduleinfo.json is not JSON5"))
        << broken.at(1).toStdString();

    // Every column in the header's order; the package shows where the distribution owns a folder.
    EXPECT_EQ(visibleTitles(*view), QStringList({"Active", "Name", "Vendor", "Version", "Location",
                                                 "Global", "Package", "Group"}));
    PluginTableView audioUnits(*context->manager(TypeAU), context->pref());
    EXPECT_FALSE(visibleTitles(audioUnits).contains("Package"));
    EXPECT_GE(audioUnits.tableModel().columnOf("AUPackage"), 0); // hidden, still in the chooser
}

TEST_F(TableColumnsTest, VendorAndVersionSortAsPeopleCountWithUnknownsLast)
{
    vst3->table().sortBy({{"AUVersion", true, true}});
    EXPECT_EQ(shownColumn("AUVersion"), QStringList({"1.9.2", "1.10.0", "2.0", "", ""}));
    vst3->table().sortBy({{"AUVersion", false, true}});
    EXPECT_EQ(shownColumn("AUVersion"), QStringList({"2.0", "1.10.0", "1.9.2", "", ""}));

    // Case is no difference, so the earlier key decides between the two Acme rows: stable.
    vst3->table().sortBy({{"AUVendor", true, true}, {"AUName", false, true}});
    EXPECT_EQ(shownColumn("AUName"),
              QStringList({"Squash.vst3", "Crush.vst3", "Bend.vst3", "Owned.vst3", "Broken.vst3"}));
    vst3->table().sortBy({{"AUVendor", true, true}, {"AUName", true, true}});
    EXPECT_EQ(shownColumn("AUName"),
              QStringList({"Crush.vst3", "Squash.vst3", "Bend.vst3", "Broken.vst3", "Owned.vst3"}));

    // System first, the user's next, the distribution's folder last.
    vst3->table().sortBy({{"AULocation", true, true}, {"AUName", true, true}});
    EXPECT_EQ(shownColumn("AULocation"),
              QStringList({"System", "User", "User", "User", "/usr/lib/vst3"}));
}

TEST_F(TableColumnsTest, ALayoutSavedBeforeTheNewColumnsLoadsWithThemInPlace)
{
    const QString key = view->columnsKey();
    view.reset();
    context->pref()->store()->setValue(
        key, QVariantList{QVariantMap{{"Identifier", "AUName"}, {"Width", 333}},
                          QVariantMap{{"Identifier", "AUActive"}, {"Width", 64}},
                          QVariantMap{{"Identifier", "AUGlobal"}, {"Width", 70}},
                          QVariantMap{{"Identifier", "AUGroup"}, {"Hidden", true}}});
    view = std::make_unique<PluginTableView>(*vst3, context->pref());
    EXPECT_EQ(visibleTitles(*view), QStringList({"Name", "Vendor", "Version", "Location", "Active",
                                                 "Global", "Package"}));
    EXPECT_EQ(view->horizontalHeader()->sectionSize(view->tableModel().columnOf("AUName")), 333);

    // The architecture column, once the preference shows it, joins after the version.
    vst3->table().showArchitectureColumn(true);
    EXPECT_EQ(visibleTitles(*view), QStringList({"Name", "Vendor", "Version", "Architecture",
                                                 "Location", "Active", "Global", "Package"}));
    EXPECT_EQ(cell("Bend", "AUType").data(), "aarch64 + x86_64");
    // A bundle whose files name no architecture shows none, whatever the Mach-O test of a folder
    // that is no macOS bundle would say ("ppc").
    EXPECT_EQ(cell("Broken", "AUType").data(), "");
}

TEST_F(TableColumnsTest, CopyPutsTheSelectedRowsOnTheClipboardAsShown)
{
    view->horizontalHeader()->setSectionHidden(view->tableModel().columnOf("AUGroup"), true);
    view->selectRow(cell("Squash", "AUName").row());
    view->selectionModel()->select(cell("Bend", "AUName"),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keySequence(view.get(), QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(),
              "Active\tName\tVendor\tVersion\tLocation\tGlobal\tPackage\n"
              "on\tBend.vst3\tBittern\t1.9.2\tUser\toff\t\n"
              "on\tSquash.vst3\tAcme Audio\t1.10.0\tSystem\ton\t\n");
}

} // namespace
} // namespace korvane
