#include "managers/MyRTASObj.h"

#include "platform/FileOperations.h"
#include "platform/Locations.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyRTASObj::MyRTASObj() : TypeManager(formatTraits(TypeRTAS)) {}

MyRTASObj *MyRTASObj::getRTASObj()
{
    return SharedInstance<MyRTASObj>::get();
}

void MyRTASObj::checkAndCreatePath(bool system)
{
    FileOperations &files = FileOperations::current();
    // Whatever exists at a path is left alone, folder or not.
    const int loc = system ? LocSystemActive : LocUserActive;
    for (const QString &path : {digidesignParent(system), Locations::folder(TypeRTAS, loc)}) {
        const QString expanded = Locations::expand(path);
        if (!files.exists(expanded))
            files.createDirectory(expanded);
    }
}

} // namespace korvane
