#pragma once

#include "managers/TypeManager.h"

namespace korvane {

// The RTAS manager.
class MyRTASObj : public TypeManager {
    Q_OBJECT
public:
    explicit MyRTASObj(const ManagerParts &parts);
    static MyRTASObj *getRTASObj();

    void RTASActivate() { activate(); }
    int findRTASItemIndex(const QString &name, int itemID) const
    {
        return findItemIndex(name, itemID);
    }
    bool isRTASPlugIn(const QString &path) const { return recognise(path); }
    void RTASRescan() { rescan(); }
    void RTASGetInfo() { getInfo(); }
    void RTASBackup() { backup(); }
    void RTASBackupRestore() { backupRestore(); }
    // Creates the format's parent and plug-in folder, system-wide or the user's.
    void checkAndCreatePath(bool system);
};

} // namespace korvane
