#pragma once

#include "model/Plugin.h"

#include <QObject>
#include <QString>

namespace korvane {

// The info panel for one plug-in: name, version, info string and, when allowed, its content list.
class AppServices;
class Preferences;

class MyInfoObj : public QObject {
    Q_OBJECT
public:
    MyInfoObj(AppServices &services, Preferences &prefs);
    static MyInfoObj *getInfo();

    void showInfo(const PluginPtr &item); // null keeps the item shown so far
    bool isVisible() const { return bIsVisible; }
    bool shouldDisplayContent() const { return bDisplayContent; }
    void setDisplayContent(bool display);
    bool windowShouldClose();

    int numberOfRowsInTableView() const;
    QString objectValue(int row) const;
    void addContent();
    void deleteContent(int selectedRow); // -1 for none

    PluginPtr item() const { return pData; }
    QString name() const { return etIFName; }
    QString version() const { return etIFVersion; }
    QString info() const { return etIFInfo; }

signals:
    void changed();

private:
    AppServices &m_services;
    Preferences &m_prefs;
    bool bIsVisible = false;
    bool bDisplayContent = false;
    PluginPtr pData;
    QString etIFInfo;
    QString etIFName;
    QString etIFVersion;
};

} // namespace korvane
