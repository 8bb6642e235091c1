#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

class AppServices;
class FormatManager;

// The launch-script generator: a script that runs KorvaneCMD with the sets selected in the chosen
// formats' managers, then starts the host. On macOS an AppleScript that brings Logic Pro to the
// front; elsewhere a POSIX shell script that runs the host command line the user gave.
class LumoScript : public QObject {
    Q_OBJECT
public:
    enum class Layout { AppleScript, Shell };

    // The managers give their selected sets, by type index.
    LumoScript(AppServices &services, const QList<FormatManager *> &managers);
    static LumoScript *getLumoScript();

    // $KORVANE_BUNDLE, else the application's folder, else the current folder.
    static QString bundlePath();
    static Layout platformLayout();

    void openScriptWindow(); // builds silently, then shows the panel
    void changeArgument();   // the segments changed: rebuild, telling about types without a set
    void saveScript();       // asks for a file name, then savePanelDidEnd
    void savePanelDidEnd(int returnCode, const QString &path);

    // sctrlType: one independently selectable segment per format, by type index.
    bool isSegmentSelected(int segment) const;
    void setSegmentSelected(int segment, bool selected); // state only, as a click leaves it
    QString script() const { return teScript; }
    void setScript(const QString &text); // the user edited the text view
    bool isWindowVisible() const { return m_visible; }

    Layout layout() const { return m_layout; }
    void setLayout(Layout layout) { m_layout = layout; }
    // The KorvaneCMD the script runs, absolute: the one set here, else the one inside the bundle
    // (AppleScript) or beside the running program (shell).
    QString toolPath() const;
    void setToolPath(const QString &path) { m_toolPath = path; }
    // The shell script's host: a command line run once the sets are applied; empty applies only.
    QString hostCommand() const { return m_hostCommand; }
    void setHostCommand(const QString &commandLine);

    // The script texts; arguments alternate between an option of the tool and its set name.
    static QString appleScript(const QString &tool, const QStringList &arguments);
    static QString shellScript(const QString &tool, const QStringList &arguments,
                               const QString &hostCommand);
    // One word for sh, whatever it holds: single quotes, each ' written as '\''.
    static QString shellQuote(const QString &word);
    // A command line split into words the way a POSIX shell splits a simple command, but with
    // nothing expanded and nothing run: blanks separate words; '...' keeps what it holds; "..."
    // keeps what it holds but takes a backslash before " \ $ ` or a line break as an escape;
    // elsewhere a backslash keeps the next character (before a line break it joins the lines).
    // nullopt for an unclosed quote or a final backslash, with the reason in English.
    static std::optional<QStringList> splitCommandLine(const QString &commandLine,
                                                       QString *problem = nullptr);
    // Why the host command line cannot be used; empty when it can.
    QString hostCommandProblem() const;

signals:
    void scriptChanged();
    void segmentsChanged();
    void windowShown();

private:
    void build(bool tell);
    // Tells the person that a script with a broken host command line is not saved; true then.
    bool refuseBrokenHost();

    AppServices &m_services;
    QList<FormatManager *> m_managers;
    QList<bool> sctrlType; // by type index
    QString teScript;
    bool m_visible = false;
    Layout m_layout = platformLayout();
    QString m_toolPath;
    QString m_hostCommand;
};

} // namespace korvane
