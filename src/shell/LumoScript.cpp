#include "shell/LumoScript.h"

#include "managers/TypeManager.h"
#include "platform/Locations.h"
#include "platform/SharedInstances.h"
#include "platform/Texts.h"
#include "ui/UserInterface.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace korvane {

namespace {

// The option piece and the no-set message of each format, by type index.
struct ScriptOption {
    const char *option;
    const char *noSet;
};

const ScriptOption kOptions[TypeCount] = {
    {" -AU '%@'", QT_TRANSLATE_NOOP("Korvane", "There is no set selected for AudioUnits")},
    {" -RTAS '%@'", QT_TRANSLATE_NOOP("Korvane", "There is no set selected for RTAS")},
    {" -MAS '%@'", QT_TRANSLATE_NOOP("Korvane", "There is no set selected for MAS")},
    {" -VST '%@'", QT_TRANSLATE_NOOP("Korvane", "There is no set selected for VST")},
};

} // namespace

LumoScript *LumoScript::getLumoScript()
{
    return SharedInstance<LumoScript>::get();
}

void LumoScript::install(LumoScript *script)
{
    SharedInstance<LumoScript>::install(script);
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

bool LumoScript::isSegmentSelected(int segment) const
{
    return isValidType(segment) && sctrlType[segment];
}

void LumoScript::setSegmentSelected(int segment, bool selected)
{
    if (!isValidType(segment) || sctrlType[segment] == selected)
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
    QString text = QStringLiteral("-- KorvaneCMD launch script\n");
    text += QStringLiteral("\ntell application \"Finder\"\n");
    text += QStringLiteral(" do shell script \"'%@/Contents/MacOS/KorvaneCMD/KorvaneCMD'")
                .replace(QLatin1String("%@"), bundlePath());

    // Always AU, RTAS, MAS, VST, whatever order the segments were chosen in.
    bool deselected = false;
    for (int type = 0; type < TypeCount; ++type) {
        if (!sctrlType[type])
            continue;
        TypeManager *manager = TypeManager::forType(type);
        const QString set = manager ? manager->getSelectedSet() : QString();
        if (!set.isNull()) {
            text += QString::fromLatin1(kOptions[type].option).replace(QLatin1String("%@"), set);
            continue;
        }
        if (tell) {
            Alert alert;
            alert.title = korvane::tr("Scrip Generation");
            alert.messageText = korvane::tr(kOptions[type].noSet);
            alert.buttons = {korvane::tr("Ok")};
            UserInterface::current().runAlert(alert);
        }
        sctrlType[type] = false;
        deselected = true;
    }

    text += QStringLiteral("\"\n  tell application \"Logic Pro\"\n");
    text += QStringLiteral("    activate\n");
    text += QStringLiteral("  end tell\n");
    text += QStringLiteral("end tell\n");

    teScript = text;
    if (deselected)
        emit segmentsChanged();
    emit scriptChanged();
}

void LumoScript::saveScript()
{
    SavePanelRequest request;
    request.directory = Locations::expand(QStringLiteral("~/Documents"));
    request.fileName = QStringLiteral("untitled.applescript");
    const std::optional<QString> path = UserInterface::current().runSavePanel(request);
    if (path)
        savePanelDidEnd(1, *path);
    else
        savePanelDidEnd(0, QString());
}

void LumoScript::savePanelDidEnd(int returnCode, const QString &path)
{
    if (returnCode != 1)
        return;
    // A plain write in the local encoding; a failure is not reported.
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(teScript.toLocal8Bit());
}

} // namespace korvane
