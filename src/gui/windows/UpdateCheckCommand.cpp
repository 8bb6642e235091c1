#include "gui/windows/UpdateCheckCommand.h"

#include "app/UpdateCheck.h"

#include <QApplication>
#include <QCursor>

namespace korvane {

void UpdateCheckCommand::run(UserInterface &ui)
{
    UpdateCheck check(ui);
    QApplication::setOverrideCursor(QCursor(Qt::BusyCursor));
    const std::optional<QVariantMap> list = check.fetchVersionList();
    // Back to the arrow before a question is asked.
    QApplication::restoreOverrideCursor();
    check.report(list);
}

} // namespace korvane
