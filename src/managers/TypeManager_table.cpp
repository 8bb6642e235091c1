// The plug-in table: cell values, undoable flag toggles, sorting, dragging out and installing
// dropped files.
#include "managers/TypeManager.h"

#include "app/AppServices.h"
#include "panels/MyInfoObj.h"
#include "platform/FileOperations.h"
#include "platform/Locations.h"
#include "platform/Texts.h"
#include "ui/UserInterface.h"

#include <QPointer>
#include <algorithm>

namespace korvane {

namespace {

const QString kActive = QStringLiteral("AUActive");
const QString kGlobal = QStringLiteral("AUGlobal");
const QString kGroup = QStringLiteral("AUGroup");

int compareValues(const QVariant &a, const QVariant &b, bool caseInsensitive)
{
    if (a.typeId() == QMetaType::Bool && b.typeId() == QMetaType::Bool)
        return int(a.toBool()) - int(b.toBool());
    if (a.typeId() == QMetaType::Int && b.typeId() == QMetaType::Int)
        return a.toInt() < b.toInt() ? -1 : (a.toInt() > b.toInt() ? 1 : 0);
    return QString::compare(a.toString(), b.toString(),
                            caseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive);
}

// The last component of a dropped path; a folder may arrive with a trailing separator.
QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace

QVariant TypeManager::objectValue(int row, const QString &identifier) const
{
    if (row < 0 || row >= plugins.size())
        return QVariant();
    return itemValue(*plugins.at(row), identifier);
}

QVariant TypeManager::itemValue(const AUItem &item, const QString &identifier)
{
    if (identifier == kActive)
        return item.getAUActive();
    if (identifier == kGlobal)
        return item.getAUGlobal();
    if (identifier == kGroup)
        return item.getAUGroup();
    if (identifier == QLatin1String("AUType"))
        return item.getPlattformIdent();
    // Any other column shows the item's accessor named get followed by the identifier.
    if (identifier == QLatin1String("AUName"))
        return item.getAUName();
    if (identifier == QLatin1String("AULocation"))
        return item.getAULocation();
    if (identifier == QLatin1String("AUIcon"))
        return item.getAUIcon();
    if (identifier == QLatin1String("Selected"))
        return item.getSelected();
    if (identifier == QLatin1String("ItemID"))
        return item.getItemID();
    if (identifier == QLatin1String("GroupID"))
        return item.getGroupID();
    if (identifier == QLatin1String("Plattform"))
        return item.getPlattform();
    if (identifier == QLatin1String("PlattformIdent"))
        return item.getPlattformIdent();
    return QVariant();
}

void TypeManager::setObjectValue(const QVariant &value, const QString &identifier, int row)
{
    if (row < 0 || row >= plugins.size())
        return;
    changeObject(plugins.at(row), identifier, value);
}

QString TypeManager::undoActionName(const AUItem &item, bool globalFlag) const
{
    const QString word =
        globalFlag ? (item.getAUGlobal() ? QStringLiteral("setGlobal") : QStringLiteral("setLocal"))
                   : (item.getAUActive() ? m_traits.activeOnWord : m_traits.activeOffWord);
    const QString name = item.getAUName();
    if (!m_traits.wordFirst)
        return QStringLiteral("%1 \"%2\"").arg(name, word);
    if (globalFlag)
        return QStringLiteral("%1 for \"%2\"").arg(word, name);
    return QStringLiteral("%1 \"%2\"").arg(word, name);
}

void TypeManager::changeObject(const AUItemPtr &item, const QString &identifier,
                               const QVariant &data)
{
    if (!item)
        return;
    AppServices *services = AppServices::getMainObj();
    UndoManager *undo = services->getUndoManager();

    if (identifier == kGroup) {
        changeGroup(item, data.toString());
        item->checkObject(m_traits.type);
        checkLogForUpdate(item);
        reloadTable();
        return;
    }
    if (identifier != kActive && identifier != kGlobal)
        return;

    // Every call toggles whatever value it is given, so the same call is its own inverse.
    QPointer<TypeManager> self(this);
    undo->registerUndo(this, [self, item, identifier, data] {
        if (self)
            self->changeObject(item, identifier, data);
    });
    const bool globalFlag = identifier == kGlobal;
    if (globalFlag)
        item->setAUGlobal(!item->getAUGlobal());
    else
        item->setAUActive(!item->getAUActive());
    if (!undo->isUndoing())
        undo->setActionName(undoActionName(*item, globalFlag));

    services->setUndoTitle();
    services->setRedoTitle();
    item->checkObject(m_traits.type);
    checkLogForUpdate(item);
    bChanged = pbSetsIndex > 0;
    reloadTable();
}

bool TypeManager::shouldSelectRow(int row)
{
    MyInfoObj *info = MyInfoObj::getInfo();
    if (info->isVisible())
        info->showInfo(row >= 0 && row < plugins.size() ? plugins.at(row) : AUItemPtr());
    return true;
}

void TypeManager::sortDescriptorsDidChange(const QList<SortDescriptor> &descriptors)
{
    m_sortDescriptors = descriptors;
    sortPlugins();
    reloadTable();
}

void TypeManager::sortPlugins()
{
    if (m_sortDescriptors.isEmpty())
        return;
    // Stable, and item IDs stay as the scan gave them: activation finds items by ID.
    const auto before = [this](const AUItemPtr &a, const AUItemPtr &b) {
        for (const SortDescriptor &descriptor : std::as_const(m_sortDescriptors)) {
            int order = compareValues(itemValue(*a, descriptor.key), itemValue(*b, descriptor.key),
                                      descriptor.caseInsensitive);
            if (!descriptor.ascending)
                order = -order;
            if (order != 0)
                return order < 0;
        }
        return false;
    };
    std::stable_sort(plugins.begin(), plugins.end(), before);
}

QStringList TypeManager::writeRows(const QList<int> &rows) const
{
    QStringList paths;
    for (int row : rows) {
        if (row >= 0 && row < plugins.size())
            paths << QStringLiteral("%1/%2").arg(plugins.at(row)->getAULocation(),
                                                 plugins.at(row)->getAUName());
    }
    return paths;
}

DropValidation TypeManager::validateDrop(int proposedRow, bool proposedOnRow,
                                         bool fromInsideApplication) const
{
    DropValidation validation{fromInsideApplication ? 0 : 4, proposedRow, proposedOnRow};
    if (proposedOnRow) {
        validation.row = proposedRow + 1;
        validation.onRow = false;
    }
    return validation;
}

bool TypeManager::acceptDrop(const QStringList &paths)
{
    UserInterface &ui = UserInterface::current();
    Alert alert;
    alert.style = Alert::Informational;
    alert.messageText = tr("Install Files");
    alert.informativeText = tr(m_traits.installInformative.toUtf8().constData());
    alert.buttons = {tr(m_traits.installFirstButton.toUtf8().constData()), tr("All Files"),
                     tr("Cancel")};
    alert.addedButtons = true;
    const int answer = ui.runAlert(alert);
    if (answer != AlertFirst && answer != AlertSecond)
        return false;
    const bool allFiles = answer == AlertSecond;

    ui.progressBegin(tr(m_traits.installProgressTitle.toUtf8().constData()));
    ui.progressDetail(QString());
    FileOperations &files = FileOperations::current();
    const int count = paths.size();
    for (int i = 0; i < count; ++i) {
        const QString &path = paths.at(i);
        const QString name = lastPathComponent(path);
        ui.progressText(path);
        ui.progressValue(i + 1, count);
        const bool recognised = recognise(m_traits.recognitionTakesFullPath ? path : name);
        if (!recognised && !allFiles)
            continue;
        const QString target =
            Locations::expand(QString(m_traits.installTarget).replace(QLatin1String("%@"), name));
        // A fresh account may have no plug-in folder yet; a drop should still install.
        AppServices::getMainObj()->createFolders(target);
        files.copy(path, target); // never overwrites; failures show in the rescan
    }
    reloadData();
    ui.progressEnd();
    return true;
}

} // namespace korvane
