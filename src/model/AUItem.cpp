#include "model/AUItem.h"

#include "app/AppServices.h"
#include "platform/Bundle.h"
#include "platform/FormatTable.h"
#include "platform/Locations.h"
#include "platform/TypedStream.h"

#include <QStringBuilder>

#include <climits>

namespace korvane {

void AUItem::setAUName(const QString &name)
{
    AUName = name;
    checkContent();
}

void AUItem::initAUIcon()
{
    AUIcon = AULocation % QLatin1Char('/') % AUName;
}

void AUItem::setAUGroup(const QString &group)
{
    const qsizetype index = m_registry ? m_registry->getGroups().indexOf(group) : -1;
    // The list answers "not found" with the largest positive int, which the sign test lets through:
    // an unknown name is kept under that ID.
    const int found = index < 0 ? INT_MAX : int(index);
    if (found < 0) {
        AUGroup = QString();
        nGroupID = 0;
    } else {
        AUGroup = group;
        nGroupID = found;
    }
}

QString AUItem::getAUGroup() const
{
    // Read through the list so a renamed group renames its members; a stale position is no group.
    if (!m_registry)
        return QString();
    const QStringList &groups = m_registry->getGroups();
    if (nGroupID < 0 || nGroupID >= groups.size())
        return QString();
    return groups.at(nGroupID);
}

void AUItem::checkObject(int type)
{
    const Format *format = m_registry ? m_registry->formats().find(type) : nullptr;
    if (!format)
        return;
    setAULocation(m_registry->locations().folderPath(*format, locationCode(bAUGlobal, bAUActive)));
}

void AUItem::checkObject(const std::array<QString, 4> &folders)
{
    setAULocation(folders[size_t(locationCode(bAUGlobal, bAUActive))]);
}

void AUItem::checkContent()
{
    const std::optional<QStringList> content =
        m_registry ? m_registry->getContentForKey(AUName) : std::nullopt;
    if (content && !content->isEmpty()) {
        bContent = true;
        pContent = *content;
    } else {
        bContent = false;
        pContent.clear();
    }
}

int AUItem::getContentMaxIndex() const
{
    return pContent.isEmpty() ? 0 : int(pContent.size() - 1);
}

QString AUItem::getContentByIndex(int i) const
{
    return pContent.value(qsizetype(i) + 1);
}

void AUItem::addContent(const QString &entry)
{
    if (pContent.isEmpty())
        pContent.append(AUName);
    pContent.append(entry);
    saveContent();
}

void AUItem::removeContent(int i)
{
    const qsizetype position = qsizetype(i) + 1;
    if (position < 1 || position >= pContent.size())
        return;
    pContent.removeAt(position);
    saveContent();
}

void AUItem::replaceContent(const QString &entry, int i)
{
    const qsizetype position = qsizetype(i) + 1;
    if (position < 1 || position >= pContent.size())
        return;
    pContent[position] = entry;
    saveContent();
}

void AUItem::saveContent()
{
    if (m_registry)
        m_registry->saveContent(pContent);
}

void AUItem::setPlattform(const QString &path)
{
    // Whatever does not open as a bundle is taken for PowerPC.
    if (!Bundle::canOpen(path)) {
        nPlattform = MachOHeader::PPC;
        return;
    }
    const QString executable = Bundle::executableName(path);
    if (executable.isEmpty()) {
        nPlattform = MachOHeader::Unknown;
        return;
    }
    // A missing executable, or one that is no plain file, gives no bytes and so Unknown.
    nPlattform = MachOHeader::classify(
        MachOHeader::firstBytes(path % QLatin1String("/Contents/MacOS/") % executable, 8));
}

QString AUItem::getPlattformIdent() const
{
    return plattformIdent(nPlattform);
}

QString AUItem::plattformIdent(int code)
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

QStringList AUItem::encodeWithCoder() const
{
    return {AUName, AULocation, bAUGlobal ? QStringLiteral("YES") : QStringLiteral("NO"),
            bAUActive ? QStringLiteral("YES") : QStringLiteral("NO")};
}

std::shared_ptr<AUItem> AUItem::initWithCoder(const QList<std::shared_ptr<ArchivedObject>> &objects,
                                              AppServices *registry)
{
    auto isString = [&objects](qsizetype i) {
        return i < objects.size() && objects.at(i) && objects.at(i)->isString();
    };
    if (!isString(0) || !isString(1))
        return nullptr;
    auto flag = [&](qsizetype i) {
        return isString(i) && objects.at(i)->string == QLatin1String("YES");
    };

    auto item = std::make_shared<AUItem>(registry);
    item->setAUName(objects.at(0)->string);
    item->setAULocation(objects.at(1)->string);
    item->setAUGlobal(flag(2));
    item->setAUActive(flag(3));
    return item;
}

} // namespace korvane
