#include "support/ScriptedUi.h"

namespace korvane {

QStringList ScriptedUi::alertMessages() const
{
    QStringList messages;
    for (const Alert &alert : alerts)
        messages << alert.messageText;
    return messages;
}

int ScriptedUi::runAlert(const Alert &alert)
{
    alerts << alert;
    if (!alertAnswers.isEmpty())
        return alertAnswers.dequeue();
    return alert.addedButtons ? AlertFirst : AlertDefault;
}

std::optional<QString> ScriptedUi::runSavePanel(const SavePanelRequest &request)
{
    savePanels << request;
    return savePanelAnswers.isEmpty() ? std::nullopt : savePanelAnswers.dequeue();
}

std::optional<QString> ScriptedUi::runOpenPanel(const OpenPanelRequest &request)
{
    openPanels << request;
    return openPanelAnswers.isEmpty() ? std::nullopt : openPanelAnswers.dequeue();
}

int ScriptedUi::runMissingItems(const QString &list)
{
    missingItemsLists << list;
    return missingItemsAnswers.isEmpty() ? 1 : missingItemsAnswers.dequeue();
}

} // namespace korvane
