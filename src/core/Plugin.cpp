#include "core/Plugin.h"

#include "codec/Bundle.h"
#include "codec/MachOArchitectures.h"
#include "codec/MachOHeader.h"
#include "codec/TypedStream.h"
#include "core/Format.h"

#include <QStringBuilder>

namespace korvane {

void Plugin::groupRemoved(int position)
{
    if (m_groupId == position)
        m_groupId = 0;
    else if (m_groupId > position)
        --m_groupId;
}

void Plugin::updateLocation(const Format &format, const QStringList &folders)
{
    setLocation(folders.value(locationCode(format)));
}

int Plugin::locationCode(const Format &format) const
{
    const bool inPair =
        m_pair >= 0 && m_pair < format.pairs.size() && format.pairs.at(m_pair).system == m_global;
    return Format::locationOf(inPair ? m_pair : format.firstPair(m_global), m_active);
}

void Plugin::setContent(const QStringList &entry)
{
    m_content = entry;
    m_hasContent = !entry.isEmpty();
}

int Plugin::contentCount() const
{
    return m_content.isEmpty() ? 0 : int(m_content.size() - 1);
}

QString Plugin::contentAt(int i) const
{
    return m_content.value(qsizetype(i) + 1);
}

void Plugin::addContent(const QString &entry)
{
    if (m_content.isEmpty())
        m_content.append(m_name);
    m_content.append(entry);
    // Added in the info panel, it moves with the first Apply, not only after a rescan.
    m_hasContent = true;
}

void Plugin::removeContent(int i)
{
    const qsizetype position = qsizetype(i) + 1;
    if (position < 1 || position >= m_content.size())
        return;
    m_content.removeAt(position);
    m_hasContent = contentCount() > 0;
}

void Plugin::replaceContent(const QString &entry, int i)
{
    const qsizetype position = qsizetype(i) + 1;
    if (position < 1 || position >= m_content.size())
        return;
    m_content[position] = entry;
}

void Plugin::detectArchitecture(const QString &path, ScanCache *cache)
{
    m_architectures.clear();
    // Whatever does not open as a bundle is taken for PowerPC (a plug-in of the classic Mac OS
    // was one file).
    if (!Bundle::canOpen(path, cache)) {
        m_architecture = MachOHeader::PPC;
        m_architectures << QStringLiteral("ppc");
        return;
    }
    const QString executable = Bundle::executableName(path, cache);
    if (executable.isEmpty()) {
        m_architecture = MachOHeader::Unknown;
        return;
    }
    // A missing executable, or one that is no plain file, gives no bytes and so Unknown. One read
    // takes the slice table of a universal file as well as the first eight bytes.
    const QByteArray bytes = MachOHeader::firstBytes(
        path % QLatin1String("/Contents/MacOS/") % executable, MachOArchitectures::BytesNeeded);
    m_architecture = MachOHeader::classify(bytes.left(8));
    m_architectures = MachOArchitectures::parse(bytes).architectures;
}

QStringList Plugin::architectures() const
{
    // A format whose files a scan reads says it there; the header test knows only bundles, and
    // takes an LV2 folder or a shared object for a classic Mac OS file.
    return m_metadata ? m_metadata->architectures : m_architectures;
}

QString Plugin::architecturesText() const
{
    return architecturesText(architectures());
}

QString Plugin::architecturesText(QStringList architectures)
{
    architectures.sort();
    return architectures.join(QStringLiteral(" + "));
}

bool Plugin::holds(int command) const
{
    const QStringList names = architectures();
    if (command == UniversalBinary)
        return names.size() > 1;
    for (const QString &name : names) {
        // A VST 3 bundle names its folders by architecture and system: "x86_64-win".
        const QStringView base = QStringView(name).left(name.indexOf(QLatin1Char('-')));
        const bool match = [&] {
            switch (command) {
            case PowerPC:
                return base.startsWith(u"ppc"); // ppc, ppc64, ELF's ppc64le
            case Intel32:
                return base == u"i386";
            case Intel64:
                return base == u"x86_64";
            case AppleSilicon:
                return base == u"arm64" || base == u"arm64e" || base == u"aarch64";
            default:
                return false;
            }
        }();
        if (match)
            return true;
    }
    return false;
}

QString Plugin::architectureName(int code)
{
    switch (code) {
    case MachOHeader::PPC:
        return QStringLiteral("PPC");
    case MachOHeader::Intel:
        return QStringLiteral("Intel");
    case MachOHeader::Universal:
        return QStringLiteral("Universal Binary");
    default:
        return QStringLiteral("Unknown");
    }
}

QStringList Plugin::encode() const
{
    return {m_name, m_location, m_global ? QStringLiteral("YES") : QStringLiteral("NO"),
            m_active ? QStringLiteral("YES") : QStringLiteral("NO")};
}

std::shared_ptr<Plugin> Plugin::decode(const QList<std::shared_ptr<ArchivedObject>> &objects)
{
    auto isString = [&objects](qsizetype i) {
        return i < objects.size() && objects.at(i) && objects.at(i)->isString();
    };
    if (!isString(0) || !isString(1))
        return nullptr;
    auto flag = [&](qsizetype i) {
        return isString(i) && objects.at(i)->string == QLatin1String("YES");
    };

    auto item = std::make_shared<Plugin>();
    item->setName(objects.at(0)->string);
    item->setLocation(objects.at(1)->string);
    item->setGlobal(flag(2));
    item->setActive(flag(3));
    return item;
}

} // namespace korvane
