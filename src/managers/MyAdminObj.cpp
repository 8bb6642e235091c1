#include "managers/MyAdminObj.h"

#include "platform/Locations.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyAdminObj::MyAdminObj() : TypeManager(formatTraits(TypeAU)) {}

MyAdminObj *MyAdminObj::getAUObj()
{
    return SharedInstance<MyAdminObj>::get();
}

} // namespace korvane
