#include "managers/MyAdminObj.h"

#include "platform/LibraryLock.h"

#include "app/AppServices.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyAdminObj::MyAdminObj(const ManagerParts &parts)
    : FormatManager(parts.services.formats().at(TypeAU), parts)
{
}

MyAdminObj::~MyAdminObj() = default;

MyAdminObj *MyAdminObj::getAUObj()
{
    return SharedInstance<MyAdminObj>::get();
}

} // namespace korvane
