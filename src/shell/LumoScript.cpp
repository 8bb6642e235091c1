#include "shell/LumoScript.h"

#include "app/AppServices.h"
#include "managers/FormatManager.h"
#include "platform/FileOperations.h"
#include "platform/FormatTable.h"
#include "platform/Locations.h"
#include "platform/SharedInstances.h"
#include "platform/Texts.h"
#include "ui/UserInterface.h"

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
    QString command = LumoScript::shellQuote(tool);
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        command += QLatin1Char(' ');
        command += i % 2 == 0 ? arguments.at(i) : LumoScript::shellQuote(arguments.at(i));
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

LumoScript::LumoScript(AppServices &services, const QList<FormatManager *> &managers)
    : m_services(services), m_managers(managers),
      sctrlType(QList<bool>(services.formats().count(), false))
{
}

LumoScript *LumoScript::getLumoScript()
{
    return SharedInstance<LumoScript>::get();
}

QString LumoScript::bundlePath()
{
    const QString bundle = qEnvironmentVariable("KORVANE_BUNDLE");
    if (!bundle.isEmpty())
        return bundle;
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    return QDir::currentPath();
}

LumoScript::Layout LumoScript::platformLayout()
{
#ifdef Q_OS_MACOS
    return Layout::AppleScript;
#else
    return Layout::Shell;
#endif
}

QString LumoScript::toolPath() const
{
    QString tool = m_toolPath;
    if (tool.isEmpty() && m_layout == Layout::AppleScript)
        tool = bundlePath() + QStringLiteral("/Contents/MacOS/KorvaneCMD/KorvaneCMD");
    else if (tool.isEmpty() && QCoreApplication::instance())
        tool = QCoreApplication::applicationDirPath() + QStringLiteral("/KorvaneCMD");
    else if (tool.isEmpty())
        tool = QStringLiteral("KorvaneCMD");
    // The script may run from any folder.
    return QFileInfo(tool).absoluteFilePath();
}

void LumoScript::setHostCommand(const QString &commandLine)
{
    m_hostCommand = commandLine;
    build(false);
}

QString LumoScript::shellQuote(const QString &word)
{
    QString quoted = word;
    quoted.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

std::optional<QStringList> LumoScript::splitCommandLine(const QString &commandLine,
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

QString LumoScript::hostCommandProblem() const
{
    QString problem;
    splitCommandLine(m_hostCommand, &problem);
    return problem;
}

QString LumoScript::appleScript(const QString &tool, const QStringList &arguments)
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

QString LumoScript::shellScript(const QString &tool, const QStringList &arguments,
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

bool LumoScript::isSegmentSelected(int segment) const
{
    return segment >= 0 && segment < sctrlType.size() && sctrlType.at(segment);
}

void LumoScript::setSegmentSelected(int segment, bool selected)
{
    if (segment < 0 || segment >= sctrlType.size() || sctrlType.at(segment) == selected)
        return;
    sctrlType[segment] = selected;
    emit segmentsChanged();
}

void LumoScript::setScript(const QString &text)
{
    teScript = text;
}

void LumoScript::openScriptWindow()
{
    build(false);
    m_visible = true;
    emit windowShown();
}

void LumoScript::changeArgument()
{
    build(true);
}

void LumoScript::build(bool tell)
{
    // Always AU, RTAS, MAS, VST, whatever order the segments were chosen in.
    QStringList arguments;
    bool deselected = false;
    for (int type = 0; type < sctrlType.size(); ++type) {
        if (!sctrlType.at(type))
            continue;
        FormatManager *manager = m_managers.value(type);
        const QString set = manager ? manager->selectedSet() : QString();
        if (!set.isNull()) {
            arguments << m_services.formats().at(type).commandLineFlag() << set;
            continue;
        }
        if (tell) {
            Alert alert;
            alert.title = korvane::tr("Scrip Generation");
            alert.messageText =
                korvane::tr(m_services.formats().at(type).noSetMessage.toUtf8().constData());
            alert.buttons = {korvane::tr("Ok")};
            m_services.ui().runAlert(alert);
        }
        sctrlType[type] = false;
        deselected = true;
    }

    teScript = m_layout == Layout::AppleScript ? appleScript(toolPath(), arguments)
                                               : shellScript(toolPath(), arguments, m_hostCommand);
    if (deselected)
        emit segmentsChanged();
    emit scriptChanged();
}

bool LumoScript::refuseBrokenHost()
{
    const QString problem = m_layout == Layout::Shell ? hostCommandProblem() : QString();
    if (problem.isEmpty())
        return false;
    Alert alert;
    alert.title = korvane::tr("Scrip Generation");
    alert.messageText = korvane::tr("Script not saved");
    alert.informativeText = korvane::tr(problem.toUtf8().constData());
    alert.buttons = {korvane::tr("Ok")};
    m_services.ui().runAlert(alert);
    return true;
}

void LumoScript::saveScript()
{
    if (refuseBrokenHost())
        return;
    SavePanelRequest request;
    request.directory = m_services.locations().documentsFolder();
    request.fileName = m_layout == Layout::AppleScript ? QStringLiteral("untitled.applescript")
                                                       : QStringLiteral("untitled.sh");
    const std::optional<QString> path = m_services.ui().runSavePanel(request);
    if (path)
        savePanelDidEnd(1, *path);
    else
        savePanelDidEnd(0, QString());
}

void LumoScript::savePanelDidEnd(int returnCode, const QString &path)
{
    if (returnCode != 1 || refuseBrokenHost())
        return;
    // A failure is not reported; a half-written script is never left behind.
    if (!m_services.files().writeFileAtomically(path, teScript.toUtf8()))
        return;
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
