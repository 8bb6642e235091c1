#pragma once

#include <memory>

namespace korvane {

class BLAuthentication;
class LumoScript;
class MyAdminObj;
class MyInfoObj;
class MyMainObj;
class MyMASObj;
class MyMissingItems;
class MyPrefObj;
class MyRTASObj;
class MyVSTObj;

// Owns every controller of one run of the program and installs each as the shared instance its
// accessor answers, in start-up order; going away uninstalls and drops them all. The GUI, the
// command-line tool and each test build one over the roots in force at that moment.
class AppContext {
public:
    struct Options {
        bool awakeFromNib = true; // run the window-load steps at once
    };

    AppContext();
    explicit AppContext(const Options &options);
    ~AppContext();
    AppContext(const AppContext &) = delete;
    AppContext &operator=(const AppContext &) = delete;

    // The window-load steps: the controller's tabs and group menu, each manager's set list, then
    // the preferences controls (which ask the managers for their architecture column).
    void awakeFromNib();

    MyMainObj *main() const { return m_main.get(); }
    MyPrefObj *pref() const { return m_pref.get(); }
    MyAdminObj *au() const { return m_au.get(); }
    MyRTASObj *rtas() const { return m_rtas.get(); }
    MyMASObj *mas() const { return m_mas.get(); }
    MyVSTObj *vst() const { return m_vst.get(); }
    MyInfoObj *info() const { return m_info.get(); }
    MyMissingItems *missingItems() const { return m_missingItems.get(); }
    BLAuthentication *authentication() const { return m_authentication.get(); }
    LumoScript *script() const { return m_script.get(); }

private:
    void uninstall();

    std::unique_ptr<MyMainObj> m_main;
    std::unique_ptr<MyPrefObj> m_pref;
    std::unique_ptr<MyAdminObj> m_au;
    std::unique_ptr<MyRTASObj> m_rtas;
    std::unique_ptr<MyMASObj> m_mas;
    std::unique_ptr<MyVSTObj> m_vst;
    std::unique_ptr<MyInfoObj> m_info;
    std::unique_ptr<MyMissingItems> m_missingItems;
    std::unique_ptr<BLAuthentication> m_authentication;
    std::unique_ptr<LumoScript> m_script;
};

} // namespace korvane
