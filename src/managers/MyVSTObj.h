#pragma once

#include "managers/FormatManager.h"

namespace korvane {

// The VST manager.
class MyVSTObj : public FormatManager {
    Q_OBJECT
public:
    explicit MyVSTObj(const ManagerParts &parts);
    static MyVSTObj *getVSTObj();

    void VSTActivate() { apply(); }
    int findVSTItemIndex(const QString &name, int itemID) const { return findRow(name, itemID); }
    bool isVSTPlugIn(const QString &path) const { return recognise(path); }
    void VSTRescan() { rescan(); }
    void VSTGetInfo() { requestInfo(); }
    void VSTBackup() { backup(); }
    void VSTBackupRestore() { restoreBackup(); }
};

} // namespace korvane
