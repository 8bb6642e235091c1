#include "core/UndoHistory.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// A switch that records its own inverse on every change, as the managers' edits do.
struct Switch {
    UndoStack &undo;
    QString name;
    bool on = false;
    void toggle()
    {
        undo.registerUndo(this, [this] { toggle(); });
        on = !on;
        undo.setActionName(name);
    }
};

TEST(UndoHistoryTest, UndoRecordsTheRedoAndRedoTheUndo)
{
    UndoHistory history;
    UndoStack &undo = *history.stack();
    auto titles = [&] { return QStringList{history.undoTitle(), history.redoTitle()}; };
    history.undo(); // nothing to undo
    EXPECT_EQ(titles(), QStringList({"Undo", "Redo"}));

    Switch a{undo, "A"}, b{undo, "B"};
    a.toggle();
    b.toggle();
    history.undo();
    EXPECT_FALSE(b.on);
    EXPECT_EQ(titles(), QStringList({"Undo A", "Redo B"}));
    history.undo();
    history.redo(); // what a redo records must not drop the other redo step
    EXPECT_TRUE(a.on);
    EXPECT_EQ(titles(), QStringList({"Undo A", "Redo B"}));

    b.toggle(); // a new change clears what could be redone
    EXPECT_FALSE(undo.canRedo());
    // An inverse that names nothing still leaves the redo named after the step it undid.
    undo.registerUndo(nullptr, [&undo] { undo.registerUndo(nullptr, [] {}); });
    EXPECT_EQ(undo.undoText(), "Undo");
    undo.setActionName("C");
    undo.undo();
    EXPECT_EQ(undo.redoText(), "Redo C");

    a.toggle(); // removing a target drops its steps only
    undo.removeActionsOf(&a);
    EXPECT_EQ(undo.undoText(), "Undo B");
    undo.undo();
    EXPECT_FALSE(b.on || undo.canUndo());
}

} // namespace
} // namespace korvane
