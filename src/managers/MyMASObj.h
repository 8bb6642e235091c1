#pragma once

#include "managers/FormatManager.h"

namespace korvane {

// The MAS manager.
class MyMASObj : public FormatManager {
    Q_OBJECT
public:
    explicit MyMASObj(const ManagerParts &parts);
    static MyMASObj *getMASObj();

    void MASActivate() { apply(); }
    int findMASItemIndex(const QString &name, int itemID) const { return findRow(name, itemID); }
    bool isMASPlugIn(const QString &path) const { return recognise(path); }
    void MASRescan() { rescan(); }
    void MASGetInfo() { requestInfo(); }
    void MASBackup() { backup(); }
    void MASBackupRestore() { restoreBackup(); }
    // Creates the format's parent and plug-in folder, system-wide or the user's.
    void checkAndCreatePath(bool system);
};

} // namespace korvane
