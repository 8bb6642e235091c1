#include "library/UnsavedWork.h"

#include "core/ActivityLog.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/FormatManager.h"
#include "os/FileOperations.h"

#include <QFileInfo>

namespace korvane {

QString UnsavedWork::setTitle(const QString &path)
{
    return QFileInfo(path).completeBaseName();
}

bool UnsavedWork::settleMarks(FormatManager &manager)
{
    const int pending = manager.pendingCount();
    if (pending <= 0)
        return true;
    Alert alert;
    alert.messageText = pending == 1 ? korvane::tr("1 change not applied")
                                     : korvane::tr("%1 changes not applied").arg(pending);
    alert.informativeText = korvane::tr("Apply moves the marked %1 plug-ins now; Discard forgets "
                                        "the marks.")
                                .arg(manager.traits().tabLabel);
    alert.buttons = {korvane::tr("Apply"), korvane::tr("Discard"), korvane::tr("Cancel")};
    alert.addedButtons = true;
    switch (manager.ui().runAlert(alert)) {
    case AlertAnswer::First:
        manager.apply(); // system plug-ins through the rights mover too
        return true;
    case AlertAnswer::Second:
        return true;
    default:
        return false;
    }
}

bool UnsavedWork::settleSetEdits(SetController &sets, UserInterface &ui)
{
    if (!sets.isSetChanged() || sets.selectedSetIndex() < 1)
        return true;
    Alert alert;
    alert.messageText =
        korvane::tr("Save changes to the set “%1”?").arg(setTitle(sets.currentSetName()));
    alert.buttons = {korvane::tr("Save"), korvane::tr("Don't Save"), korvane::tr("Cancel")};
    alert.addedButtons = true;
    switch (ui.runAlert(alert)) {
    case AlertAnswer::First:
        return sets.saveSet();
    case AlertAnswer::Second:
        sets.forgetSetEdits();
        return true;
    default:
        return false;
    }
}

bool UnsavedWork::settle(FormatManager &manager)
{
    return settleSetEdits(manager.sets(), manager.ui()) && settleMarks(manager);
}

void UnsavedWork::reportSetNotSaved(ActivityLog &log, UserInterface &ui, const FileError &error)
{
    const QString line = korvane::tr("Could not save %1: %2").arg(error.path, error.reason);
    log.append(line + QLatin1Char('\n'));
    Alert alert;
    alert.messageText = korvane::tr("The set “%1” was not saved").arg(setTitle(error.path));
    alert.informativeText = line;
    alert.buttons = {korvane::tr("OK")};
    ui.runAlert(alert);
}

} // namespace korvane
