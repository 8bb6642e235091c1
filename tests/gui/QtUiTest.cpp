#include "gui/dialogs/QtUi.h"
#include "support/TestRoots.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <functional>

namespace korvane {
namespace {

// Someone at the screen: waits for the next modal dialog and acts on it once, through the
// window system as mouse and keyboard do (so a window a modal dialog blocks gets nothing).
struct Person {
    explicit Person(std::function<void(QWidget *)> action) : act(std::move(action))
    {
        QObject::connect(&poll, &QTimer::timeout, &poll, [this] {
            if (QWidget *modal = QApplication::activeModalWidget()) {
                poll.stop();
                this->act(modal);
            }
        });
        poll.start(5);
    }
    std::function<void(QWidget *)> act;
    QTimer poll;
};

// Clicks a window's button of this title as the mouse does. A missing one fails the test rather
// than leaving a dialog up for good.
void click(QWidget *window, const QString &title)
{
    const QList<QPushButton *> buttons = window->findChildren<QPushButton *>();
    // As read on the screen: a doubled ampersand shows as one.
    auto found = std::find_if(buttons.begin(), buttons.end(), [&](QPushButton *b) {
        return b->text().replace("&&", "&") == title;
    });
    if (found == buttons.end()) {
        ADD_FAILURE() << "no button " << title.toStdString();
        if (auto *dialog = qobject_cast<QDialog *>(window))
            dialog->done(-1);
        return;
    }
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {},
                      (*found)->mapTo(window, (*found)->rect().center()));
}

void press(QWidget *dialog, Qt::Key key)
{
    QTest::keyClick(dialog->windowHandle(), key);
}

class QtUiTest : public TestRoots {};

TEST_F(QtUiTest, AlertButtonsStandInOrderAnswerTheirCodesAndTextsStayPlain)
{
    const QStringList two = {"Proceed", "Stop"};
    const QStringList three = {"AudioUnits only", "All Files", "Cancel"};
    const struct {
        QStringList buttons;
        bool added;
        QString clicked; // empty: the key below
        Qt::Key key;
        AlertAnswer answer;
    } cases[] = {
        {two, false, {}, Qt::Key_Return, AlertAnswer::Default},
        {two, false, {}, Qt::Key_Escape, AlertAnswer::Alternate},
        {three, true, "All Files", {}, AlertAnswer::Second},
        {three, true, {}, Qt::Key_Return, AlertAnswer::First},
        {three, true, {}, Qt::Key_Escape, AlertAnswer::Third},
        // Escape never picks the destructive answer, even when it is not the default.
        {{"cancel", "move to trash"}, false, {}, Qt::Key_Escape, AlertAnswer::Default},
        {{"Ok"}, false, {}, Qt::Key_Escape, AlertAnswer::Default},
        {{"Proceed & go"}, false, "Proceed & go", {}, AlertAnswer::Default},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE((c.buttons.join('/') + " " + c.clicked).toStdString());
        QStringList shown;
        QList<Qt::TextFormat> formats;
        Person person([&](QWidget *dialog) {
            QList<QPushButton *> buttons = dialog->findChildren<QPushButton *>();
            std::sort(buttons.begin(), buttons.end(), [](QPushButton *a, QPushButton *b) {
                return a->mapToGlobal(QPoint()).x() < b->mapToGlobal(QPoint()).x();
            });
            for (QPushButton *b : buttons) // left to right
                shown << b->accessibleName();
            for (QLabel *label : dialog->findChildren<QLabel *>())
                if (label->text().contains('<'))
                    formats << label->textFormat();
            if (c.clicked.isEmpty())
                press(dialog, c.key);
            else
                click(dialog, c.clicked);
        });
        QtUi ui;
        Alert alert;
        alert.messageText = "<b>x</b>";
        alert.informativeText = "<img src=\"y\">";
        alert.buttons = c.buttons;
        alert.addedButtons = c.added;
        EXPECT_EQ(ui.runAlert(alert), c.answer);
        EXPECT_EQ(shown, c.buttons);
        EXPECT_EQ(formats, (QList<Qt::TextFormat>{Qt::PlainText, Qt::PlainText}));
    }
}

TEST_F(QtUiTest, SavePanelGivesTheTypedNameItsDocumentTypeAndAsksBeforeReplacing)
{
    const QString existing = QDir(home()).filePath("Kept.Set.aukorv");
    writeText(existing, "keep");
    QString proposed;
    Person typist([&](QWidget *dialog) {
        auto *name = dialog->findChild<QLineEdit *>("fileNameEdit");
        proposed = name->text();
        name->selectAll();
        QTest::keyClicks(name, "Live.aukorv");
        press(dialog, Qt::Key_Return);
    });
    QtUi ui;
    EXPECT_EQ(ui.runSavePanel({home(), "Untitled.aukorv", {"aukorv"}}),
              QDir(home()).filePath("Live.aukorv")); // not doubled
    EXPECT_EQ(proposed, "Untitled.aukorv");

    // The added type makes the name of a document already there: replacing it is asked, and
    // answering Cancel goes back to the panel, where Escape gives up.
    int asked = 0;
    std::unique_ptr<Person> onTheAlert, backInThePanel;
    Person person([&](QWidget *dialog) {
        QTest::keyClicks(dialog->findChild<QLineEdit *>("fileNameEdit"), "Kept.Set");
        onTheAlert = std::make_unique<Person>([&](QWidget *alert) {
            ++asked;
            backInThePanel =
                std::make_unique<Person>([](QWidget *panel) { press(panel, Qt::Key_Escape); });
            click(alert, "Cancel");
        });
        press(dialog, Qt::Key_Return);
    });
    EXPECT_EQ(ui.runSavePanel({home(), QString(), {"aukorv"}}), std::nullopt);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(readText(existing), "keep");
}

TEST_F(QtUiTest, MissingItemsListsNamesAsTheyAreAndEscapeIgnoresThem)
{
    const QString list = "<b>Echo</b>\nVerb";
    QString shown;
    Person person([&](QWidget *dialog) {
        shown = dialog->findChild<QPlainTextEdit *>()->toPlainText();
        press(dialog, Qt::Key_Escape);
    });
    QtUi ui;
    EXPECT_EQ(ui.runMissingItems(list),
              MissingItemsAnswer::Ignore); // nothing is taken out of the set
    EXPECT_EQ(shown, list);
}

TEST_F(QtUiTest, ProgressKeepsTheWindowsServicedAndCancelStopsTheWork)
{
    // Another window of the program, which must take no click while the panel is up.
    QWidget window;
    QPushButton elsewhere("Elsewhere", &window);
    window.resize(200, 100);
    window.show();
    int windowClicks = 0, ticks = 0;
    QObject::connect(&elsewhere, &QPushButton::clicked, [&] { ++windowClicks; });
    // A timer due every millisecond fires once per servicing of the event loop.
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
    ticker.start(1);

    QElapsedTimer clock;
    qint64 shownAt = -1;
    QtUi ui;
    ui.setWindow(&window);
    Person person([&](QWidget *dialog) {
        shownAt = clock.elapsed();
        click(&window, "Elsewhere");
        click(dialog, "Cancel");
    });
    // Started first: the panel's delay runs from the begin.
    clock.start();
    ui.progressBegin("Moving plug-ins:");
    int calls = 0;
    while (!ui.progressCancelled() && clock.elapsed() < 5000) {
        ui.progressText(QString("Plug-in %1").arg(calls));
        ui.progressValue(calls % 100, 100);
        ++calls;
    }
    const qint64 elapsed = clock.elapsed();
    ui.progressEnd();

    EXPECT_LT(elapsed, 5000); // cancelled
    // Short work shows no panel that would only flash.
    EXPECT_GE(shownAt, 300);
    EXPECT_EQ(windowClicks, 0);
    // Serviced throughout, but at most every 30 ms, not per call.
    EXPECT_GE(ticks, 5);
    EXPECT_LE(ticks, elapsed / 30 + 2);
    EXPECT_GT(calls, 20 * ticks);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);

    ui.progressBegin("Scanning");
    EXPECT_FALSE(ui.progressCancelled());
    ui.progressEnd();
}

} // namespace
} // namespace korvane
