#include "app/LaunchScript.h"

#include "core/FormatTable.h"
#include "core/Locations.h"
#include "core/RunParts.h"
#include "core/Texts.h"
#include "core/UserInterface.h"
#include "library/FormatManager.h"
#include "os/FileOperations.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace korvane {

namespace {

// The tool and its arguments as one sh command line. Options are our own words and stay bare;
// set names are quoted.
QString shellCommand(const QString &tool, const QStringList &arguments)
{
    QString command = LaunchScript::shellQuote(tool);
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        command += QLatin1Char(' ');
        command += i % 2 == 0 ? arguments.at(i) : LaunchScript::shellQuote(arguments.at(i));
    }
    return command;
}

// The inside of an AppleScript string literal.
QString appleScriptString(const QString &text)
{
    QString escaped;
    escaped.reserve(text.size());
    for (const QChar c : text) {
        if (c == u'\\' || c == u'"')
            escaped += QLatin1Char('\\');
        if (c == u'\n')
            escaped += QLatin1String("\\n");
        else if (c == u'\r')
            escaped += QLatin1String("\\r");
        else
            escaped += c;
    }
    return escaped;
}

} // namespace

LaunchScript::LaunchScript(const RunParts &run, const QList<FormatManager *> &managers,
                           const QString &bundle)
    : m_run(run), m_managers(managers), m_selectedFormats(QList<bool>(run.formats.count(), false)),
      m_bundle(bundle)
{
}

QString LaunchScript::bundlePath() const
{
    if (!m_bundle.isEmpty())
        return m_bundle;
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    return QDir::currentPath();
}

LaunchScript::Layout LaunchScript::platformLayout()
{
#ifdef Q_OS_MACOS
    return Layout::AppleScript;
#else
    return Layout::Shell;
#endif
}

QStringList LaunchScript::toolCandidates()
{
    // Installed, the two programs share a folder; in a build tree the window sits in src/gui and
    // the tool in src.
    QStringList candidates;
    if (QCoreApplication::instance()) {
        const QString here = QCoreApplication::applicationDirPath();
        candidates << here + QStringLiteral("/KorvaneCMD")
                   << QDir::cleanPath(here + QStringLiteral("/../KorvaneCMD"));
    }
#ifdef KORVANE_TOOL_INSTALLED
    candidates << QStringLiteral(KORVANE_TOOL_INSTALLED);
#endif
    return candidates;
}

QString LaunchScript::toolPath() const
{
    if (!m_toolPath.isEmpty())
        return QFileInfo(m_toolPath).absoluteFilePath();
    if (m_layout == Layout::AppleScript)
        return QFileInfo(bundlePath() + QStringLiteral("/Contents/MacOS/KorvaneCMD/KorvaneCMD"))
            .absoluteFilePath();
    for (const QString &candidate : toolCandidates()) {
        const QFileInfo tool(candidate);
        if (tool.isFile() && tool.isExecutable())
            return tool.canonicalFilePath(); // the script may run from any folder
    }
    return QString();
}

QString LaunchScript::toolProblem() const
{
    const QString tool = toolPath();
    const QFileInfo info(tool);
    // The AppleScript names the tool inside the bundle it is copied with.
    if (m_layout == Layout::AppleScript && m_toolPath.isEmpty())
        return QString();
    if (!tool.isEmpty() && info.isFile() && info.isExecutable())
        return QString();
    const QStringList looked = m_toolPath.isEmpty() ? toolCandidates() : QStringList{tool};
    return korvane::tr("KorvaneCMD was not found (looked at %1)")
        .arg(looked.join(QStringLiteral(", ")));
}

void LaunchScript::setHostCommand(const QString &commandLine)
{
    m_hostCommand = commandLine;
    build(false);
}

