#pragma once

#include "library/ComponentRegistry.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace korvane {

// One registered component with its name split into manufacturer and plug-in.
class AudioUnitComponent {
public:
    // Reads the component's description and name from its bundle.
    explicit AudioUnitComponent(const Component &component);
    // The name parsing alone, on a length-prefixed name.
    void parseName(const QByteArray &pascalName);

    std::optional<QString> name() const { return m_name; }
    std::optional<QString> manufacturer() const { return m_manufacturer; }
    const ComponentDescription &description() const { return m_description; }

private:
    std::optional<QString> m_manufacturer;
    std::optional<QString> m_name;
    ComponentDescription m_description;
};

} // namespace korvane
