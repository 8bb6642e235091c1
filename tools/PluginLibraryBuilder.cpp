#include "PluginLibraryBuilder.h"

#include "codec/FinderInfo.h"
#include "codec/PropertyList.h"
#include "os/LocalFileOperations.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace korvane {

namespace MachO {
QByteArray ppc()
{
    return QByteArray::fromHex("feedface00000012");
}
QByteArray intel()
{
    return QByteArray::fromHex("cefaedfe07000000");
}
// A universal file's slice table entry: CPU type and subtype, offset, size and alignment.
static QByteArray slice(const char *cpuTypeAndSubtype)
{
    return QByteArray::fromHex(cpuTypeAndSubtype) + QByteArray::fromHex("00001000000010000000000c");
}
QByteArray universal2()
{
    return QByteArray::fromHex("cafebabe00000002") + slice("0000001200000000")
           + slice("0000000700000003");
}
QByteArray universal3()
{
    return QByteArray::fromHex("cafebabe00000003") + slice("0000001200000000")
           + slice("0000000700000003") + slice("0100000700000003");
}
QByteArray x86_64()
{
    return QByteArray::fromHex("cffaedfe07000001");
}
QByteArray arm64()
{
    return QByteArray::fromHex("cffaedfe0c000001");
}
QByteArray appleUniversal()
{
    return QByteArray::fromHex("cafebabe00000002") + slice("0100000700000003")
           + slice("0100000c00000000");
}
} // namespace MachO

namespace {

// Stands in for the rest of a load-command table, so readers never see a file of header only.
constexpr int kExecutablePadding = 56;

QString withExtension(const QString &name, const QString &extension)
{
    return name.endsWith(extension) ? name : name + extension;
}

QString baseName(const QString &name)
{
    const QString fileName = QFileInfo(name).fileName();
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? fileName.left(dot) : fileName;
}

bool writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(data) == data.size();
}

} // namespace

QString PluginLibraryBuilder::makeBundle(const QString &folder, const QString &name,
                                         const QByteArray &header, const QVariantMap &extraInfo,
                                         PlistFormat format, const QString &executable)
{
    QString bundle = folder + QLatin1Char('/') + name;
    QDir().mkpath(bundle + QStringLiteral("/Contents/MacOS"));

    QVariantMap info;
    if (!executable.isEmpty())
        info.insert(QStringLiteral("CFBundleExecutable"), executable);
    info.insert(QStringLiteral("CFBundleName"), baseName(name));
    info.insert(QStringLiteral("CFBundleVersion"), QStringLiteral("1.0"));
    for (auto it = extraInfo.cbegin(); it != extraInfo.cend(); ++it)
        info.insert(it.key(), it.value());
    const QString plist = bundle + QStringLiteral("/Contents/Info.plist");
    if (format == Binary)
        writeFile(plist, PropertyList::toBinary(info));
    else
        writePlist(plist, info);

    if (!executable.isEmpty()) {
        const QString path = bundle + QStringLiteral("/Contents/MacOS/") + executable;
        writeFile(path, header + QByteArray(kExecutablePadding, '\0'));
        QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOwner | QFile::ExeGroup
                                        | QFile::ExeOther);
    }
    return bundle;
}

QString PluginLibraryBuilder::makeFile(const QString &folder, const QString &name,
                                       const QString &typeCode, const QByteArray &data)
{
    QString path = folder + QLatin1Char('/') + name;
    QDir().mkpath(QFileInfo(path).path());
    writeFile(path, data);
    const QByteArray code = typeCode.toLatin1();
    if (code.size() == 4)
        FinderInfo::setFileType(path, qFromBigEndian<quint32>(code.constData()));
    return path;
}

QString PluginLibraryBuilder::makeFolder(const QString &path)
{
    QDir().mkpath(path);
    return path;
}

QString PluginLibraryBuilder::makeAudioUnit(const QString &folder, const QString &name,
                                            const QByteArray &header, PlistFormat format)
{
    const QString fileName = withExtension(name, QStringLiteral(".component"));
    const QVariantMap component{
        {QStringLiteral("type"), QStringLiteral("aumu")},
        {QStringLiteral("subtype"), QStringLiteral("Demo")},
        {QStringLiteral("manufacturer"), QStringLiteral("Acme")},
        {QStringLiteral("name"), QStringLiteral("Acme: ") + baseName(fileName)},
    };
    const QVariantMap extra{
        {QStringLiteral("CFBundlePackageType"), QStringLiteral("BNDL")},
        {QStringLiteral("AudioComponents"), QVariantList{component}},
    };
    return makeBundle(folder, fileName, header, extra, format);
}

QString PluginLibraryBuilder::makeVST(const QString &folder, const QString &name,
                                      const QByteArray &header, PlistFormat format)
{
    const QVariantMap extra{{QStringLiteral("CFBundlePackageType"), QStringLiteral("BNDL")}};
    return makeBundle(folder, withExtension(name, QStringLiteral(".vst")), header, extra, format);
}

QString PluginLibraryBuilder::makeRTAS(const QString &folder, const QString &name,
                                       const QByteArray &header, PlistFormat format)
{
    const bool dpm = name.endsWith(QLatin1String(".dpm"));
    const QString fileName = dpm ? name : withExtension(name, QStringLiteral(".rtas"));
    const QVariantMap extra{{QStringLiteral("CFBundlePackageType"),
                             dpm ? QStringLiteral("TDMw") : QStringLiteral("BNDL")}};
    return makeBundle(folder, fileName, header, extra, format);
}

QString PluginLibraryBuilder::makeMAS(const QString &folder, const QString &name,
                                      const QByteArray &header, PlistFormat format)
{
    const QVariantMap extra{
        {QStringLiteral("CFBundlePackageType"), QStringLiteral("BNDL")},
        {QStringLiteral("MotuPluginTypeUUID"),
         QStringLiteral("5D2E8C1A-7B43-4F0E-9A61-3C8B2D4E6F17")},
    };
    return makeBundle(folder, name, header, extra, format);
}

bool PluginLibraryBuilder::writePlist(const QString &path, const QVariant &root)
{
    LocalFileOperations disk;
    return PropertyList::writeXml(disk, path, root);
}

} // namespace korvane
