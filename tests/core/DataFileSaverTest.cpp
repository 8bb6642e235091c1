#include "core/DataFileSaver.h"

#include "codec/PropertyList.h"
#include "core/AppServices.h"
#include "support/ServicesFixture.h"

#include <QDir>
#include <functional>

namespace korvane {
namespace {

const QString kSupport = QStringLiteral("Library/Application Support/Korvane");

// The person at the screen, who may fix the folder before pressing Try Again.
class FixingUi : public ScriptedUi {
public:
    std::function<void()> beforeAnswer;
    AlertAnswer runAlert(const Alert &alert) override
    {
        if (beforeAnswer)
            beforeAnswer();
        return ScriptedUi::runAlert(alert);
    }
};

class DataFileSaverTest : public TestRoots {
protected:
    DataFileSaver saver(UserInterface &ui)
    {
        return DataFileSaver(disk(), ui, homePath("Documents"),
                             [this](const QString &line) { log << line.trimmed(); });
    }
    QString file() const { return homePath(kSupport + "/groups.plist"); }
    QStringList log;
};

TEST_F(DataFileSaverTest, AFailedWriteNamesTheFileAndWhyAndTryAgainWritesOnceTheFolderIsFixed)
{
    QDir().mkpath(homePath(kSupport));
    auto guard = std::make_unique<ImmutableGuard>(homePath(kSupport));
    if (!guard->ok())
        GTEST_SKIP() << "chattr +i not supported here";
    FixingUi ui;
    ui.beforeAnswer = [&] {
        if (ui.alerts.size() == 1)
            guard.reset(); // the second question comes after the folder was fixed
    };
    ui.alertAnswers << AlertAnswer::First << AlertAnswer::First; // Try Again, twice
    EXPECT_TRUE(saver(ui).write(file(), "<plist/>"));
    ASSERT_EQ(ui.alerts.size(), 2);
    const Alert &alert = ui.alerts.first();
    EXPECT_EQ(alert.messageText, "“groups.plist” could not be saved.");
    EXPECT_TRUE(alert.informativeText.startsWith("Could not save " + file() + ": "))
        << alert.informativeText.toStdString();
    EXPECT_EQ(alert.buttons, QStringList({"Try Again", "Save Elsewhere...", "Cancel"}));
    EXPECT_EQ(readText(file()), "<plist/>");
    EXPECT_EQ(log.size(), 2); // each failure in the log window too
}

TEST_F(DataFileSaverTest, SaveElsewhereKeepsACopyAndCancelAsksNoMoreForThatFileUntilItIsWritten)
{
    // No support folder, and a home where none can be made: the folder's failure is the reason.
    QDir().mkpath(homePath("Library"));
    ImmutableGuard guard(homePath("Library"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    ScriptedUi ui;
    const QString copy = homePath("Documents/groups copy.plist");
    ui.alertAnswers << AlertAnswer::Second << AlertAnswer::Third << AlertAnswer::Third;
    ui.savePanelAnswers << copy;
    DataFileSaver s = saver(ui);
    EXPECT_FALSE(s.write(file(), "<plist>1</plist>"));
    EXPECT_EQ(readText(copy), "<plist>1</plist>");
    ASSERT_EQ(ui.savePanels.size(), 1);
    EXPECT_EQ(ui.savePanels.first().directory, homePath("Documents"));
    EXPECT_EQ(ui.savePanels.first().fileName, "groups.plist");
    EXPECT_TRUE(ui.alerts.first().informativeText.contains("could not be made"));
    EXPECT_TRUE(log.last().startsWith("Saved a copy of " + file() + " as " + copy));

    EXPECT_FALSE(s.write(file(), "<plist>2</plist>")); // Cancel
    EXPECT_FALSE(s.write(file(), "<plist>3</plist>")); // logged, not asked again
    EXPECT_EQ(ui.alerts.size(), 2);
    EXPECT_TRUE(log.last().startsWith("Could not save " + file()));
}

// A save that comes while the question is open (a timer's, at start-up) used to put a second
// alert over the first; it waits for the answer instead, which settles it too.
TEST_F(DataFileSaverTest, AFailureWhileTheFolderIsAskedAboutWaitsForThatAnswer)
{
    QDir().mkpath(homePath(kSupport));
    auto guard = std::make_unique<ImmutableGuard>(homePath(kSupport));
    if (!guard->ok())
        GTEST_SKIP() << "chattr +i not supported here";
    const QString other = homePath(kSupport + "/content.plist");
    FixingUi ui;
    DataFileSaver s = saver(ui);
    bool nested = true;
    ui.beforeAnswer = [&] {
        if (ui.alerts.isEmpty()) {
            nested = s.write(file(), "<plist>newer</plist>") || s.write(other, "<plist/>");
            guard.reset(); // fixed before Try Again
        }
    };
    ui.alertAnswers << AlertAnswer::First; // Try Again
    EXPECT_TRUE(s.write(file(), "<plist>older</plist>"));
    EXPECT_FALSE(nested);
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(readText(file()), "<plist>newer</plist>"); // the newest bytes, not the asked-about
    EXPECT_EQ(readText(other), "<plist/>");

    // After Cancel, the folder's file that waited is only logged from then on, as its own was.
    guard = std::make_unique<ImmutableGuard>(homePath(kSupport));
    ui.alerts.clear();
    ui.beforeAnswer = [&] { s.write(other, "<plist>2</plist>"); };
    ui.alertAnswers << AlertAnswer::Third;
    EXPECT_FALSE(s.write(file(), "<plist>3</plist>"));
    ui.beforeAnswer = nullptr;
    EXPECT_FALSE(s.write(other, "<plist>4</plist>"));
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(readText(other), "<plist/>");
}

TEST_F(DataFileSaverTest, NobodyToAnswerIsToldOnceAndReadOnlyRunsWriteNothing)
{
    QDir().mkpath(homePath(kSupport));
    ImmutableGuard guard(homePath(kSupport));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    struct Nobody : ScriptedUi {
        bool isInteractive() const override { return false; }
    } ui;
    EXPECT_FALSE(saver(ui).write(file(), "<plist/>"));
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(ui.alerts.first().buttons, QStringList{"OK"});
}

// The group registry written at quit into a support folder someone made unwritable.
TEST_F(DataFileSaverTest, TheGroupRegistryAtQuitAsksInsteadOfLosingTheNewGroup)
{
    QDir().mkpath(homePath(kSupport));
    ScriptedUi ui;
    AppServices run(RunParts{locations(), disk(), ui, FormatTable::builtIn(), locks()});
    GroupRegistry &groups = run.groupRegistry();
    groups.addGroup();
    ImmutableGuard guard(homePath(kSupport));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i not supported here";
    ui.alertAnswers << AlertAnswer::Second;
    ui.savePanelAnswers << homePath("Documents/groups.plist");
    groups.save();
    ASSERT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(
        PropertyList::readArray(homePath("Documents/groups.plist")).value_or(QVariantList()).size(),
        groups.names().size());
    EXPECT_TRUE(run.log().text().contains("Could not save " + homePath(kSupport)));
}

} // namespace
} // namespace korvane
