#include "managers/MyVSTObj.h"

#include "app/AppServices.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyVSTObj::MyVSTObj(const ManagerParts &parts)
    : FormatManager(parts.services.formats().at(TypeVST), parts)
{
}

MyVSTObj *MyVSTObj::getVSTObj()
{
    return SharedInstance<MyVSTObj>::get();
}

} // namespace korvane
