// The Audio Units special environment (one plug-in examined alone, as the component registry sees
// it) and the dragging-destination messages of the Audio Units table.
#include "managers/MyAdminObj.h"

#include "app/AppServices.h"
#include "platform/FileOperations.h"
#include "platform/LibraryLock.h"
#include "platform/Locations.h"
#include "platform/SystemLog.h"
#include "platform/Texts.h"

namespace korvane {

namespace {

const quint32 kMusicDevice = 0x61756D75; // 'aumu', instruments
const quint32 kApple = 0x6170706C;       // 'appl', the operating system's own components

QString activePath(const Plugin &item)
{
    return QStringLiteral("%1/%2").arg(item.location(), item.name());
}

QString disabledPath(const Plugin &item)
{
    return QStringLiteral("%1 (Disabled)/%2").arg(item.location(), item.name());
}

} // namespace

bool MyAdminObj::createSpecialEnv(const PluginPtr &item)
{
    FileOperations &files = this->files();
    if (!bSpecialMode) {
        // Every Audio Unit moves aside and back: another mover at work meanwhile could lose one.
        auto lock =
            std::make_unique<LibraryLock>(files, LibraryLock::foldersOf(locations(), traits()));
        if (!lock->isLocked()) {
            services().addLogEntry(this, korvane::tr("Plug-ins not moved") + QStringLiteral(": ")
                                             + lock->failure() + QLatin1Char('\n'));
            return false;
        }
        m_soloLock = std::move(lock);
        bSpecialMode = true;
        // Flags and log stay as they are: the table still shows these plug-ins as active.
        for (const PluginPtr &plugin : items()) {
            if (plugin->isActive())
                files.move(activePath(*plugin), disabledPath(*plugin));
        }
    }
    // Only a copy this call made is removed again: when the move above failed, the active path
    // still holds the plug-in itself, and the copy (which never overwrites) fails.
    const bool copied =
        item && item->isActive() && files.copy(disabledPath(*item), activePath(*item));

    getPluginList();
    AppServices *services = &this->services();
    for (const std::shared_ptr<AUEffectWrapper> &wrapper : std::as_const(pluginList)) {
        const ComponentDescription *description = wrapper->getComponentDescription();
        if (description->componentManufacturer == kApple)
            continue;
        services->addLogEntry(this, korvane::tr("----- Plug-In Info -----\n"));
        services->addLogEntry(
            this, korvane::tr("Type: %s\n")
                      .replace(QLatin1String("%s"),
                               ComponentManager::fourCharString(description->componentType)));
    }

    if (copied)
        files.remove(activePath(*item));
    return bSpecialMode;
}

bool MyAdminObj::destroySpecialEnv()
{
    if (bSpecialMode) {
        FileOperations &files = this->files();
        for (const PluginPtr &plugin : items()) {
            if (plugin->isActive())
                files.move(disabledPath(*plugin), activePath(*plugin));
        }
    }
    bSpecialMode = false;
    m_soloLock.reset();
    return bSpecialMode;
}

void MyAdminObj::getPluginList()
{
    pluginList.clear();
    ComponentDescription description;
    description.componentType = kMusicDevice;
    std::optional<Component> component;
    const QStringList folders{locations().folderPath(traits(), LocSystemActive),
                              locations().folderPath(traits(), LocUserActive)};
    while (
        (component = ComponentManager::findNextComponent(files(), folders, component, description)))
        pluginList << std::make_shared<AUEffectWrapper>(*component);
}

int MyAdminObj::draggingEntered()
{
    systemLog(QStringLiteral("DraggingEntered"));
    m_gridBlue = true;
    return 1; // copy
}

void MyAdminObj::draggingExited()
{
    systemLog(QStringLiteral("draggingExited"));
    m_gridBlue = false;
}

bool MyAdminObj::prepareForDragOperation()
{
    systemLog(QStringLiteral("prepareForDrag"));
    return true;
}

bool MyAdminObj::performDragOperation()
{
    systemLog(QStringLiteral("performDrag"));
    return true;
}

void MyAdminObj::concludeDragOperation()
{
    systemLog(QStringLiteral("concludeDrag"));
}

int MyAdminObj::draggingSourceOperationMaskForLocal(bool) const
{
    return 16; // move
}

} // namespace korvane
