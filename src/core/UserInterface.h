#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace korvane {

// A modal alert. Without addedButtons the first button is the default and the second the
// alternate; with addedButtons the buttons answer First, Second and Third in order.
// Every text is plain text and every implementation shows it as such, never as rich text or
// markup: messages carry file names, paths and text from the network.
struct Alert {
    enum Style { Warning = 0, Informational = 1, Critical = 2 };
    QString title; // window title; empty for the platform's default
    QString messageText;
    QString informativeText;
    QStringList buttons;
    bool addedButtons = false;
    Style style = Warning;
};

// The button pressed; None when the alert went without one.
enum class AlertAnswer { None, Default, Alternate, First, Second, Third };

// What the person decided about the plug-ins an opened set names that are not installed.
enum class MissingItemsAnswer {
    Ignore, // the set stays as it is; also closing the dialog any other way
    Remove, // the set is saved again without them
};

struct SavePanelRequest {
    QString directory; // expanded
    QString fileName;  // proposed name
    QStringList allowedTypes;
};

struct OpenPanelRequest {
    QString directory;        // expanded
    QStringList allowedTypes; // extensions; empty: any
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    bool canCreateDirectories = false;
};

// Everything a person answers or watches. The core calls only this; the GUI implements it with
// widgets, the command-line tool without prompts, tests with a script.
class UserInterface {
public:
    virtual ~UserInterface() = default;

    virtual AlertAnswer runAlert(const Alert &alert) = 0;
    virtual std::optional<QString> runSavePanel(const SavePanelRequest &request) = 0;
    virtual std::optional<QString> runOpenPanel(const OpenPanelRequest &request) = 0;
    virtual MissingItemsAnswer runMissingItems(const QString &list) = 0;

    // The progress panel: a title, an upper and a lower line, and a bar.
    virtual void progressBegin(const QString &title) = 0;
    virtual void progressText(const QString &upper) = 0;
    virtual void progressDetail(const QString &lower) = 0;
    virtual void progressValue(double value, double maximum) = 0;
    virtual void progressEnd() = 0;

    virtual void openUrl(const QUrl &url) = 0;
    virtual void beep() = 0;

    // Whether a person is there to answer. Where nobody is, a question that would be asked again
    // until the answer changes is asked once.
    virtual bool isInteractive() const { return true; }
    // Whether the person asked the long work in progress to stop; checked between plug-ins.
    virtual bool progressCancelled() { return false; }
};

// Nobody there: every alert takes its default button, panels are cancelled, missing items ignored.
class HeadlessUi : public UserInterface {
public:
    bool isInteractive() const override { return false; }
    AlertAnswer runAlert(const Alert &alert) override;
    std::optional<QString> runSavePanel(const SavePanelRequest &) override { return std::nullopt; }
    std::optional<QString> runOpenPanel(const OpenPanelRequest &) override { return std::nullopt; }
    MissingItemsAnswer runMissingItems(const QString &) override
    {
        return MissingItemsAnswer::Ignore;
    }
    void progressBegin(const QString &) override {}
    void progressText(const QString &) override {}
    void progressDetail(const QString &) override {}
    void progressValue(double, double) override {}
    void progressEnd() override {}
    void openUrl(const QUrl &) override {}
    void beep() override {}
};

} // namespace korvane
