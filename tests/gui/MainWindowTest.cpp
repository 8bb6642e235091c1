#include "GuiFixture.h"

#include "codec/PropertyList.h"
#include "gui/Translations.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "gui/main/StatusLine.h"
#include "gui/table/PluginTableModel.h"
#include "gui/table/PluginTableView.h"
#include "gui/windows/PreferencesWindow.h"
#include "os/ReadOnlyFileOperations.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTranslator>

namespace korvane {
namespace {

class MainWindowTest : public GuiTest {
protected:
    // Two Audio Units and two VST plug-ins, all formats on, scanned as at a start that left VST
    // in front.
    std::unique_ptr<MainWindow> openLibrary()
    {
        for (const char *name : {"Alder Echo", "Birch Verb"}) {
            PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), name,
                                                MachO::intel());
            PluginLibraryBuilder::makeVST(folder(TypeVST, LocUserActive), name, MachO::intel());
        }
        makeContext();
        context->pref()->setDefaultType(TypeVST);
        context->prepareWindow();
        auto window = std::make_unique<MainWindow>(*context);
        window->show();
        window->startWhenRunning();
        QCoreApplication::processEvents();
        return window;
    }
    static QString statusOf(FormatTab &page)
    {
        page.statusLine()->refresh();
        return page.statusLine()->text();
    }
};

TEST_F(MainWindowTest, MenuCommandsReachTheManagerOfTheTabInFront)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    FormatManager &au = *context->manager(TypeAU);
    EXPECT_EQ(window->tabs()->currentIndex(), 3);
    window->action("miAllOff")->trigger();
    EXPECT_TRUE(window->page(TypeVST)->applyButton()->isEnabled());
    EXPECT_FALSE(window->page(TypeAU)->applyButton()->isEnabled());
    EXPECT_FALSE(window->action("miSpecialEnv")->isEnabled());
    window->action("miSaveAs")->trigger(); // routed by the tab's identifier
    EXPECT_EQ(ui.savePanels.value(0).fileName, "untitled.vstkorv");

    window->page(TypeVST)->applyButton()->click();
    for (const char *name : {"Alder Echo.vst", "Birch Verb.vst"})
        EXPECT_TRUE(QFileInfo::exists(folder(TypeVST, LocUserDisabled) + "/" + name)) << name;
    EXPECT_FALSE(window->page(TypeVST)->applyButton()->isEnabled());

    // Delete asks first, then takes only the selected plug-in of the tab in front.
    window->tabs()->tabBar()->setCurrentIndex(0); // the person clicks AudioUnits
    au.table().selectRows({rowOf(au, "Alder Echo.component")});
    ui.alertAnswers.enqueue(AlertAnswer::Alternate); // "move to trash"
    window->action("miDelete")->trigger();
    EXPECT_EQ(ui.alertMessages(), QStringList({"Move to trash"}));
    EXPECT_FALSE(QFileInfo::exists(folder(TypeAU, LocSystemActive) + "/Alder Echo.component"));
    EXPECT_TRUE(QFileInfo::exists(folder(TypeAU, LocSystemActive) + "/Birch Verb.component"));

    window->action("miAllOff")->trigger();
    EXPECT_TRUE(window->page(TypeAU)->applyButton()->isEnabled());
    EXPECT_TRUE(window->action("miSpecialEnv")->isEnabled());
    // The undo item names the last edit and undoes it in the core.
    const bool global = au.itemAt(0)->isGlobal();
    au.marking().changeItem(au.itemAt(0), "AUGlobal", !global);
    EXPECT_EQ(window->action("miUndo")->text(), context->main()->undoHistory().undoTitle());
    window->action("miUndo")->trigger();
    EXPECT_EQ(au.itemAt(0)->isGlobal(), global);
}

