#include "app/Preferences.h"

#include "codec/PropertyList.h"
#include "core/FormatTable.h"
#include "core/Locations.h"
#include "core/PreferenceKeys.h"
#include "core/UserInterface.h"
#include "os/FileOperations.h"

#include <QFileInfo>

namespace korvane {

using PreferenceKeys::forFormat;
using PreferenceKeys::FormatKey;

Preferences::Preferences(const RunParts &run, DataFiles &dataFiles)
    : m_run(run), m_formats(run.formats),
      m_store(std::make_unique<PreferenceStore>(run.locations.userPreferencesPath(), run.files,
                                                &dataFiles))
{
    form.pages.resize(m_formats.count());
    seedDefaults();
}

std::optional<QString> Preferences::key(int type, FormatKey name) const
{
    const Format *format = m_formats.find(type);
    if (!format)
        return std::nullopt;
    return forFormat(*format, name);
}

bool Preferences::boolForType(int type, FormatKey name) const
{
    const std::optional<QString> k = key(type, name);
    return k && m_store->boolValue(*k);
}

bool Preferences::isOnByDefault(const Format &format) const
{
    // Another system's layout is worth a tab only where something of it is there.
    if (!format.onOnlyWhereFoldersExist)
        return true;
    for (int loc = 0; loc < format.locationCount(); ++loc)
        if (m_run.files.isDirectory(m_run.locations.folderPath(format, loc)))
            return true;
    return false;
}

void Preferences::seedDefaults()
{
    FileOperations &files = m_run.files;
    const QString userFile = m_run.locations.userPreferencesPath();
    // An unreadable file counts as absent; it is kept aside before anything takes its place.
    if (files.exists(userFile) && !m_store->isDamaged())
        return;

    // An administrator's machine-wide file is the template for every new user.
    const QString machineFile = m_run.locations.machinePreferencesPath();
    if (PropertyList::readDictionary(machineFile) && m_store->keepIfDamaged()) {
        m_store->createFolders(QFileInfo(userFile).absolutePath());
        files.copy(machineFile, userFile);
        return;
    }

    QList<QPair<QString, QVariant>> seed;
    for (const Format &f : m_formats) {
        seed.append({forFormat(f, FormatKey::ActivateAfterLoading), false});
        seed.append({forFormat(f, FormatKey::DefaultSet), QString(QLatin1String(""))});
        seed.append({forFormat(f, FormatKey::On), isOnByDefault(f)});
        seed.append({forFormat(f, FormatKey::MoveContent), false});
        seed.append({forFormat(f, FormatKey::ShowContent), false});
        if (f.scansSubfolders)
            seed.append({forFormat(f, FormatKey::ScanSubfolders), true});
        seed.append({forFormat(f, FormatKey::ArchitectureColumn), false});
    }
    m_store->setValues(seed);
}

void Preferences::prepareWindow()
{
    loadForm();
    // Each load asks once: the controller adds a column every time it is told to show one.
    for (const Format &f : m_formats)
        emit architectureColumnRequested(f.type, form.pages[f.type].typeColumn);
}

void Preferences::loadForm()
{
    form.pages.resize(m_formats.count());
    form.checkForUpdates = m_store->boolValue(PreferenceKeys::CheckForUpdatesAtStartup);
    for (const Format &f : m_formats) {
        PreferencesPage &c = form.pages[f.type];
        c.activateAfterLoading = m_store->boolValue(forFormat(f, FormatKey::ActivateAfterLoading));
        c.on = m_store->boolValue(forFormat(f, FormatKey::On));
        c.showContent = m_store->boolValue(forFormat(f, FormatKey::ShowContent));
        c.moveContent = m_store->boolValue(forFormat(f, FormatKey::MoveContent));
        if (f.scansSubfolders)
            c.scanSubfolders = m_store->boolValue(forFormat(f, FormatKey::ScanSubfolders));
        c.typeColumn = m_store->boolValue(forFormat(f, FormatKey::ArchitectureColumn));
        const QString set = m_store->stringValue(forFormat(f, FormatKey::DefaultSet));
        c.defaultSet = set.isNull() ? QString(QLatin1String("")) : set;
    }
}

bool Preferences::closeWindow()
{
    storeForm();
    return true;
}

void Preferences::storeForm()
{
    form.pages.resize(m_formats.count());
    QList<QPair<QString, QVariant>> values{
        {PreferenceKeys::CheckForUpdatesAtStartup, form.checkForUpdates}};
    for (const Format &f : m_formats) {
        const PreferencesPage &c = form.pages[f.type];
        values.append({forFormat(f, FormatKey::ActivateAfterLoading), c.activateAfterLoading});
        values.append({forFormat(f, FormatKey::DefaultSet),
                       c.defaultSet.isNull() ? QString(QLatin1String("")) : c.defaultSet});
        values.append({forFormat(f, FormatKey::On), c.on});
        values.append({forFormat(f, FormatKey::MoveContent), c.moveContent});
        values.append({forFormat(f, FormatKey::ShowContent), c.showContent});
        if (f.scansSubfolders)
            values.append({forFormat(f, FormatKey::ScanSubfolders), c.scanSubfolders});
        values.append({forFormat(f, FormatKey::ArchitectureColumn), c.typeColumn});
    }
    m_store->setValues(values);
}

void Preferences::chooseDefaultSet()
{
    OpenPanelRequest request;
    request.directory = m_run.locations.documentsFolder();
    // A tab's position is its format's type index plus one; another tab has no type to ask for.
    if (const Format *format = m_formats.find(form.selectedTab - 1))
        request.allowedTypes = format->defaultSetExtension.split(QLatin1Char(' '));
    if (const std::optional<QString> path = m_run.ui.runOpenPanel(request))
        chooseDefaultSet(*path);
    else
        storeForm(); // cancelled, the window's state is stored all the same
}

void Preferences::chooseDefaultSet(const QString &path)
{
    if (m_formats.isValid(form.selectedTab - 1))
        form.pages[form.selectedTab - 1].defaultSet = path;
    storeForm();
}

std::optional<QString> Preferences::defaultSet(int type) const
{
    const std::optional<QString> k = key(type, FormatKey::DefaultSet);
    if (!k)
        return std::nullopt;
    return m_store->stringValue(*k);
}

void Preferences::setDefaultSet(int type, const QString &set)
{
    if (const std::optional<QString> k = key(type, FormatKey::DefaultSet))
        m_store->setValue(*k, set);
}

bool Preferences::appliesSetAfterLoading(int type) const
{
    return boolForType(type, FormatKey::ActivateAfterLoading);
}

bool Preferences::isFormatOn(int type) const
{
    return boolForType(type, FormatKey::On);
}

bool Preferences::showsContent(int type) const
{
    return boolForType(type, FormatKey::ShowContent);
}

bool Preferences::movesContent(int type) const
{
    return boolForType(type, FormatKey::MoveContent);
}

bool Preferences::scansSubfolders(int type) const
{
    // Audio Units are never scanned below the top level of their folders.
    const Format *format = m_formats.find(type);
    return format && format->scansSubfolders && boolForType(type, FormatKey::ScanSubfolders);
}

bool Preferences::checksForUpdatesAtStartup() const
{
    return m_store->boolValue(PreferenceKeys::CheckForUpdatesAtStartup);
}

int Preferences::defaultType() const
{
    return int(m_store->intValue(PreferenceKeys::FrontFormat));
}

void Preferences::setDefaultType(int type)
{
    m_store->setValue(PreferenceKeys::FrontFormat, qint64(type));
}

} // namespace korvane
