#include "managers/MyVSTObj.h"

#include "platform/Locations.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyVSTObj::MyVSTObj() : TypeManager(formatTraits(TypeVST)) {}

MyVSTObj *MyVSTObj::getVSTObj()
{
    return SharedInstance<MyVSTObj>::get();
}

} // namespace korvane
