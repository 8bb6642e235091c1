#pragma once

#include "app/Preferences.h"
#include "codec/PropertyList.h"
#include "core/AppServices.h"
#include "support/ServicesFixture.h"

#include <memory>

namespace korvane {

inline const QString kPreferencesPlist =
    QStringLiteral("Library/Preferences/com.velmora.Korvane.plist");

// The services and preferences of one launch; launch() starts the next, which reads everything
// from disk again.
class PreferencesFixture : public ServicesFixture {
protected:
    Preferences *launch()
    {
        pref.reset();
        services = std::make_unique<AppServices>(parts());
        return (pref = std::make_unique<Preferences>(services->parts(), services->dataFiles()))
            .get();
    }
    QVariantMap stored() const
    {
        return PropertyList::readDictionary(homePath(kPreferencesPlist)).value_or(QVariantMap());
    }
    std::unique_ptr<AppServices> services;
    std::unique_ptr<Preferences> pref;
};

} // namespace korvane
