#pragma once

#include "core/Plugin.h"
#include "library/AudioUnitComponent.h"

#include <QList>
#include <memory>

namespace korvane {

class FormatManager;
class LibraryLock;

// One Audio Unit examined alone, as a host's component registry would see it: every other active
// Audio Unit moves into its " (Disabled)" folder and back, the Audio Units folders locked all
// the while. The table keeps showing them as they were; going away puts them back.
class AudioUnitSolo {
public:
    explicit AudioUnitSolo(FormatManager &audioUnits);
    ~AudioUnitSolo();
    AudioUnitSolo(const AudioUnitSolo &) = delete;
    AudioUnitSolo &operator=(const AudioUnitSolo &) = delete;

    // Moves the active Audio Units aside (once, however often it is called), copies item back in
    // and logs the instruments the registry then finds; false when the folders could not be
    // locked. The copy is removed again before it returns.
    bool begin(const PluginPtr &item);
    // Moves the Audio Units back; false, as nothing is set aside any more.
    bool end();
    bool isActive() const { return m_active; }

    // The instruments in the active folders, system-wide first, as the registry lists them.
    QList<AudioUnitComponent> instruments() const;

private:
    FormatManager &m_audioUnits;
    bool m_active = false;
    // Held from the first plug-in moved aside until every one is back.
    std::unique_ptr<LibraryLock> m_lock;
};

} // namespace korvane
