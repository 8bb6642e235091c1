#pragma once

#include "managers/FormatManager.h"

namespace korvane {

// The RTAS manager.
class MyRTASObj : public FormatManager {
    Q_OBJECT
public:
    explicit MyRTASObj(const ManagerParts &parts);
    static MyRTASObj *getRTASObj();

    void RTASActivate() { apply(); }
    int findRTASItemIndex(const QString &name, int itemID) const { return findRow(name, itemID); }
    bool isRTASPlugIn(const QString &path) const { return recognise(path); }
    void RTASRescan() { rescan(); }
    void RTASGetInfo() { requestInfo(); }
    void RTASBackup() { backup(); }
    void RTASBackupRestore() { restoreBackup(); }
    // Creates the format's parent and plug-in folder, system-wide or the user's.
    void checkAndCreatePath(bool system);
};

} // namespace korvane
