#pragma once

#include "PluginLibraryBuilder.h"
#include "managers/TypeManager.h"
#include "panels/MyPrefObj.h"
#include "shell/MyMainObj.h"
#include "support/ContextTest.h"

namespace korvane {

// The controllers as the program builds them, for a window to bind to.
class GuiTest : public ContextTest {
protected:
    // The preferences as a person left them: the seeded file with these formats switched on.
    void switchOn(std::initializer_list<bool> on)
    {
        int type = 0;
        for (bool value : on)
            context->pref()->defaults()->setObject(context->formats().at(type++).prefix + "On",
                                                   value);
    }
    // A plug-in's row in its manager's list, whatever the order.
    static int rowOf(const TypeManager &manager, const QString &name)
    {
        for (int row = 0; row < manager.numberOfRowsInTableView(); ++row)
            if (manager.itemAt(row)->getAUName() == name)
                return row;
        return -1;
    }
};

} // namespace korvane
