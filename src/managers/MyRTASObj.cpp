#include "managers/MyRTASObj.h"

#include "app/AppServices.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyRTASObj::MyRTASObj(const ManagerParts &parts)
    : FormatManager(parts.services.formats().at(TypeRTAS), parts)
{
}

MyRTASObj *MyRTASObj::getRTASObj()
{
    return SharedInstance<MyRTASObj>::get();
}

void MyRTASObj::checkAndCreatePath(bool system)
{
    createParentAndFolder(system);
}

} // namespace korvane
