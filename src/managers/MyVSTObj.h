#pragma once

#include "managers/TypeManager.h"

namespace korvane {

// The VST manager.
class MyVSTObj : public TypeManager {
    Q_OBJECT
public:
    explicit MyVSTObj(const ManagerParts &parts);
    static MyVSTObj *getVSTObj();

    void VSTActivate() { activate(); }
    int findVSTItemIndex(const QString &name, int itemID) const
    {
        return findItemIndex(name, itemID);
    }
    bool isVSTPlugIn(const QString &path) const { return recognise(path); }
    void VSTRescan() { rescan(); }
    void VSTGetInfo() { getInfo(); }
    void VSTBackup() { backup(); }
    void VSTBackupRestore() { backupRestore(); }
};

} // namespace korvane
