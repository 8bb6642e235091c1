#pragma once

#include "managers/TypeManager.h"

namespace korvane {

// The MAS manager.
class MyMASObj : public TypeManager {
    Q_OBJECT
public:
    explicit MyMASObj(const ManagerParts &parts);
    static MyMASObj *getMASObj();

    void MASActivate() { activate(); }
    int findMASItemIndex(const QString &name, int itemID) const
    {
        return findItemIndex(name, itemID);
    }
    bool isMASPlugIn(const QString &path) const { return recognise(path); }
    void MASRescan() { rescan(); }
    void MASGetInfo() { getInfo(); }
    void MASBackup() { backup(); }
    void MASBackupRestore() { backupRestore(); }
    // Creates the format's parent and plug-in folder, system-wide or the user's.
    void checkAndCreatePath(bool system);
};

} // namespace korvane
