#include "gui/dialogs/QtUi.h"
#include "PluginLibraryBuilder.h"
#include "gui/dialogs/ProgressDialog.h"
#include "managers/TypeManager.h"
#include "privileged/NullAuthorizationBackend.h"
#include "shell/AppContext.h"
#include "shell/MyMainObj.h"
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
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <functional>

namespace korvane {
namespace {

// Someone at the screen: waits for the next modal dialog and acts on it once, through the
// window system as mouse and keyboard do (so a window a modal dialog blocks gets nothing).
class Person : public QObject {
public:
    explicit Person(std::function<void(QWidget *)> act) : m_act(std::move(act))
    {
        connect(&m_poll, &QTimer::timeout, this, [this] {
            if (QWidget *modal = QApplication::activeModalWidget()) {
                m_poll.stop();
                m_act(modal);
            }
        });
        m_poll.start(5);
    }

private:
    std::function<void(QWidget *)> m_act;
    QTimer m_poll;
};

QPushButton *button(QWidget *dialog, const QString &text)
{
    const QList<QPushButton *> buttons = dialog->findChildren<QPushButton *>();
    // As read on the screen: a doubled ampersand shows as one.
    auto found = std::find_if(buttons.begin(), buttons.end(),
                              [&](QPushButton *b) { return b->text().replace("&&", "&") == text; });
    return found == buttons.end() ? nullptr : *found;
}

void click(QWidget *widget)
{
    if (!widget) {
        // A missing button fails the test rather than leaving the dialog up for good.
        ADD_FAILURE() << "no such button";
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
            dialog->done(-1);
        return;
    }
    QWidget *top = widget->window();
    QTest::mouseClick(top->windowHandle(), Qt::LeftButton, {},
                      widget->mapTo(top, widget->rect().center()));
}

void press(QWidget *dialog, Qt::Key key)
{
    QTest::keyClick(dialog->windowHandle(), key);
}

// The button titles of a dialog from left to right.
QStringList titlesLeftToRight(QWidget *dialog)
{
    QList<QPushButton *> buttons = dialog->findChildren<QPushButton *>();
    std::sort(buttons.begin(), buttons.end(), [](QPushButton *a, QPushButton *b) {
        return a->mapToGlobal(QPoint()).x() < b->mapToGlobal(QPoint()).x();
    });
    QStringList titles;
    for (QPushButton *b : buttons)
        titles << b->accessibleName();
    return titles;
}

class QtUiTest : public TestRoots {};

TEST_F(QtUiTest, AlertButtonsStandInOrderAndAnswerTheirCodes)
{
    const QStringList twoButtons = {"Proceed", "Stop"};
    const QStringList threeButtons = {"AudioUnits only", "All Files", "Cancel"};
    const QStringList safeDefault = {"cancel", "move to trash"};
    struct Case {
        QStringList buttons;
        bool added;
        QString clicked; // empty: the key below
        Qt::Key key;
        int answer;
    };
    const Case cases[] = {
        {twoButtons, false, "Proceed", {}, AlertDefault},
        {twoButtons, false, "Stop", {}, AlertAlternate},
        {twoButtons, false, {}, Qt::Key_Return, AlertDefault},
        {twoButtons, false, {}, Qt::Key_Escape, AlertAlternate},
        {threeButtons, true, "AudioUnits only", {}, AlertFirst},
        {threeButtons, true, "All Files", {}, AlertSecond},
        {threeButtons, true, "Cancel", {}, AlertThird},
        {threeButtons, true, {}, Qt::Key_Return, AlertFirst},
        {threeButtons, true, {}, Qt::Key_Escape, AlertThird},
        // Escape never picks the destructive answer, even when it is not the default.
        {safeDefault, false, {}, Qt::Key_Escape, AlertDefault},
        {{"Ok"}, false, {}, Qt::Key_Escape, AlertDefault},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE((c.buttons.join('/') + " " + c.clicked).toStdString());
        QStringList shown;
        Person person([&](QWidget *dialog) {
            shown = titlesLeftToRight(dialog);
            if (c.clicked.isEmpty())
                press(dialog, c.key);
            else
                click(button(dialog, c.clicked));
        });
        QtUi ui;
        Alert alert;
        alert.messageText = "Question";
        alert.buttons = c.buttons;
        alert.addedButtons = c.added;
        EXPECT_EQ(ui.runAlert(alert), c.answer);
        EXPECT_EQ(shown, c.buttons);
    }
}

TEST_F(QtUiTest, AlertTextsStayPlainText)
{
    QList<QLabel *> labels;
    QList<Qt::TextFormat> formats;
    Person person([&](QWidget *dialog) {
        for (QLabel *label : dialog->findChildren<QLabel *>()) {
            if (label->text().contains('<')) {
                labels << label;
                formats << label->textFormat();
            }
        }
        click(button(dialog, "Proceed & go"));
    });
    QtUi ui;
    Alert alert;
    alert.messageText = "<b>x</b>";
    alert.informativeText = "<img src=\"y\">";
    alert.buttons = {"Proceed & go"};
    EXPECT_EQ(ui.runAlert(alert), AlertDefault);
    EXPECT_EQ(formats, (QList<Qt::TextFormat>{Qt::PlainText, Qt::PlainText}));
}

TEST_F(QtUiTest, SavePanelGivesTheTypedNameItsDocumentType)
{
    const QDir folder(home());
    const QString existing = folder.filePath("Kept.Set.aukorv");
    writeText(existing, "keep");
    struct Case {
        QString typed;
        QString path;
    };
    const Case cases[] = {
        {"Drums", folder.filePath("Drums.aukorv")},
        {"Live.aukorv", folder.filePath("Live.aukorv")},
        {"Mix.Set", folder.filePath("Mix.Set.aukorv")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.typed.toStdString());
        QString proposed;
        Person person([&](QWidget *dialog) {
            auto *name = dialog->findChild<QLineEdit *>("fileNameEdit");
            ASSERT_NE(name, nullptr);
            proposed = name->text();
            name->selectAll();
            QTest::keyClicks(name, c.typed);
            press(dialog, Qt::Key_Return);
        });
        QtUi ui;
        const std::optional<QString> path =
            ui.runSavePanel({home(), "Untitled.aukorv", {"aukorv"}});
        EXPECT_EQ(proposed, "Untitled.aukorv");
        EXPECT_EQ(path, c.path);
    }

    // The added type makes the name of a document already there: replacing it is asked, and
    // answering Cancel goes back to the panel, where Escape gives up.
    int asked = 0;
    std::unique_ptr<Person> giveUp;
    Person person([&](QWidget *dialog) {
        QTest::keyClicks(dialog->findChild<QLineEdit *>("fileNameEdit"), "Kept.Set");
        giveUp = std::make_unique<Person>([&](QWidget *alert) {
            ++asked;
            giveUp = std::make_unique<Person>([](QWidget *panel) { press(panel, Qt::Key_Escape); });
            click(button(alert, "Cancel"));
        });
        press(dialog, Qt::Key_Return);
    });
    QtUi ui;
    EXPECT_EQ(ui.runSavePanel({home(), QString(), {"aukorv"}}), std::nullopt);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(readText(existing), "keep");
}

TEST_F(QtUiTest, MissingItemsListsNamesAsTheyAreAndAnswersIgnoreOrRemove)
{
    const QString list = "<b>Echo</b>\nVerb";
    struct Case {
        QString clicked; // empty: Escape
        int answer;
    };
    for (const Case &c : {Case{"Ignore", 1}, Case{"Remove", 2}, Case{{}, 1}}) {
        SCOPED_TRACE(c.clicked.toStdString());
        QString shown;
        Person person([&](QWidget *dialog) {
            shown = dialog->findChild<QPlainTextEdit *>()->toPlainText();
            if (c.clicked.isEmpty())
                press(dialog, Qt::Key_Escape);
            else
                click(button(dialog, c.clicked));
        });
        QtUi ui;
        EXPECT_EQ(ui.runMissingItems(list), c.answer);
        EXPECT_EQ(shown, list);
    }
}

TEST_F(QtUiTest, ProgressKeepsTheWindowsServicedAndCancelStopsTheWork)
{
    // Another window of the program, which must take no click while the panel is up.
    QWidget window;
    auto *elsewhere = new QPushButton("Elsewhere", &window);
    window.resize(200, 100);
    window.show();
    int windowClicks = 0;
    QObject::connect(elsewhere, &QPushButton::clicked, [&] { ++windowClicks; });

    // A timer due every millisecond fires once per servicing of the event loop.
    int ticks = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
    ticker.start(1);

    QElapsedTimer clock;
    qint64 shownAt = -1;
    QtUi ui;
    ui.setWindow(&window);
    Person person([&](QWidget *dialog) {
        shownAt = clock.elapsed();
        EXPECT_NE(qobject_cast<ProgressDialog *>(dialog), nullptr);
        click(elsewhere);
        click(button(dialog, "Cancel"));
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

    EXPECT_TRUE(ui.progressCancelled());
    EXPECT_LT(elapsed, 5000);
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

// Moves that take long enough for the panel to come up before the last plug-in.
class SlowMoves : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    bool move(const QString &from, const QString &to, FileError *error) override
    {
        QThread::msleep(120);
        return LocalFileOperations::move(from, to, error);
    }
};

TEST_F(QtUiTest, CancelInThePanelStopsAnApplyBetweenPlugIns)
{
    const QStringList names = {"Alpha.component", "Bravo.component", "Charlie.component",
                               "Delta.component", "Echo.component",  "Foxtrot.component"};
    for (const QString &name : names)
        PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), name, MachO::intel());
    SlowMoves files(roots());
    QtUi ui;
    NullAuthorizationBackend allowAll;
    AppContext::Parts parts;
    parts.roots = roots();
    parts.files = &files;
    parts.ui = &ui;
    parts.authorization = &allowAll;
    parts.awakeFromNib = false;
    AppContext context(std::move(parts));
    TypeManager *au = context.managers().at(TypeAU);
    au->reloadData();
    au->setAllInactive();

    Person person([](QWidget *panel) { click(button(panel, "Cancel")); });
    au->applyAllPending();

    QStringList moved, left;
    for (const QString &name : names) {
        const bool off = QFileInfo::exists(folder(TypeAU, LocSystemDisabled) + '/' + name);
        const bool on = QFileInfo::exists(folder(TypeAU, LocSystemActive) + '/' + name);
        EXPECT_NE(off, on) << name.toStdString(); // in one place, never lost or doubled
        (off ? moved : left) << name;
    }
    EXPECT_FALSE(moved.isEmpty());
    ASSERT_FALSE(left.isEmpty());
    EXPECT_TRUE(context.main()->logText().endsWith("Stopped, not moved: " + left.join(", ") + "\n"))
        << context.main()->logText().toStdString();
}

} // namespace
} // namespace korvane
