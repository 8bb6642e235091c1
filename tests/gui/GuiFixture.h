#pragma once

#include "PluginLibraryBuilder.h"
#include "app/AppController.h"
#include "app/Preferences.h"
#include "gui/main/FormatTab.h"
#include "gui/main/MainWindow.h"
#include "library/FormatManager.h"
#include "support/ContextTest.h"

#include <QCoreApplication>
#include <QTest>
#include <memory>

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

// The main window as a person opens it, one format's tab in front.
class WindowTest : public GuiTest {
protected:
    std::unique_ptr<MainWindow> window;
    FormatTab *page = nullptr;

    // Builds the controllers over what the test put on disk, then the window; the format's
    // manager.
    FormatManager *openWindow(int type)
    {
        makeContext();
        context->pref()->setDefaultType(type);
        context->prepareWindow();
        window = std::make_unique<MainWindow>(*context);
        window->show();
        window->startWhenRunning();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        QCoreApplication::processEvents();
        page = window->page(type);
        return context->manager(type);
    }
    void TearDown() override
    {
        window.reset();
        GuiTest::TearDown();
    }
};

} // namespace korvane
