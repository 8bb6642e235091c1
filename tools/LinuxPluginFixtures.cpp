#include "LinuxPluginFixtures.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace korvane {

namespace {

bool insideSystemLib(const QString &path)
{
    const QString clean = QDir::cleanPath(path);
    return clean.startsWith(QLatin1String("/usr/lib/")) && !clean.contains(QLatin1String("/../"));
}

bool insideUsr(const QString &path)
{
    const QString clean = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    return clean == QLatin1String("/usr") || clean.startsWith(QLatin1String("/usr/"));
}

bool copyEntry(const QString &source, const QString &target)
{
    const QFileInfo info(source);
    if (info.isSymLink())
        return QFile::link(info.symLinkTarget(), target) || QFileInfo(target).isSymLink();
    if (info.isDir()) {
        if (!QDir().mkpath(target))
            return false;
        const QStringList names = QDir(source).entryList(QDir::AllEntries | QDir::NoDotAndDotDot
                                                         | QDir::Hidden | QDir::System);
        for (const QString &name : names) {
            if (!copyEntry(source + u'/' + name, target + u'/' + name))
                return false;
        }
        return true;
    }
    QFile::remove(target);
    return QFile::copy(source, target);
}

bool writeFile(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

} // namespace

bool LinuxPluginFixtures::systemHas(const QString &systemPath)
{
    return insideSystemLib(systemPath) && QFileInfo::exists(systemPath);
}

QString LinuxPluginFixtures::copyFromSystem(const QString &systemPath, const QString &root)
{
    const QString source = QDir::cleanPath(systemPath);
    const QString target = QDir::cleanPath(root + u'/' + source);
    if (!insideSystemLib(source) || insideUsr(target)
        || QDir::cleanPath(root) == QLatin1String("/"))
        return {};
    QDir().mkpath(QFileInfo(target).path());
    return copyEntry(source, target) ? target : QString();
}

QStringList LinuxPluginFixtures::copySystemFolder(const QString &systemFolder, const QString &root,
                                                  const QStringList &nameFilters)
{
    QStringList copies;
    if (!insideSystemLib(systemFolder + u'/'))
        return copies;
    const QStringList names =
        QDir(systemFolder)
            .entryList(nameFilters, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                       QDir::Name);
    for (const QString &name : names) {
        const QString copy = copyFromSystem(systemFolder + u'/' + name, root);
        if (!copy.isEmpty())
            copies.append(copy);
    }
    return copies;
}

QString LinuxPluginFixtures::vst2Cid(const QByteArray &fourCharacters, const QByteArray &name)
{
    // "VST", the four ID bytes, then the first nine bytes of the name in lower case.
    QByteArray bytes = QByteArray("VST") + fourCharacters.left(4);
    const QByteArray lower = name.toLower();
    for (int i = 0; i < 9; ++i)
        bytes += i < lower.size() ? lower[i] : '\0';
    return QString::fromLatin1(bytes.toHex().toUpper());
}

QByteArray LinuxPluginFixtures::moduleInfo(const QString &name, const QString &vendor,
                                           const QString &cid, const QByteArray &vst2Id)
{
    const QByteArray old = vst2Cid(vst2Id, name.toUtf8()).toLatin1();
    QByteArray text = R"({
  "Name": "@NAME@",
  "Version": "1.2.0.7",
  "Factory Info": {
    "Vendor": "@VENDOR@",
    "URL": "https://example.org",
    "E-Mail": "mailto:plugins@example.org",
    "Flags": {
      "Unicode": true,
      "Classes Discardable": false,
      "Component Non Discardable": false,
    },
  },
  "Compatibility": [
    {
      "New": "@CID@",
      "Old": [
        "@OLD@", // the VST 2 version
      ],
    },
  ],
  "Classes": [
    {
      "CID": "@CID@",
      "Category": "Audio Module Class",
      "Name": "@NAME@",
      "Vendor": "@VENDOR@",
      "Version": "1.2.0.7",
      "SDKVersion": "VST 3.7.9",
      "Sub Categories": [
        "Fx",
        "Dynamics",
      ],
      "Class Flags": 1,
      "Cardinality": 2147483647,
      "Snapshots": [
      ],
    },
    /* the editor, which hosts do not list */
    {
      "CID": "00112233445566778899AABBCCDDEEFF",
      "Category": "Component Controller Class",
      "Name": "@NAME@Controller",
      "Vendor": "@VENDOR@",
      "Version": "1.2.0.7",
      "SDKVersion": "VST 3.7.9",
      "Sub Categories": [
      ],
      "Class Flags": 0,
      "Cardinality": 2147483647,
      "Snapshots": [
      ],
    },
  ],
}
)";
    return text.replace("@NAME@", name.toUtf8())
        .replace("@VENDOR@", vendor.toUtf8())
        .replace("@CID@", cid.toUtf8())
        .replace("@OLD@", old);
}

QString LinuxPluginFixtures::makeVst3Bundle(const QString &folder, const QString &name,
                                            const QString &elfSource, const QByteArray &moduleInfo,
                                            const QStringList &architectures)
{
    if (insideUsr(folder))
        return {};
    QString bundle = folder + u'/' + name + QStringLiteral(".vst3");
    for (const QString &architecture : architectures) {
        const QString dir = bundle + QStringLiteral("/Contents/") + architecture;
        QDir().mkpath(dir);
        const QString binary = dir + u'/' + name + QStringLiteral(".so");
        QFile::remove(binary);
        if (!QFile::copy(elfSource, binary))
            return {};
    }
    if (!writeFile(bundle + QStringLiteral("/Contents/Resources/moduleinfo.json"), moduleInfo))
        return {};
    return bundle;
}

QString LinuxPluginFixtures::makeClap(const QString &folder, const QString &name,
                                      const QString &elfSource)
{
    if (insideUsr(folder))
        return {};
    QDir().mkpath(folder);
    const QString file = folder + u'/' + name + QStringLiteral(".clap");
    QFile::remove(file);
    return QFile::copy(elfSource, file) ? file : QString();
}

} // namespace korvane
