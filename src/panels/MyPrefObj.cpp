#include "panels/MyPrefObj.h"

#include "app/AppServices.h"
#include "platform/FileOperations.h"
#include "platform/FormatTable.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "platform/SharedInstances.h"
#include "ui/UserInterface.h"

#include <QFileInfo>

namespace korvane {

namespace {
const QString kCheckAtStartup = QStringLiteral("SUCheckAtStartup");
const QString kActiveTabView = QStringLiteral("ActiveTabView");

} // namespace

MyPrefObj::MyPrefObj(AppServices &services)
    : m_services(services), m_formats(services.formats()),
      prefs(std::make_unique<UserDefaults>(services.locations().userPreferencesPath(),
                                           services.files(), &services))
{
    controls.types.resize(m_formats.count());
    checkDefaults();
}

MyPrefObj *MyPrefObj::getPref()
{
    return SharedInstance<MyPrefObj>::get();
}

QString MyPrefObj::keyPrefix(int type) const
{
    const Format *format = m_formats.find(type);
    return format ? format->prefix : QString();
}

std::optional<QString> MyPrefObj::key(int type, const char *name) const
{
    const Format *format = m_formats.find(type);
    if (!format)
        return std::nullopt;
    return format->preferenceKey(name);
}

bool MyPrefObj::boolForType(int type, const char *name) const
{
    const std::optional<QString> k = key(type, name);
    return k && prefs->boolForKey(*k);
}

void MyPrefObj::checkDefaults()
{
    FileOperations &files = m_services.files();
    const QString userFile = m_services.locations().userPreferencesPath();
    // An unreadable file counts as absent; it is kept aside before anything takes its place.
    if (files.exists(userFile) && !prefs->isDamaged())
        return;

    // An administrator's machine-wide file is the template for every new user.
    const QString machineFile = m_services.locations().machinePreferencesPath();
    if (PropertyList::readDictionary(machineFile) && prefs->keepIfDamaged()) {
        prefs->createFolders(QFileInfo(userFile).absolutePath());
        files.copy(machineFile, userFile);
        return;
    }

    QList<QPair<QString, QVariant>> seed;
    for (const Format &f : m_formats) {
        seed.append({f.preferenceKey("ShowMessage"), false});
        seed.append({f.preferenceKey("ActivateAfterLoading"), false});
        seed.append({f.preferenceKey("DefaultSet"), QString(QLatin1String(""))});
        seed.append({f.preferenceKey("On"), true});
        seed.append({f.preferenceKey("MoveContent"), false});
        seed.append({f.preferenceKey("ShowContent"), false});
        if (f.scansSubfolders)
            seed.append({f.preferenceKey("ScanSubfolders"), true});
        seed.append({f.preferenceKey("Type"), false});
    }
    prefs->setObjects(seed);
}

void MyPrefObj::awakeFromNib()
{
    loadControls();
    // Each load asks once: the controller adds a column every time it is told YES.
    for (const Format &f : m_formats)
        emit showPlattformRequested(f.type, controls.types[f.type].type);
}

void MyPrefObj::loadControls()
{
    controls.types.resize(m_formats.count());
    controls.checkForUpdates = prefs->boolForKey(kCheckAtStartup);
    for (const Format &f : m_formats) {
        PrefTypeControls &c = controls.types[f.type];
        c.showMessage = prefs->boolForKey(f.preferenceKey("ShowMessage"));
        c.activateAfterLoading = prefs->boolForKey(f.preferenceKey("ActivateAfterLoading"));
        c.on = prefs->boolForKey(f.preferenceKey("On"));
        c.showContent = prefs->boolForKey(f.preferenceKey("ShowContent"));
        c.moveContent = prefs->boolForKey(f.preferenceKey("MoveContent"));
        if (f.scansSubfolders)
            c.scanSubfolders = prefs->boolForKey(f.preferenceKey("ScanSubfolders"));
        c.type = prefs->boolForKey(f.preferenceKey("Type"));
        const QString set = prefs->stringForKey(f.preferenceKey("DefaultSet"));
        c.defaultSet = set.isNull() ? QString(QLatin1String("")) : set;
    }
}

void MyPrefObj::showPreferences()
{
    m_visible = true;
}

bool MyPrefObj::windowShouldClose()
{
    updatePrefs();
    m_visible = false;
    return true;
}

void MyPrefObj::updatePrefs()
{
    controls.types.resize(m_formats.count());
    QList<QPair<QString, QVariant>> values{{kCheckAtStartup, controls.checkForUpdates}};
    for (const Format &f : m_formats) {
        const PrefTypeControls &c = controls.types[f.type];
        values.append({f.preferenceKey("ShowMessage"), c.showMessage});
        values.append({f.preferenceKey("ActivateAfterLoading"), c.activateAfterLoading});
        values.append({f.preferenceKey("DefaultSet"),
                       c.defaultSet.isNull() ? QString(QLatin1String("")) : c.defaultSet});
        values.append({f.preferenceKey("On"), c.on});
        values.append({f.preferenceKey("MoveContent"), c.moveContent});
        values.append({f.preferenceKey("ShowContent"), c.showContent});
        if (f.scansSubfolders)
            values.append({f.preferenceKey("ScanSubfolders"), c.scanSubfolders});
        values.append({f.preferenceKey("Type"), c.type});
    }
    prefs->setObjects(values);
}

void MyPrefObj::setDefault()
{
    OpenPanelRequest request;
    request.directory = m_services.locations().documentsFolder();
    // A tab's position is its format's type index plus one; another tab has no type to ask for.
    if (const Format *format = m_formats.find(controls.selectedTab - 1))
        request.allowedTypes = format->defaultSetExtension.split(QLatin1Char(' '));
    const std::optional<QString> path = m_services.ui().runOpenPanel(request);
    openPanelDidEnd(path ? 1 : 0, path.value_or(QString()));
}

void MyPrefObj::openPanelDidEnd(int returnCode, const QString &path)
{
    if (returnCode == 1) {
        if (m_formats.isValid(controls.selectedTab - 1))
            controls.types[controls.selectedTab - 1].defaultSet = path;
    }
    // Cancelled or not, the window's state is stored.
    updatePrefs();
}

std::optional<QString> MyPrefObj::getDefaultSet(int type) const
{
    const std::optional<QString> k = key(type, "DefaultSet");
    if (!k)
        return std::nullopt;
    return prefs->stringForKey(*k);
}

void MyPrefObj::setDefaultSet(int type, const QString &set)
{
    if (const std::optional<QString> k = key(type, "DefaultSet"))
        prefs->setObject(*k, set);
}

bool MyPrefObj::activateDefaultSet(int type) const
{
    return boolForType(type, "ActivateAfterLoading");
}

bool MyPrefObj::isTypeActive(int type) const
{
    return boolForType(type, "On");
}

bool MyPrefObj::showType(int type) const
{
    return boolForType(type, "Type");
}

bool MyPrefObj::showContent(int type) const
{
    return boolForType(type, "ShowContent");
}

bool MyPrefObj::moveContent(int type) const
{
    return boolForType(type, "MoveContent");
}

bool MyPrefObj::scanSubpaths(int type) const
{
    // Audio Units are never scanned below the top level of their folders.
    const Format *format = m_formats.find(type);
    return format && format->scansSubfolders && boolForType(type, "ScanSubfolders");
}

int MyPrefObj::getDefaultType() const
{
    return int(prefs->integerForKey(kActiveTabView));
}

void MyPrefObj::setDefaultType(int type)
{
    prefs->setObject(kActiveTabView, qint64(type));
}

} // namespace korvane
