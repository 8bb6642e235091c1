#pragma once

#include "core/Plugin.h"

#include <QObject>
#include <QString>

namespace korvane {

class AppServices;
class Preferences;

// The info panel for one plug-in: name, version, info string and, when allowed, its content list.
class InfoPanelModel : public QObject {
    Q_OBJECT
public:
    InfoPanelModel(AppServices &services, Preferences &prefs);
    void showInfo(const PluginPtr &item); // null keeps the item shown so far
    bool isVisible() const { return m_visible; }
    bool showsContent() const { return m_showsContent; }
    void setShowsContent(bool shows);
    bool closeWindow(); // true: the panel may close

    int rowCount() const;
    QString data(int row) const; // one companion of the plug-in
    void addContent();
    void removeContentAt(int selectedRow); // -1 for none

    PluginPtr item() const { return m_item; }
    QString name() const { return m_name; }
    QString version() const { return m_version; }
    QString info() const { return m_info; }

signals:
    void changed();

private:
    AppServices &m_services;
    Preferences &m_prefs;
    bool m_visible = false;
    bool m_showsContent = false;
    PluginPtr m_item;
    QString m_info;
    QString m_name;
    QString m_version;
};

} // namespace korvane
