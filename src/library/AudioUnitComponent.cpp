#include "library/AudioUnitComponent.h"

namespace korvane {

AudioUnitComponent::AudioUnitComponent(const Component &component)
{
    QByteArray name;
    if (ComponentRegistry::info(component, &m_description, &name) == 0)
        parseName(name);
}

void AudioUnitComponent::parseName(const QByteArray &pascalName)
{
    m_manufacturer.reset();
    m_name.reset();
    if (pascalName.isEmpty())
        return;
    // The length byte is signed: 128 and above read as negative, which counts as no name.
    const qint8 length = qint8(pascalName.at(0));
    if (length <= 0)
        return;
    const QByteArray text = pascalName.mid(1, length);
    const qsizetype colon = text.indexOf(':');
    if (colon < 0)
        return;
    m_manufacturer = QString::fromUtf8(text.left(colon));
    qsizetype start = colon + 1;
    while (start < text.size() && text.at(start) == ' ')
        ++start;
    m_name = start < text.size() ? QString::fromUtf8(text.mid(start)) : QString(QLatin1String(""));
}

} // namespace korvane
