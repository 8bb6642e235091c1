#include "library/ComponentRegistry.h"

#include "codec/Bundle.h"
#include "os/FileOperations.h"

#include <QStringList>
#include <QVariant>

namespace korvane {

namespace {

constexpr int kInvalidComponentID = -3000;
constexpr int kMaxNameBytes = 255;

bool isComponentBundle(const QString &name)
{
    return name.endsWith(QLatin1String(".component"));
}

QVariantList audioComponents(const QString &bundlePath)
{
    const std::optional<QVariantMap> info = Bundle::infoDictionary(bundlePath);
    if (!info)
        return {};
    const QVariant components = info->value(QStringLiteral("AudioComponents"));
    return components.typeId() == QMetaType::QVariantList ? components.toList() : QVariantList();
}

// A four-character code as Info.plists write it (a string), or a number.
quint32 codeValue(const QVariant &value)
{
    if (value.typeId() == QMetaType::QString)
        return ComponentRegistry::fourCharCode(value.toString());
    bool ok = false;
    const qulonglong number = value.toULongLong(&ok);
    return ok ? quint32(number) : 0;
}

bool describe(const QVariant &entry, ComponentDescription *description)
{
    if (entry.typeId() != QMetaType::QVariantMap)
        return false;
    const QVariantMap map = entry.toMap();
    description->componentType = codeValue(map.value(QStringLiteral("type")));
    description->componentSubType = codeValue(map.value(QStringLiteral("subtype")));
    description->componentManufacturer = codeValue(map.value(QStringLiteral("manufacturer")));
    description->componentFlags = 0;
    description->componentFlagsMask = 0;
    return true;
}

bool matches(const ComponentDescription &component, const ComponentDescription &wanted)
{
    if (wanted.componentType && wanted.componentType != component.componentType)
        return false;
    if (wanted.componentSubType && wanted.componentSubType != component.componentSubType)
        return false;
    if (wanted.componentManufacturer
        && wanted.componentManufacturer != component.componentManufacturer)
        return false;
    return (component.componentFlags & wanted.componentFlagsMask)
           == (wanted.componentFlags & wanted.componentFlagsMask);
}

// The registered component bundles in registry order: the system folder before the user's, each
// by name. A bundle's components are the entries of its AudioComponents array, in order.
QStringList componentBundles(const FileOperations &files, const QStringList &folders)
{
    QStringList bundles;
    for (const QString &folder : folders) {
        for (const QString &name : files.directoryContents(folder)) {
            if (isComponentBundle(name))
                bundles << folder + QLatin1Char('/') + name;
        }
    }
    return bundles;
}

} // namespace

std::optional<Component> ComponentRegistry::findNext(const FileOperations &files,
                                                     const QStringList &folders,
                                                     const std::optional<Component> &after,
                                                     const ComponentDescription &description)
{
    // Only the bundles from the previous component on are read, so a whole enumeration reads
    // each Info.plist about once.
    bool passed = !after.has_value();
    for (const QString &bundle : componentBundles(files, folders)) {
        int first = 0;
        if (!passed) {
            if (bundle != after->bundlePath)
                continue;
            passed = true;
            first = after->index + 1;
        }
        const QVariantList entries = audioComponents(bundle);
        for (int i = first; i < entries.size(); ++i) {
            ComponentDescription found;
            if (describe(entries.at(i), &found) && matches(found, description))
                return Component{bundle, i};
        }
    }
    return std::nullopt;
}

int ComponentRegistry::info(const Component &component, ComponentDescription *description,
                            QByteArray *pascalName)
{
    const QVariantList entries = audioComponents(component.bundlePath);
    if (component.index < 0 || component.index >= entries.size())
        return kInvalidComponentID;
    ComponentDescription found;
    if (!describe(entries.at(component.index), &found))
        return kInvalidComponentID;
    if (description)
        *description = found;
    if (pascalName) {
        const QVariant name = entries.at(component.index).toMap().value(QStringLiteral("name"));
        QByteArray text =
            name.typeId() == QMetaType::QString ? name.toString().toUtf8() : QByteArray();
        if (text.size() > kMaxNameBytes)
            text.truncate(kMaxNameBytes);
        *pascalName = QByteArray(1, char(quint8(text.size()))) + text;
    }
    return 0;
}

quint32 ComponentRegistry::fourCharCode(const QString &text)
{
    const QByteArray bytes = text.toLatin1();
    if (text.size() != 4 || bytes.size() != 4)
        return 0;
    quint32 code = 0;
    for (char byte : bytes)
        code = (code << 8) | quint8(byte);
    return code;
}

QString ComponentRegistry::fourCharString(quint32 code)
{
    QByteArray bytes(4, '\0');
    for (int i = 0; i < 4; ++i)
        bytes[i] = char((code >> (8 * (3 - i))) & 0xFF);
    return QString::fromLatin1(bytes);
}

} // namespace korvane
