#pragma once

#include "PluginLibraryBuilder.h"
#include "panels/MyPrefObj.h"
#include "privileged/NullAuthorizationBackend.h"
#include "shell/AppContext.h"
#include "shell/MyMainObj.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <memory>

namespace korvane {

// Fresh roots, a scripted interface and the controllers over them, built on request as the
// program builds them before its windows load.
class GuiTest : public TestRoots {
protected:
    void TearDown() override
    {
        context.reset();
        TestRoots::TearDown();
    }

    AppContext &makeContext()
    {
        context.reset();
        AppContext::Parts parts;
        parts.roots = roots();
        parts.ui = &ui;
        parts.authorization = &allowAll;
        parts.awakeFromNib = false;
        context = std::make_unique<AppContext>(std::move(parts));
        return *context;
    }

    // The preferences as a person left them: the seeded file with these formats switched on.
    void switchOn(std::initializer_list<bool> on)
    {
        int type = 0;
        for (bool value : on)
            context->pref()->defaults()->setObject(context->formats().at(type++).prefix + "On",
                                                   value);
    }

    ScriptedUi ui;
    NullAuthorizationBackend allowAll;
    std::unique_ptr<AppContext> context;
};

} // namespace korvane
