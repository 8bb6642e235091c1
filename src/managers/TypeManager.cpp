#include "managers/TypeManager.h"

#include "managers/MyAdminObj.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "platform/Locations.h"

#include <algorithm>

namespace korvane {

TypeManager::TypeManager(const FormatTraits &traits)
    : fileName(QStringLiteral("Untitled")), m_traits(traits),
      m_columns{QStringLiteral("AUActive"), QStringLiteral("AUName"), QStringLiteral("AUGlobal"),
                QStringLiteral("AUGroup")},
      m_sortDescriptors{{QStringLiteral("AUName"), true, true}}
{
}

TypeManager::~TypeManager() = default;

TypeManager *TypeManager::forType(int type)
{
    switch (type) {
    case TypeAU:
        return MyAdminObj::getAUObj();
    case TypeRTAS:
        return MyRTASObj::getRTASObj();
    case TypeMAS:
        return MyMASObj::getMASObj();
    case TypeVST:
        return MyVSTObj::getVSTObj();
    default:
        return nullptr;
    }
}

void TypeManager::setApplyEnabled(bool enabled)
{
    if (pbActiveEnabled == enabled)
        return;
    pbActiveEnabled = enabled;
    emit applyEnabledChanged(enabled);
}

void TypeManager::setSetName(const QString &name)
{
    etName = name;
    emit setNameChanged(name);
}

void TypeManager::reloadTable()
{
    emit tableReloaded();
}

void TypeManager::selectSetIndex(int index)
{
    pbSetsIndex = index;
    emit setsChanged();
}

void TypeManager::selectRows(const QList<int> &rows, int lastSelected)
{
    QList<int> sorted = rows;
    if (lastSelected >= 0 && !sorted.contains(lastSelected))
        sorted << lastSelected;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    m_selectedRows = sorted;
    // Without a word on which came last, the last one listed stands for it.
    m_selectedRow = lastSelected >= 0 ? lastSelected : (rows.isEmpty() ? -1 : rows.last());
    emit selectionChanged();
}

void TypeManager::markActive(const AUItemPtr &item, bool active)
{
    item->setAUActive(active);
    item->checkObject(m_traits.type);
    checkLogForUpdate(item);
}

} // namespace korvane
