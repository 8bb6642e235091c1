#include "managers/MyVSTObj.h"

#include "app/AppServices.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyVSTObj::MyVSTObj(const ManagerParts &parts)
    : TypeManager(parts.services.formats().at(TypeVST), parts)
{
}

MyVSTObj *MyVSTObj::getVSTObj()
{
    return SharedInstance<MyVSTObj>::get();
}

} // namespace korvane
