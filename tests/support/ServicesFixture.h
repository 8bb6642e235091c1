#pragma once

#include "core/AppServices.h"
#include "core/FormatTable.h"
#include "support/ScriptedUi.h"
#include "support/TestRoots.h"

namespace korvane {

// Fresh roots, the local disk under them and a scripted person, as the application services of
// one run are handed them.
class ServicesFixture : public TestRoots {
protected:
    RunParts parts() { return RunParts{locations(), disk(), ui, FormatTable::builtIn(), locks()}; }
    ScriptedUi ui;
};

} // namespace korvane
