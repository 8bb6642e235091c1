#pragma once

#include "managers/AUEffectWrapper.h"
#include "managers/FormatManager.h"

#include <memory>

namespace korvane {

// The Audio Units manager; also the special environment that tests one Audio Unit alone.
class LibraryLock;

class MyAdminObj : public FormatManager {
    Q_OBJECT
public:
    explicit MyAdminObj(const ManagerParts &parts);
    ~MyAdminObj() override;
    static MyAdminObj *getAUObj();

    void AUActivate() { apply(); }
    int findAUItemIndex(const QString &name, int itemID) const { return findRow(name, itemID); }
    bool isAudioUnit(const QString &name) const { return recognise(name); }
    void AURescan() { rescan(); }
    void AUGetInfo() { requestInfo(); }
    void AUBackup() { backup(); }
    void AUBackupRestore() { restoreBackup(); }

    // Special environment.
    bool createSpecialEnv(const PluginPtr &item);
    bool destroySpecialEnv();
    void getPluginList();
    QList<std::shared_ptr<AUEffectWrapper>> pluginList;
    bool bSpecialMode = false;

    // Dragging-destination messages: they log and tint the grid.
    int draggingEntered();
    void draggingExited();
    bool prepareForDragOperation();
    bool performDragOperation();
    void concludeDragOperation();
    int draggingSourceOperationMaskForLocal(bool local) const;
    bool isGridHighlighted() const { return m_gridBlue; }

private:
    bool m_gridBlue = false;
    // Held from the first plug-in moved aside until every one is back.
    std::unique_ptr<LibraryLock> m_soloLock;
};

} // namespace korvane
