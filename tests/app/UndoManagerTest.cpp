#include "app/UndoManager.h"
#include "app/AppServices.h"

#include "ServicesFixture.h"

using namespace korvane;

namespace {

// A switch that records its own inverse on every change, as the managers' edits do.
struct Switch {
    UndoManager &undo;
    QString name;
    bool on = false;
    void toggle()
    {
        undo.registerUndo(this, [this] { toggle(); });
        on = !on;
        undo.setActionName(name);
    }
};

} // namespace

class UndoManagerTest : public ServicesFixture {};

TEST_F(UndoManagerTest, UndoRecordsTheRedoAndRedoTheUndo)
{
    AppServices services(parts());
    UndoManager &undo = *services.getUndoManager();
    auto titles = [&] { return QStringList{services.undoTitle(), services.redoTitle()}; };
    services.undoAction(); // nothing to undo
    EXPECT_EQ(titles(), QStringList({"Undo", "Redo"}));

    Switch a{undo, "A"}, b{undo, "B"};
    a.toggle();
    b.toggle();
    services.undoAction();
    EXPECT_FALSE(b.on);
    EXPECT_EQ(titles(), QStringList({"Undo A", "Redo B"}));
    services.undoAction();
    EXPECT_EQ(services.undoTitle(), "Undo");
    services.redoAction(); // what a redo records must not drop the other redo step
    EXPECT_TRUE(a.on);
    EXPECT_EQ(titles(), QStringList({"Undo A", "Redo B"}));

    b.toggle(); // a new change clears what could be redone
    EXPECT_FALSE(undo.canRedo());
    // An inverse that names nothing still leaves the redo named after the step it undid.
    undo.registerUndo(nullptr, [&undo] { undo.registerUndo(nullptr, [] {}); });
    EXPECT_EQ(undo.undoMenuItemTitle(), "Undo");
    undo.setActionName("C");
    undo.undo();
    EXPECT_EQ(undo.redoMenuItemTitle(), "Redo C");
}

TEST_F(UndoManagerTest, RemovingATargetDropsItsStepsOnly)
{
    UndoManager undo;
    Switch a{undo, "A"}, b{undo, "B"};
    a.toggle();
    b.toggle();
    a.toggle();
    undo.removeAllActionsWithTarget(&a);
    EXPECT_EQ(undo.undoMenuItemTitle(), "Undo B");
    undo.undo();
    EXPECT_FALSE(b.on || undo.canUndo());
}
