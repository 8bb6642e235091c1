#pragma once

#include "core/UserInterface.h"

#include <QList>
#include <QQueue>
#include <QStringList>
#include <QUrl>
#include <type_traits>

namespace korvane {

// Answers from queues and records everything asked of it, like a person at the screen.
// An alert with no queued answer gets its default (Default, or First with added buttons).
class ScriptedUi : public UserInterface {
public:
    QQueue<AlertAnswer> alertAnswers;
    QQueue<std::optional<QString>> savePanelAnswers; // empty queue: cancel
    QQueue<std::optional<QString>> openPanelAnswers;
    QQueue<MissingItemsAnswer> missingItemsAnswers; // empty queue: Ignore

    QList<Alert> alerts;
    QList<SavePanelRequest> savePanels;
    QList<OpenPanelRequest> openPanels;
    QStringList missingItemsLists;
    QStringList progressTexts;   // every upper line shown, in order
    QStringList progressDetails; // every lower line shown
    QList<double> progressValues;
    QStringList progressTitles;
    int progressEnds = 0;
    QList<QUrl> openedUrls;
    int beeps = 0;

    // The message texts of the alerts shown, in order.
    QStringList alertMessages() const
    {
        QStringList messages;
        for (const Alert &alert : alerts)
            messages << alert.messageText;
        return messages;
    }

    AlertAnswer runAlert(const Alert &alert) override
    {
        return alerts << alert,
               next(alertAnswers, alert.addedButtons ? AlertAnswer::First : AlertAnswer::Default);
    }
    std::optional<QString> runSavePanel(const SavePanelRequest &request) override
    {
        return savePanels << request, next(savePanelAnswers, {});
    }
    std::optional<QString> runOpenPanel(const OpenPanelRequest &request) override
    {
        return openPanels << request, next(openPanelAnswers, {});
    }
    MissingItemsAnswer runMissingItems(const QString &list) override
    {
        return missingItemsLists << list, next(missingItemsAnswers, MissingItemsAnswer::Ignore);
    }
    void progressBegin(const QString &title) override { progressTitles << title; }
    void progressText(const QString &upper) override { progressTexts << upper; }
    void progressDetail(const QString &lower) override { progressDetails << lower; }
    void progressValue(double value, double) override { progressValues << value; }
    void progressEnd() override { ++progressEnds; }
    void openUrl(const QUrl &url) override { openedUrls << url; }
    void beep() override { ++beeps; }

private:
    template <typename T> static T next(QQueue<T> &answers, std::type_identity_t<T> otherwise)
    {
        return answers.isEmpty() ? otherwise : answers.dequeue();
    }
};

} // namespace korvane
