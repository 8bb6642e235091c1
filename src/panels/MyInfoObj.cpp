#include "panels/MyInfoObj.h"

#include "app/AppServices.h"
#include "panels/Preferences.h"
#include "platform/Bundle.h"
#include "platform/Locations.h"
#include "platform/SharedInstances.h"
#include "ui/UserInterface.h"

namespace korvane {

namespace {
// A text value of the information dictionary; numbers read as their text, anything else is missing.
QString infoString(const QVariantMap &info, const QString &key, const QString &fallback)
{
    const QVariant value = info.value(key);
    switch (value.typeId()) {
    case QMetaType::QString:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value.toString();
    default:
        return fallback;
    }
}
} // namespace

MyInfoObj::MyInfoObj(AppServices &services, Preferences &prefs)
    : m_services(services), m_prefs(prefs)
{
}

MyInfoObj *MyInfoObj::getInfo()
{
    return SharedInstance<MyInfoObj>::get();
}

void MyInfoObj::showInfo(const PluginPtr &item)
{
    if (item) {
        const QString bundlePath = item->location() + QLatin1Char('/') + item->name();
        const QVariantMap info = Bundle::infoDictionary(bundlePath).value_or(QVariantMap());
        etIFName = infoString(info, QStringLiteral("CFBundleName"), item->name());
        etIFVersion = infoString(info, QStringLiteral("CFBundleVersion"), QStringLiteral("???"));
        etIFInfo =
            infoString(info, QStringLiteral("CFBundleGetInfoString"), QString(QLatin1String("")));
        pData = item;
    }
    // The preference may have changed since the panel was last filled.
    setDisplayContent(m_prefs.showsContent(m_services.activeType()));
    bIsVisible = true;
    emit changed();
}

void MyInfoObj::setDisplayContent(bool display)
{
    bDisplayContent = display;
    emit changed();
}

bool MyInfoObj::windowShouldClose()
{
    bIsVisible = false;
    emit changed();
    return true;
}

int MyInfoObj::numberOfRowsInTableView() const
{
    return pData ? pData->contentCount() : 0;
}

QString MyInfoObj::objectValue(int row) const
{
    if (row < 0 || row >= numberOfRowsInTableView())
        return QString();
    return pData->contentAt(row);
}

void MyInfoObj::addContent()
{
    OpenPanelRequest request;
    request.directory = m_services.locations().documentsFolder();
    request.canChooseFiles = false;
    request.canChooseDirectories = true;
    request.canCreateDirectories = false;
    const std::optional<QString> path = m_services.ui().runOpenPanel(request);
    if (path && pData)
        pData->addContent(*path);
    emit changed();
}

void MyInfoObj::deleteContent(int selectedRow)
{
    if (selectedRow >= 0 && selectedRow < numberOfRowsInTableView())
        pData->removeContent(selectedRow);
    emit changed();
}

} // namespace korvane
