#include "managers/MyMASObj.h"

#include "platform/FileOperations.h"
#include "platform/Locations.h"
#include "platform/SharedInstances.h"

namespace korvane {

MyMASObj::MyMASObj() : TypeManager(formatTraits(TypeMAS)) {}

MyMASObj *MyMASObj::getMASObj()
{
    return SharedInstance<MyMASObj>::get();
}

void MyMASObj::checkAndCreatePath(bool system)
{
    FileOperations &files = FileOperations::current();
    // The RTAS parent comes first, as it always has for MAS; whatever exists is left alone.
    const int loc = system ? LocSystemActive : LocUserActive;
    for (const QString &path : {digidesignParent(system), Locations::folder(TypeMAS, loc)}) {
        const QString expanded = Locations::expand(path);
        if (!files.exists(expanded))
            files.createDirectory(expanded);
    }
}

} // namespace korvane
