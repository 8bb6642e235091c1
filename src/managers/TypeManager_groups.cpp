// Groups within a format: the per-format groups file, assigning groups (undoable from the table)
// and the combo box that offers the global group names.
#include "managers/TypeManager.h"

#include "app/AppServices.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"

#include <QPointer>

namespace korvane {

QString TypeManager::groupsFilePath() const {
    return Locations::expand(Locations::dataFile(m_traits.groupsFile));
}

void TypeManager::saveGroups() {
    QVariantList pairs;
    for (const AUItemPtr &item : std::as_const(plugins))
        pairs << item->getAUName() << item->getAUGroup();
    AppServices *services = AppServices::getMainObj();
    services->createSupportFolder(); // a fresh home has none yet
    services->writeDataFile(groupsFilePath(), pairs, [](const QString &file) {
        return PropertyList::readArray(file).has_value();
    });
}

QString TypeManager::findGroup(const QVariantList &groups, const QString &name) {
    // The file is read from disk: anything but a string pair is passed over, never trusted.
    for (qsizetype i = 0; i + 1 < groups.size(); i += 2) {
        const QVariant &key = groups.at(i);
        if (key.typeId() != QMetaType::QString || key.toString() != name)
            continue;
        const QVariant &group = groups.at(i + 1);
        return group.typeId() == QMetaType::QString ? group.toString() : QString(QLatin1String(""));
    }
    return QStringLiteral("");
}

void TypeManager::changeGroup(const AUItemPtr &item, const QString &group) {
    if (!item)
        return;
    AppServices *services = AppServices::getMainObj();
    UndoManager *undo = services->getUndoManager();

    const QString previous = item->getAUGroup();
    QPointer<TypeManager> self(this);
    undo->registerUndo(this, [self, item, previous] {
        if (self)
            self->changeGroup(item, previous);
    });
    item->setAUGroup(group);
    if (!undo->isUndoing())
        undo->setActionName(
            QStringLiteral("%1 %2 for \"%3\"")
                .arg(QStringLiteral("setGroup"), item->getAUGroup(), item->getAUName()));
    if (undo->isUndoing() || undo->isRedoing())
        reloadTable();
    services->setUndoTitle();
    saveGroups();
}

void TypeManager::setGroup(const QString &menuTitle) {
    const QString group =
        menuTitle == QLatin1String("none") ? QString(QLatin1String("")) : menuTitle;
    for (int row : std::as_const(m_selectedRows)) {
        if (row >= 0 && row < plugins.size())
            plugins.at(row)->setAUGroup(group);
    }
    reloadTable();
    saveGroups();
}

int TypeManager::numberOfItemsInComboBoxCell() const {
    return int(AppServices::getMainObj()->getGroups().size());
}

QString TypeManager::comboBoxCellObjectValue(int index) const {
    return AppServices::getMainObj()->getGroups().value(index);
}

} // namespace korvane
