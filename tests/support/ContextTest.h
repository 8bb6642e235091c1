#pragma once

#include "app/AppContext.h"
#include "os/AllowAllAuthorization.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

#include <memory>

namespace korvane {

// Fresh roots, a scripted interface and the controllers over them, built on request as a program
// builds them before its windows load.
class ContextTest : public TestRoots {
protected:
    void TearDown() override
    {
        context.reset();
        TestRoots::TearDown();
    }

    // The first four rows: what the controller's tab and preference rules were written for.
    static FormatTable firstFour()
    {
        FormatTable formats;
        for (int type = TypeAU; type <= TypeVST; ++type)
            formats = formats.with(FormatTable::builtIn().at(type));
        return formats;
    }

    AppContext &makeContext(const FormatTable &formats = firstFour())
    {
        context.reset();
        context = std::make_unique<AppContext>(AppContext::Parts{.roots = roots(),
                                                                 .settings = settings,
                                                                 .formats = formats,
                                                                 .ui = &ui,
                                                                 .authorization = &allowAll,
                                                                 .prepareWindow = false});
        return *context;
    }

    ScriptedUi ui;
    AllowAllAuthorization allowAll;
    RunSettings settings; // what makeContext hands the run besides the roots
    std::unique_ptr<AppContext> context;
};

} // namespace korvane
