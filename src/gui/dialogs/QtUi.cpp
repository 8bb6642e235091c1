#include "gui/dialogs/QtUi.h"

namespace korvane {

QtUi::QtUi(QObject *parent) : QObject(parent) {}

QtUi::~QtUi() = default;

int QtUi::runAlert(const Alert &alert)
{
    return alert.addedButtons ? AlertFirst : AlertDefault;
}

std::optional<QString> QtUi::runSavePanel(const SavePanelRequest &)
{
    return std::nullopt;
}

std::optional<QString> QtUi::runOpenPanel(const OpenPanelRequest &)
{
    return std::nullopt;
}

int QtUi::runMissingItems(const QString &)
{
    return 1;
}

void QtUi::progressBegin(const QString &) {}
void QtUi::progressText(const QString &) {}
void QtUi::progressDetail(const QString &) {}
void QtUi::progressValue(double, double) {}
void QtUi::progressEnd() {}
void QtUi::openUrl(const QUrl &) {}
void QtUi::beep() {}

bool QtUi::progressCancelled()
{
    return false;
}

} // namespace korvane
