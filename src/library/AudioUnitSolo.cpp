#include "library/AudioUnitSolo.h"

#include "core/ActivityLog.h"
#include "core/Format.h"
#include "core/Locations.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "library/FormatManager.h"
#include "os/FileOperations.h"
#include "os/LibraryLock.h"

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
    return Format::disabledFolderOf(item.location()) + QLatin1Char('/') + item.name();
}

} // namespace

AudioUnitSolo::AudioUnitSolo(FormatManager &audioUnits) : m_audioUnits(audioUnits) {}

AudioUnitSolo::~AudioUnitSolo()
{
    end();
}

bool AudioUnitSolo::begin(const PluginPtr &item)
{
    FileOperations &files = m_audioUnits.files();
    ActivityLog &log = m_audioUnits.parts().log;
    if (!m_active) {
        // Every Audio Unit moves aside and back: another mover at work meanwhile could lose one.
        auto lock = std::make_unique<LibraryLock>(
            m_audioUnits.parts().run.locks, files,
            m_audioUnits.locations().pluginFolders(m_audioUnits.traits()),
            m_audioUnits.parts().run.lockWaitMs);
        if (!lock->isLocked()) {
            log.append(korvane::tr("Plug-ins not moved") + QStringLiteral(": ") + lock->failure()
                       + QLatin1Char('\n'));
            return false;
        }
        m_lock = std::move(lock);
        m_active = true;
        // Flags and records stay as they are: the table still shows these plug-ins as active.
        for (const PluginPtr &plugin : m_audioUnits.items()) {
            if (plugin->isActive())
                files.move(activePath(*plugin), disabledPath(*plugin));
        }
    }
    // Only a copy this call made is removed again: when the move above failed, the active path
    // still holds the plug-in itself, and the copy (which never overwrites) fails.
    const bool copied =
        item && item->isActive() && files.copy(disabledPath(*item), activePath(*item));

    for (const AudioUnitComponent &component : instruments()) {
        const ComponentDescription &description = component.description();
        if (description.componentManufacturer == kApple)
            continue;
        log.append(korvane::tr("----- Plug-In Info -----\n"));
        log.append(korvane::tr("Type: %s\n")
                       .replace(QLatin1String("%s"),
                                ComponentRegistry::fourCharString(description.componentType)));
    }

    if (copied)
        files.remove(activePath(*item));
    return m_active;
}

bool AudioUnitSolo::end()
{
    if (m_active) {
        FileOperations &files = m_audioUnits.files();
        for (const PluginPtr &plugin : m_audioUnits.items()) {
            if (plugin->isActive())
                files.move(disabledPath(*plugin), activePath(*plugin));
        }
    }
    m_active = false;
    m_lock.reset();
    return m_active;
}

QList<AudioUnitComponent> AudioUnitSolo::instruments() const
{
    QList<AudioUnitComponent> found;
    ComponentDescription description;
    description.componentType = kMusicDevice;
    std::optional<Component> component;
    const Locations &locations = m_audioUnits.locations();
    const QStringList folders{locations.folderPath(m_audioUnits.traits(), LocSystemActive),
                              locations.folderPath(m_audioUnits.traits(), LocUserActive)};
    while ((component =
                ComponentRegistry::findNext(m_audioUnits.files(), folders, component, description)))
        found << AudioUnitComponent(*component);
    return found;
}

} // namespace korvane
