#include "shell/AppContext.h"

#include "managers/MyAdminObj.h"
#include "managers/MyMASObj.h"
#include "managers/MyRTASObj.h"
#include "managers/MyVSTObj.h"
#include "panels/MyInfoObj.h"
#include "panels/MyMissingItems.h"
#include "panels/MyPrefObj.h"
#include "platform/SharedInstances.h"
#include "privileged/BLAuthentication.h"
#include "shell/LumoScript.h"
#include "shell/MyMainObj.h"

namespace korvane {

namespace {

// Installs a freshly made controller in its accessor's slot.
template <class T> T *installed(std::unique_ptr<T> &slot)
{
    slot = std::make_unique<T>();
    SharedInstance<T>::install(slot.get());
    return slot.get();
}

template <class T> void release(std::unique_ptr<T> &slot)
{
    if (slot && SharedInstance<T>::peek() == slot.get())
        SharedInstance<T>::install(nullptr);
    slot.reset();
}

} // namespace

AppContext::AppContext() : AppContext(Options{}) {}

AppContext::AppContext(const Options &options)
{
    // Each later controller may ask the earlier ones for their state while it is made.
    m_main = std::make_unique<MyMainObj>();
    MyMainObj::install(m_main.get());
    installed(m_pref); // runs checkDefaults
    m_main->connectPreferences(m_pref.get());
    installed(m_au);
    installed(m_rtas);
    installed(m_mas);
    installed(m_vst);
    installed(m_info);
    installed(m_missingItems);
    installed(m_authentication);
    installed(m_script);

    if (options.awakeFromNib)
        awakeFromNib();
}

AppContext::~AppContext()
{
    uninstall();
}

void AppContext::awakeFromNib()
{
    m_main->awakeFromNib();
    m_au->awakeFromNib();
    m_rtas->awakeFromNib();
    m_mas->awakeFromNib();
    m_vst->awakeFromNib();
    m_pref->awakeFromNib();
}

void AppContext::uninstall()
{
    // Newest first: a controller may still reach older ones while it goes.
    release(m_script);
    release(m_authentication);
    release(m_missingItems);
    release(m_info);
    release(m_vst);
    release(m_mas);
    release(m_rtas);
    release(m_au);
    release(m_pref);
    release(m_main); // leaves the services slot as it goes
}

} // namespace korvane