// A search hides rows; All Off once switched off the hidden ones too. Bulk marks act on what is
// shown, ask past a screenful with the count, and each is one named undo step.
TEST_F(MainWindowTest, BulkCommandsActOnTheShownRowsAskPastAScreenfulAndUndoAsOneStep)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    FormatManager &vst = *context->manager(TypeVST);
    FormatTab *page = window->page(TypeVST);
    page->table()->setFilterText("Alder");
    window->action("miAllOff")->trigger();
    EXPECT_FALSE(vst.itemAt(rowOf(vst, "Alder Echo.vst"))->isActive());
    EXPECT_TRUE(vst.itemAt(rowOf(vst, "Birch Verb.vst"))->isActive()); // hidden: untouched
    EXPECT_TRUE(ui.alerts.isEmpty());                                  // one row fits
    EXPECT_EQ(statusOf(*page), "2 plug-ins · 1 on · 1 change pending: 1 off, 0 on · 1 shown");
    EXPECT_EQ(window->action("miUndo")->text(), "Undo Switch Off 1 Plug-In");
    window->action("miUndo")->trigger();
    EXPECT_TRUE(vst.itemAt(rowOf(vst, "Alder Echo.vst"))->isActive());
    EXPECT_EQ(statusOf(*page), "2 plug-ins · 2 on · 1 shown");

    // A group named in the submenu reaches its hidden members, and the question says so.
    context->main()->groupRegistry().addGroup();
    vst.groups().changeGroup(vst.itemAt(rowOf(vst, "Alder Echo.vst")), "New Group");
    vst.groups().changeGroup(vst.itemAt(rowOf(vst, "Birch Verb.vst")), "New Group");
    auto *groupOff = window->findChild<QMenu *>("menuGroupOff");
    ASSERT_TRUE(groupOff);
    emit groupOff->aboutToShow();
    ASSERT_EQ(groupOff->actions().size(), 1);
    EXPECT_EQ(groupOff->actions().first()->text(), "New Group");
    ui.alertAnswers.enqueue(AlertAnswer::Alternate); // Cancel
    groupOff->actions().first()->trigger();
    EXPECT_EQ(ui.alertMessages().value(0), "Switch off 2 plug-ins, 1 of them not shown?");
    EXPECT_EQ(vst.pendingCount(), 0);
    groupOff->actions().first()->trigger(); // Switch Off
    EXPECT_EQ(vst.pendingCount(), 2);
    EXPECT_EQ(statusOf(*page), "2 plug-ins · 0 on · 2 changes pending: 2 off, 0 on · 1 shown");
    EXPECT_EQ(window->action("miUndo")->text(), "Undo Switch Off 2 Plug-Ins");

    // Marked rows carry their mark in the table before Apply.
    const PluginTableModel &model = page->table()->tableModel();
    const int alder = rowOf(vst, "Alder Echo.vst");
    const int name = int(vst.table().columns().indexOf("AUName"));
    EXPECT_FALSE(model.data(model.index(alder, name), Qt::DecorationRole).isNull());
    EXPECT_TRUE(model.data(model.index(alder, name), Qt::ToolTipRole)
                    .toString()
                    .endsWith("Switched off at the next Apply"));
}

// Quit with marks not applied asks Apply / Discard / Cancel; Cancel keeps the window and the marks.
TEST_F(MainWindowTest, ClosingWithMarksAsksAndCancelKeepsTheWindowAndTheMarks)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    FormatManager &vst = *context->manager(TypeVST);
    window->action("miAllOff")->trigger();
    ui.alertAnswers.enqueue(AlertAnswer::Third); // Cancel
    window->close();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(ui.alertMessages(), QStringList{"2 changes not applied"});
    EXPECT_EQ(ui.alerts.last().buttons, QStringList({"Apply", "Discard", "Cancel"}));
    EXPECT_EQ(vst.pendingCount(), 2);
    // Rescan asks too; Apply moves them first.
    ui.alertAnswers.enqueue(AlertAnswer::First);
    window->action("miRescan")->trigger();
    EXPECT_TRUE(QFileInfo::exists(folder(TypeVST, LocUserDisabled) + "/Birch Verb.vst"));
    EXPECT_EQ(vst.pendingCount(), 0);
    window->close(); // nothing left to ask about
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ui.alerts.size(), 2);
}

