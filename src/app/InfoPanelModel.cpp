#include "app/InfoPanelModel.h"

#include "app/Preferences.h"
#include "codec/Bundle.h"
#include "core/AppServices.h"
#include "core/Locations.h"
#include "core/UserInterface.h"

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

InfoPanelModel::InfoPanelModel(AppServices &services, Preferences &prefs)
    : m_services(services), m_prefs(prefs)
{
}

void InfoPanelModel::showInfo(const PluginPtr &item)
{
    if (item) {
        const QString bundlePath = item->location() + QLatin1Char('/') + item->name();
        const QVariantMap info = Bundle::infoDictionary(bundlePath).value_or(QVariantMap());
        m_name = infoString(info, QStringLiteral("CFBundleName"), item->name());
        m_version = infoString(info, QStringLiteral("CFBundleVersion"), QStringLiteral("???"));
        m_info =
            infoString(info, QStringLiteral("CFBundleGetInfoString"), QString(QLatin1String("")));
        m_item = item;
    }
    // The preference may have changed since the panel was last filled.
    setShowsContent(m_prefs.showsContent(m_services.activeType()));
    m_visible = true;
    emit changed();
}

void InfoPanelModel::setShowsContent(bool shows)
{
    m_showsContent = shows;
    emit changed();
}

bool InfoPanelModel::closeWindow()
{
    m_visible = false;
    emit changed();
    return true;
}

int InfoPanelModel::rowCount() const
{
    return m_item ? m_item->contentCount() : 0;
}

QString InfoPanelModel::data(int row) const
{
    if (row < 0 || row >= rowCount())
        return QString();
    return m_item->contentAt(row);
}

void InfoPanelModel::addContent()
{
    OpenPanelRequest request;
    request.directory = m_services.locations().documentsFolder();
    request.canChooseFiles = false;
    request.canChooseDirectories = true;
    request.canCreateDirectories = false;
    const std::optional<QString> path = m_services.ui().runOpenPanel(request);
    if (path && m_item) {
        m_item->addContent(*path);
        m_services.contentRegistry().store(*m_item);
    }
    emit changed();
}

void InfoPanelModel::removeContentAt(int selectedRow)
{
    if (selectedRow >= 0 && selectedRow < rowCount()) {
        m_item->removeContent(selectedRow);
        m_services.contentRegistry().store(*m_item);
    }
    emit changed();
}

} // namespace korvane
