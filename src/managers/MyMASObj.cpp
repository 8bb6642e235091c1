#include "managers/MyMASObj.h"

#include "app/AppServices.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyMASObj::MyMASObj(const ManagerParts &parts)
    : FormatManager(parts.services.formats().at(TypeMAS), parts)
{
}

MyMASObj *MyMASObj::getMASObj()
{
    return SharedInstance<MyMASObj>::get();
}

void MyMASObj::checkAndCreatePath(bool system)
{
    createParentAndFolder(system);
}

} // namespace korvane
