#include "panels/MyPrefObj.h"

#include "platform/FileOperations.h"
#include "platform/Locations.h"
#include "platform/PropertyList.h"
#include "platform/SharedInstances.h"
#include "ui/UserInterface.h"

#include <QFileInfo>

namespace korvane {

namespace {
const QString kCheckAtStartup = QStringLiteral("SUCheckAtStartup");
const QString kActiveTabView = QStringLiteral("ActiveTabView");

// The set-document type of each preferences tab, by tab position 1..4.
QString setDocumentType(int selectedTab) {
    switch (selectedTab) {
    case 1:
        return QStringLiteral("aukorv");
    case 2:
        return QStringLiteral("rtaskorv");
    case 3:
        return QStringLiteral("maskorv");
    case 4:
        return QStringLiteral("vstkorv");
    default:
        return QString();
    }
}

QString key(int type, const char *name) {
    return MyPrefObj::keyPrefix(type) + QLatin1String(name);
}
} // namespace

MyPrefObj::MyPrefObj()
    : prefs(std::make_unique<UserDefaults>(Locations::expand(Locations::userPreferencesFile()))) {
    checkDefaults();
}

MyPrefObj *MyPrefObj::getPref() {
    return SharedInstance<MyPrefObj>::get();
}

void MyPrefObj::install(MyPrefObj *pref) {
    SharedInstance<MyPrefObj>::install(pref);
}

QString MyPrefObj::keyPrefix(int type) {
    return typePrefix(type);
}

void MyPrefObj::checkDefaults() {
    FileOperations &files = FileOperations::current();
    const QString userFile = Locations::expand(Locations::userPreferencesFile());
    // An unreadable file counts as absent; it is kept aside before anything takes its place.
    if (files.exists(userFile) && !prefs->isDamaged())
        return;

    // An administrator's machine-wide file is the template for every new user.
    const QString machineFile = Locations::expand(Locations::machinePreferencesFile());
    if (PropertyList::readDictionary(machineFile) && prefs->keepIfDamaged()) {
        UserDefaults::createFolders(QFileInfo(userFile).absolutePath());
        files.copy(machineFile, userFile);
        return;
    }

    QList<QPair<QString, QVariant>> seed;
    for (int type = 0; type < TypeCount; ++type) {
        seed.append({key(type, "ShowMessage"), false});
        seed.append({key(type, "ActivateAfterLoading"), false});
        seed.append({key(type, "DefaultSet"), QString(QLatin1String(""))});
        seed.append({key(type, "On"), true});
        seed.append({key(type, "MoveContent"), false});
        seed.append({key(type, "ShowContent"), false});
        if (type != TypeAU)
            seed.append({key(type, "ScanSubfolders"), true});
        seed.append({key(type, "Type"), false});
    }
    prefs->setObjects(seed);
}

void MyPrefObj::awakeFromNib() {
    controls.checkForUpdates = prefs->boolForKey(kCheckAtStartup);
    for (int type = 0; type < TypeCount; ++type) {
        PrefTypeControls &c = controls.types[type];
        c.showMessage = prefs->boolForKey(key(type, "ShowMessage"));
        c.activateAfterLoading = prefs->boolForKey(key(type, "ActivateAfterLoading"));
        c.on = prefs->boolForKey(key(type, "On"));
        c.showContent = prefs->boolForKey(key(type, "ShowContent"));
        c.moveContent = prefs->boolForKey(key(type, "MoveContent"));
        if (type != TypeAU)
            c.scanSubfolders = prefs->boolForKey(key(type, "ScanSubfolders"));
        c.type = prefs->boolForKey(key(type, "Type"));
        const QString set = prefs->stringForKey(key(type, "DefaultSet"));
        c.defaultSet = set.isNull() ? QString(QLatin1String("")) : set;
        // Each load asks once: the controller adds a column every time it is told YES.
        emit showPlattformRequested(type, c.type);
    }
}

void MyPrefObj::showPreferences() {
    m_visible = true;
}

bool MyPrefObj::windowShouldClose() {
    updatePrefs();
    m_visible = false;
    return true;
}

void MyPrefObj::updatePrefs() {
    QList<QPair<QString, QVariant>> values{{kCheckAtStartup, controls.checkForUpdates}};
    for (int type = 0; type < TypeCount; ++type) {
        const PrefTypeControls &c = controls.types[type];
        values.append({key(type, "ShowMessage"), c.showMessage});
        values.append({key(type, "ActivateAfterLoading"), c.activateAfterLoading});
        values.append({key(type, "DefaultSet"),
                       c.defaultSet.isNull() ? QString(QLatin1String("")) : c.defaultSet});
        values.append({key(type, "On"), c.on});
        values.append({key(type, "MoveContent"), c.moveContent});
        values.append({key(type, "ShowContent"), c.showContent});
        if (type != TypeAU)
            values.append({key(type, "ScanSubfolders"), c.scanSubfolders});
        values.append({key(type, "Type"), c.type});
    }
    prefs->setObjects(values);
}

void MyPrefObj::setDefault() {
    OpenPanelRequest request;
    request.directory = Locations::expand(QStringLiteral("~/Documents"));
    const QString fileType = setDocumentType(controls.selectedTab);
    if (!fileType.isEmpty())
        request.allowedTypes = fileType.split(QLatin1Char(' '));
    const std::optional<QString> path = UserInterface::current().runOpenPanel(request);
    openPanelDidEnd(path ? 1 : 0, path.value_or(QString()));
}

void MyPrefObj::openPanelDidEnd(int returnCode, const QString &path) {
    if (returnCode == 1) {
        const int tab = controls.selectedTab;
        if (tab >= 1 && tab <= TypeCount)
            controls.types[tab - 1].defaultSet = path;
    }
    // Cancelled or not, the window's state is stored.
    updatePrefs();
}

std::optional<QString> MyPrefObj::getDefaultSet(int type) const {
    if (!isValidType(type))
        return std::nullopt;
    return prefs->stringForKey(key(type, "DefaultSet"));
}

void MyPrefObj::setDefaultSet(int type, const QString &set) {
    if (isValidType(type))
        prefs->setObject(key(type, "DefaultSet"), set);
}

bool MyPrefObj::activateDefaultSet(int type) const {
    return isValidType(type) && prefs->boolForKey(key(type, "ActivateAfterLoading"));
}

bool MyPrefObj::isTypeActive(int type) const {
    return isValidType(type) && prefs->boolForKey(key(type, "On"));
}

bool MyPrefObj::showType(int type) const {
    return isValidType(type) && prefs->boolForKey(key(type, "Type"));
}

bool MyPrefObj::showContent(int type) const {
    return isValidType(type) && prefs->boolForKey(key(type, "ShowContent"));
}

bool MyPrefObj::moveContent(int type) const {
    return isValidType(type) && prefs->boolForKey(key(type, "MoveContent"));
}

bool MyPrefObj::scanSubpaths(int type) const {
    // Audio Units are never scanned below the top level of their folders.
    if (type < TypeRTAS || type > TypeVST)
        return false;
    return prefs->boolForKey(key(type, "ScanSubfolders"));
}

int MyPrefObj::getDefaultType() const {
    return int(prefs->integerForKey(kActiveTabView));
}

void MyPrefObj::setDefaultType(int type) {
    prefs->setObject(kActiveTabView, qint64(type));
}

} // namespace korvane
