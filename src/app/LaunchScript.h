#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace korvane {

class FormatManager;
struct RunParts;

// The launch-script generator: a script that runs KorvaneCMD with the sets selected in the chosen
// formats' managers, then starts the host. On macOS an AppleScript that brings Logic Pro to the
// front; elsewhere a POSIX shell script that runs the host command line the user gave.
class LaunchScript : public QObject {
    Q_OBJECT
public:
    enum class Layout { AppleScript, Shell };

    // The managers give their selected sets, by type index; bundle is the run's KORVANE_BUNDLE.
    LaunchScript(const RunParts &run, const QList<FormatManager *> &managers,
                 const QString &bundle = QString());

    // The run's bundle, else the application's folder, else the current folder.
    QString bundlePath() const;
    static Layout platformLayout();

    void openWindow(); // builds silently, then shows the panel
    void rebuild();    // the formats chosen changed: rebuild, telling about formats without a set
    void saveScript(); // asks for a file name, then saveScript(path)
    void saveScript(const QString &path);

    // The formats whose selected sets the script applies, each chosen on its own, by type index.
    bool isFormatSelected(int type) const;
    void setFormatSelected(int type, bool selected); // state only, as a click leaves it
    QString script() const { return m_script; }
    void setScript(const QString &text); // the user edited the text view

    Layout layout() const { return m_layout; }
    void setLayout(Layout layout) { m_layout = layout; }
    // The KorvaneCMD the script runs, absolute: the one set here, else the one inside the bundle
    // (AppleScript), else the first of toolCandidates that is a program, its links resolved;
    // empty when none is.
    QString toolPath() const;
    // Beside the running program, in the build tree beside its folder, installed.
    static QStringList toolCandidates();
    // Why no script can be saved for want of the tool; empty when it is there.
    QString toolProblem() const;
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
    void selectedFormatsChanged();
    void windowShown();

private:
    void build(bool tell);
    // Tells the person that a script without its tool or with a broken host command line is not
    // saved; true then.
    bool refuseBrokenScript();

    const RunParts &m_run;
    QList<FormatManager *> m_managers;
    QList<bool> m_selectedFormats; // by type index
    QString m_script;
    Layout m_layout = platformLayout();
    QString m_toolPath;
    QString m_bundle;
    QString m_hostCommand;
};

} // namespace korvane
