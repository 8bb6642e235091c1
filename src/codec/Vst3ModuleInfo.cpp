#include "codec/Vst3ModuleInfo.h"

#include <QJsonArray>
#include <QJsonObject>

namespace korvane {

namespace {

QString text(const QJsonObject &object, const char *key)
{
    const QJsonValue value = object.value(QLatin1String(key));
    return value.isString() ? value.toString() : QString();
}

QStringList texts(const QJsonValue &value)
{
    QStringList list;
    if (value.isString()) // a lone string where a list belongs
        list.append(value.toString());
    for (const QJsonValue item : value.toArray()) {
        if (item.isString())
            list.append(item.toString());
    }
    return list;
}

} // namespace

std::optional<quint32> Vst3ModuleInfo::vst2IdFromCid(const QString &cid)
{
    // The SDK's VST 2 form: "VST" (565354) for a processor or "VSE" (565345) for its controller,
    // the four ID bytes, then the first nine bytes of the name in lower case.
    if (cid.size() != 32
        || !(cid.startsWith(QLatin1String("565354"), Qt::CaseInsensitive)
             || cid.startsWith(QLatin1String("565345"), Qt::CaseInsensitive)))
        return std::nullopt;
    bool ok = false;
    const quint32 id = cid.mid(6, 8).toUInt(&ok, 16);
    if (!ok)
        return std::nullopt;
    return id;
}

QString Vst3ModuleInfo::OldId::vst2IdText() const
{
    if (!vst2Id)
        return {};
    QString code;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = char((*vst2Id >> shift) & 0xFF);
        if (c < 0x20 || c > 0x7E)
            return QStringLiteral("0x%1").arg(*vst2Id, 8, 16, QLatin1Char('0'));
        code += QLatin1Char(c);
    }
    return code;
}

QList<Vst3ModuleInfo::Class> Vst3ModuleInfo::audioModules() const
{
    QList<Class> modules;
    for (const Class &c : classes) {
        if (c.category == QLatin1String("Audio Module Class"))
            modules.append(c);
    }
    return modules;
}

std::optional<Vst3ModuleInfo> Vst3ModuleInfo::parse(QByteArrayView bytes, QString *error,
                                                    const Json5::Limits &limits)
{
    Json5::Error parseError;
    const QJsonValue root = Json5::parse(bytes, &parseError, limits);
    if (parseError.isError() || !root.isObject()) {
        if (error)
            *error = parseError.isError()
                         ? QStringLiteral("not JSON5: %1").arg(parseError.toString())
                         : QStringLiteral("not a module description: the top value is not an "
                                          "object");
        return std::nullopt;
    }
    const QJsonObject top = root.toObject();
    Vst3ModuleInfo info;
    info.name = text(top, "Name");
    info.version = text(top, "Version");
    const QJsonObject factory = top.value(QLatin1String("Factory Info")).toObject();
    info.vendor = text(factory, "Vendor");
    info.url = text(factory, "URL");
    info.email = text(factory, "E-Mail");
    for (const QJsonValue item : top.value(QLatin1String("Classes")).toArray()) {
        const QJsonObject object = item.toObject();
        Class c;
        c.cid = text(object, "CID");
        c.name = text(object, "Name");
        c.category = text(object, "Category");
        c.subCategories = texts(object.value(QLatin1String("Sub Categories")));
        c.vendor = text(object, "Vendor");
        c.version = text(object, "Version");
        c.sdkVersion = text(object, "SDKVersion");
        if (!c.cid.isEmpty() || !c.name.isEmpty())
            info.classes.append(c);
    }
    for (const QJsonValue item : top.value(QLatin1String("Compatibility")).toArray()) {
        const QJsonObject object = item.toObject();
        Compatibility entry;
        entry.newCid = text(object, "New");
        for (const QString &old : texts(object.value(QLatin1String("Old"))))
            entry.old.append(OldId{old, vst2IdFromCid(old)});
        if (!entry.newCid.isEmpty())
            info.compatibility.append(entry);
    }
    if (error)
        error->clear();
    return info;
}

std::optional<Vst3Architectures::Entry> Vst3Architectures::fromFolderName(const QString &name)
{
    static const struct {
        const char *folder;
        const char *architecture;
        const char *system;
    } known[] = {
        {"x86_64-linux", "x86_64", "Linux"},   {"aarch64-linux", "aarch64", "Linux"},
        {"i386-linux", "i386", "Linux"},       {"armv7l-linux", "armv7l", "Linux"},
        {"x86_64-win", "x86_64", "Windows"},   {"arm64-win", "arm64", "Windows"},
        {"arm64ec-win", "arm64ec", "Windows"}, {"x86-win", "x86", "Windows"},
    };
    for (const auto &k : known) {
        if (name == QLatin1String(k.folder))
            return Entry{name, QLatin1String(k.architecture), QLatin1String(k.system)};
    }
    return std::nullopt;
}

QList<Vst3Architectures::Entry> Vst3Architectures::fromFolderNames(const QStringList &names,
                                                                   bool hasMachO)
{
    QList<Entry> entries;
    for (const QString &name : names) {
        if (name == QLatin1String("MacOS")) {
            if (hasMachO)
                entries.append(Entry{name, QStringLiteral("macOS"), QStringLiteral("macOS")});
        } else if (const auto entry = fromFolderName(name)) {
            entries.append(*entry);
        }
    }
    return entries;
}

} // namespace korvane
