#pragma once

#include "app/AppServices.h"
#include "app/ServicesFixture.h"
#include "panels/MyPrefObj.h"

#include <memory>

namespace korvane {

// The application services and the preferences of one launch over fresh roots; relaunch() makes
// the next launch read everything from disk again.
class PanelsFixture : public ServicesFixture {
protected:
    AppServices &services()
    {
        launch();
        return *m_services;
    }
    MyPrefObj *pref()
    {
        launch();
        return m_pref.get();
    }
    void relaunch()
    {
        m_pref.reset();
        m_services.reset();
    }
    static QString prefix(int type) { return FormatTable::builtIn().at(type).prefix; }

private:
    void launch()
    {
        if (m_pref)
            return;
        m_services = std::make_unique<AppServices>(parts());
        m_pref = std::make_unique<MyPrefObj>(*m_services);
    }
    std::unique_ptr<AppServices> m_services;
    std::unique_ptr<MyPrefObj> m_pref;
};

} // namespace korvane
