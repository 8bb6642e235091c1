#pragma once

#include "privileged/NullAuthorizationBackend.h"
#include "shell/AppContext.h"
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

    AppContext &makeContext(const FormatTable &formats = FormatTable::builtIn())
    {
        context.reset();
        AppContext::Parts parts;
        parts.roots = roots();
        parts.formats = formats;
        parts.ui = &ui;
        parts.authorization = &allowAll;
        parts.awakeFromNib = false;
        context = std::make_unique<AppContext>(std::move(parts));
        return *context;
    }

    ScriptedUi ui;
    NullAuthorizationBackend allowAll;
    std::unique_ptr<AppContext> context;
};

} // namespace korvane
