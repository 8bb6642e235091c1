#include "shell/LumoScript.h"

#include "app/AppServices.h"
#include "managers/TypeManager.h"
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
#include <QProcess>

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

LumoScript::LumoScript(AppServices &services, const QList<TypeManager *> &managers)
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
    const QStringList host = QProcess::splitCommand(hostCommand);
    if (!host.isEmpty()) {
        QStringList words;
        for (const QString &word : host)
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
        TypeManager *manager = m_managers.value(type);
        const QString set = manager ? manager->getSelectedSet() : QString();
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

void LumoScript::saveScript()
{
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
    if (returnCode != 1)
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
