#pragma once

#include "PluginLibraryBuilder.h"
#include "app/AppController.h"
#include "library/FormatManager.h"
#include "support/ContextTest.h"

namespace korvane {

// The controllers as the program builds them, for a window to bind to.
class GuiTest : public ContextTest {
protected:
    // A plug-in's row in its manager's list, whatever the order.
    static int rowOf(const FormatManager &manager, const QString &name)
    {
        for (int row = 0; row < manager.rowCount(); ++row)
            if (manager.itemAt(row)->name() == name)
                return row;
        return -1;
    }
};

} // namespace korvane
