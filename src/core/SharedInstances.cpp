#include "core/SharedInstances.h"

#include <QtGlobal>

namespace korvane {

void missingSharedInstance(const char *typeName)
{
    qFatal("Korvane: %s was asked for before an AppContext installed one", typeName);
}

} // namespace korvane