QString LaunchScript::shellQuote(const QString &word)
{
    QString quoted = word;
    quoted.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

std::optional<QStringList> LaunchScript::splitCommandLine(const QString &commandLine,
                                                          QString *problem)
{
    // Qt's splitCommand knows no backslash escapes and no single quotes; a line written for sh
    // would reach the host in other words than its author meant.
    const auto refuse = [problem](const char *why) -> std::optional<QStringList> {
        if (problem)
            *problem = QString::fromUtf8(why);
        return std::nullopt;
    };
    enum { Blank, Bare, Single, Double } state = Blank;
    QStringList words;
    QString word;
    for (qsizetype i = 0; i < commandLine.size(); ++i) {
        const QChar c = commandLine.at(i);
        const bool last = i + 1 == commandLine.size();
        switch (state) {
        case Blank:
        case Bare:
            if (c == u' ' || c == u'\t' || c == u'\n') {
                if (state == Bare)
                    words << std::exchange(word, QString());
                state = Blank;
                continue;
            }
            state = Bare;
            if (c == u'\'') {
                state = Single;
            } else if (c == u'"') {
                state = Double;
            } else if (c == u'\\') {
                if (last)
                    return refuse(
                        QT_TRANSLATE_NOOP("korvane", "The host command line ends in a backslash"));
                const QChar next = commandLine.at(++i);
                if (next != u'\n')
                    word += next;
                else if (word.isEmpty())
                    state = Blank; // a joined line, nothing of a word yet
            } else {
                word += c;
            }
            break;
        case Single:
            if (c == u'\'')
                state = Bare;
            else
                word += c;
            break;
        case Double:
            if (c == u'"') {
                state = Bare;
            } else if (c == u'\\' && !last
                       && QStringView(u"\"\\$`\n").contains(commandLine.at(i + 1))) {
                const QChar next = commandLine.at(++i);
                if (next != u'\n')
                    word += next;
            } else {
                word += c;
            }
            break;
        }
    }
    if (state == Single)
        return refuse(
            QT_TRANSLATE_NOOP("korvane", "The host command line has an unclosed single quote (')"));
    if (state == Double)
        return refuse(QT_TRANSLATE_NOOP("korvane",
                                        "The host command line has an unclosed double quote (\")"));
    if (state == Bare)
        words << word;
    return words;
}

QString LaunchScript::hostCommandProblem() const
{
    QString problem;
    splitCommandLine(m_hostCommand, &problem);
    return problem;
}

QString LaunchScript::appleScript(const QString &tool, const QStringList &arguments)
{
    QString text = QStringLiteral("-- KorvaneCMD launch script\n");
    text += QStringLiteral("\ntell application \"Finder\"\n");
    text += QStringLiteral(" do shell script \"");
    text += appleScriptString(shellCommand(tool, arguments));
    text += QStringLiteral("\"\n  tell application \"Logic Pro\"\n");
    text += QStringLiteral("    activate\n");
    text += QStringLiteral("  end tell\n");
    text += QStringLiteral("end tell\n");
    return text;
}

QString LaunchScript::shellScript(const QString &tool, const QStringList &arguments,
                                  const QString &hostCommand)
{
    QString text = QStringLiteral("#!/bin/sh\n# KorvaneCMD launch script\nset -e\n");
    text += shellCommand(tool, arguments) + QLatin1Char('\n');
    QString problem;
    const std::optional<QStringList> host = splitCommandLine(hostCommand, &problem);
    if (!host) {
        // Shown in the panel; such a script is not saved.
        text += QStringLiteral("# The host is not started: ") + problem + QLatin1Char('\n');
    } else if (!host->isEmpty()) {
        QStringList words;
        for (const QString &word : *host)
            words << shellQuote(word);
        text += QStringLiteral("exec ") + words.join(QLatin1Char(' ')) + QLatin1Char('\n');
    }
    return text;
}

bool LaunchScript::isFormatSelected(int type) const
{
    return type >= 0 && type < m_selectedFormats.size() && m_selectedFormats.at(type);
}

void LaunchScript::setFormatSelected(int type, bool selected)
{
    if (type < 0 || type >= m_selectedFormats.size() || m_selectedFormats.at(type) == selected)
        return;
    m_selectedFormats[type] = selected;
    emit selectedFormatsChanged();
}

void LaunchScript::setScript(const QString &text)
{
    m_script = text;
}

void LaunchScript::openWindow()
{
    build(false);
    emit windowShown();
}

void LaunchScript::rebuild()
{
    build(true);
}

void LaunchScript::build(bool tell)
{
    // The library the window shows, not whatever the tool would find by default.
    const Roots &roots = m_run.locations.roots();
    QStringList arguments = {QStringLiteral("--root"), roots.systemRoot, QStringLiteral("--home"),
                             roots.home};
    // Then always AU, RTAS, MAS, VST, whatever order the formats were chosen in.
    bool deselected = false;
    for (int type = 0; type < m_selectedFormats.size(); ++type) {
        if (!m_selectedFormats.at(type))
            continue;
        FormatManager *manager = m_managers.value(type);
        const QString set = manager ? manager->sets().selectedSet() : QString();
        if (!set.isNull()) {
            arguments << m_run.formats.at(type).commandLineFlag() << set;
            continue;
        }
        if (tell) {
            Alert alert;
            alert.title = korvane::tr("Scrip Generation");
            alert.messageText = korvane::tr(m_run.formats.at(type).texts.noSetMessage);
            alert.buttons = {korvane::tr("Ok")};
            m_run.ui.runAlert(alert);
        }
        m_selectedFormats[type] = false;
        deselected = true;
    }

    const QString tool = toolPath().isEmpty() ? QStringLiteral("KorvaneCMD") : toolPath();
    m_script = m_layout == Layout::AppleScript ? appleScript(tool, arguments)
                                               : shellScript(tool, arguments, m_hostCommand);
    if (const QString problem = toolProblem(); !problem.isEmpty())
        m_script.insert(m_script.indexOf(QLatin1Char('\n')) + 1,
                        (m_layout == Layout::Shell ? QStringLiteral("# ") : QStringLiteral("-- "))
                            + problem + QLatin1Char('\n'));
    if (deselected)
        emit selectedFormatsChanged();
    emit scriptChanged();
}

bool LaunchScript::refuseBrokenScript()
{
    QString problem = toolProblem();
    if (problem.isEmpty() && m_layout == Layout::Shell)
        problem = korvane::tr(hostCommandProblem().toUtf8().constData());
    if (problem.isEmpty())
        return false;
    Alert alert;
    alert.title = korvane::tr("Scrip Generation");
    alert.messageText = korvane::tr("Script not saved");
    alert.informativeText = problem;
    alert.buttons = {korvane::tr("Ok")};
    m_run.ui.runAlert(alert);
    return true;
}

void LaunchScript::saveScript()
{
    if (refuseBrokenScript())
        return;
    SavePanelRequest request;
    request.directory = m_run.locations.documentsFolder();
    request.fileName = m_layout == Layout::AppleScript ? QStringLiteral("untitled.applescript")
                                                       : QStringLiteral("untitled.sh");
    if (const std::optional<QString> path = m_run.ui.runSavePanel(request))
        saveScript(*path);
}

void LaunchScript::saveScript(const QString &path)
{
    if (refuseBrokenScript())
        return;
    // A half-written script is never left behind.
    FileError error;
    if (!m_run.files.writeFileAtomically(path, m_script.toUtf8(), &error)) {
        Alert alert;
        alert.title = korvane::tr("Scrip Generation");
        alert.messageText = korvane::tr("Script not saved");
        alert.informativeText = korvane::tr("Could not save %1: %2").arg(path, error.reason);
        alert.buttons = {korvane::tr("Ok")};
        m_run.ui.runAlert(alert);
        return;
    }
    if (m_layout == Layout::Shell) {
        const QFileDevice::Permissions readable = QFile::permissions(path);
        QFileDevice::Permissions permissions = readable;
        if (readable & QFileDevice::ReadOwner)
            permissions |= QFileDevice::ExeOwner | QFileDevice::ExeUser;
        if (readable & QFileDevice::ReadGroup)
            permissions |= QFileDevice::ExeGroup;
        if (readable & QFileDevice::ReadOther)
            permissions |= QFileDevice::ExeOther;
        QFile::setPermissions(path, permissions);
    }
}

} // namespace korvane
