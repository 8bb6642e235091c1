#include "cli/CliUi.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// Nothing waits for a person: every alert takes its default, or the first of added buttons.
TEST(CliUiTest, AlertsTakeTheirDefaultAndProgressNeedsNoTerminal)
{
    CliUi ui; // standard error is no terminal: progress goes nowhere
    Alert error, added;
    error.messageText = "File operation error...";
    error.buttons = {"Go", "Stop"};
    added.buttons = {"Cancel", "Stop", "Go"};
    added.addedButtons = true;
    EXPECT_EQ(ui.runAlert(error), AlertAnswer::Default);
    EXPECT_EQ(ui.runAlert(added), AlertAnswer::First);
    EXPECT_EQ(ui.answeredAlerts(), QStringList({"File operation error... -> Go", " -> Cancel"}));
    ui.progressBegin("scan AudioUnits:");
    ui.progressValue(1, 25);
    ui.progressEnd();
}

} // namespace
} // namespace korvane