// "Check for updates at start-up" was stored and read by nothing. Now the window asks the
// server (here one on the loopback the test starts) once it is up, and speaks of a newer version.
TEST_F(MainWindowTest, CheckForUpdatesAtStartUpAsksTheServerOnceTheWindowIsUp)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0));
    int requests = 0;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket *socket = server.nextPendingConnection();
        ++requests;
        QObject::connect(socket, &QTcpSocket::readyRead, [socket] {
            if (!socket->peek(4096).contains("\r\n\r\n"))
                return;
            socket->readAll();
            const QByteArray body = PropertyList::toXml(QVariantMap{{"KorvaneOSX", "99.0"}});
            socket->write("HTTP/1.0 200 OK\r\nContent-Length: " + QByteArray::number(body.size())
                          + "\r\n\r\n" + body);
            socket->disconnectFromHost();
        });
    });
    const QByteArray url =
        "http://127.0.0.1:" + QByteArray::number(server.serverPort()) + "/versions.plist";
    settings.updateUrl = QString::fromLatin1(url);
    makeContext();
    context->pref()->store()->setValue("SUCheckAtStartup", true);
    context->prepareWindow();
    auto window = std::make_unique<MainWindow>(*context);
    window->show();
    window->startWhenRunning();
    QElapsedTimer clock;
    clock.start();
    while (ui.alerts.isEmpty() && clock.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    EXPECT_EQ(requests, 1);
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_TRUE(ui.alerts.first().messageText.startsWith(
        "A new version of \"Korvane\" is available (version 99.0)."));
}

TEST_F(MainWindowTest, ThePreferencesOnBoxTakesTheTabOutAndPutsTheSamePageBack)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    auto *preferences = window->findChild<PreferencesWindow *>();
    ASSERT_TRUE(preferences);
    window->action("miPreferences")->trigger();
    FormatTab *rtas = window->page(TypeRTAS);
    QCheckBox *on = preferences->findChild<QCheckBox *>("cbRTASOn");
    QCheckBox *moveContent = preferences->findChild<QCheckBox *>("cbRTASMoveContent");
    moveContent->click(); // a setting of the page, which must outlive the format's absence

    on->click();
    EXPECT_EQ(window->tabs()->indexOf(rtas), -1);
    EXPECT_EQ(
        PropertyList::readDictionary(homePath("Library/Preferences/com.velmora.Korvane.plist"))
            ->value("RTASOn"),
        QVariant(false));
    preferences->pages()->setCurrentIndex(0); // the click decides the format, not the page
    on->click();
    EXPECT_EQ(window->tabs()->widget(1), rtas); // the same page, edits and all
    EXPECT_EQ(window->tabs()->tabText(1), "RTAS");
    EXPECT_TRUE(moveContent->isChecked());
}

TEST_F(MainWindowTest, ClosingTheWindowSavesGroupsAndTheFrontTabOnce)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    EXPECT_TRUE(context->manager(TypeVST)->hasScanned()); // started once the loop ran
    context->main()->groupRegistry().addGroup();
    QMenu *groups = window->findChild<QMenu *>("menuGroups");
    ASSERT_TRUE(groups);
    ASSERT_EQ(groups->actions().size(), 2); // "none" and the new one
    EXPECT_EQ(groups->actions().at(1)->text(), "New Group");
    window->tabs()->tabBar()->setCurrentIndex(2);

    window->close();
    EXPECT_EQ(PropertyList::read(locations().dataFilePath("groups.plist")),
              QVariant(QVariantList{QString(), QStringLiteral("New Group")}));
    EXPECT_EQ(context->pref()->defaultType(), TypeMAS);

    // The program's own end after the close writes nothing more.
    QFile::remove(locations().dataFilePath("groups.plist"));
    window->shutDown();
    EXPECT_FALSE(QFileInfo::exists(locations().dataFilePath("groups.plist")));
}

// The window comes back at the size it was closed at, never larger than this run's screen and
// never smaller than its minimum.
TEST_F(MainWindowTest, TheWindowsSizeComesBackWithinTheScreen)
{
    std::unique_ptr<MainWindow> window = openLibrary();
    const QRect screen = window->screen()->availableGeometry();
    EXPECT_LE(window->minimumWidth(), screen.width());
    window->resize(window->minimumWidth() + 10, window->minimumHeight() + 20);
    const QSize closedAt = window->size();
    window->close();
    window = std::make_unique<MainWindow>(*context);
    EXPECT_EQ(window->size(), closedAt);

    QWidget huge;
    huge.resize(screen.width() * 3, screen.height() * 3);
    context->pref()->store()->setValue("WindowGeometry", huge.saveGeometry());
    window = std::make_unique<MainWindow>(*context);
    EXPECT_LE(window->width(), screen.width());
    EXPECT_LE(window->height(), screen.height());
    window->resize(10, 10);
    EXPECT_GE(window->width(), window->minimumWidth());
}

} // namespace
} // namespace korvane
