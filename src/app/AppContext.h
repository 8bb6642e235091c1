#pragma once

#include "core/FormatTable.h"
#include "core/Locations.h"
#include "os/Environment.h"

#include <QList>
#include <memory>
#include <vector>

namespace korvane {

class AboutText;
class AppController;
class Authorization;
class AuthorizationBackend;
class FileOperations;
class FormatManager;
class InfoPanelModel;
class LaunchScript;
class LockTable;
class MissingItemsPrompt;
class Preferences;
class RightsMover;
class UserInterface;

// Builds every controller of one run of the program from explicit parts, wires them to one
// another; going away drops them all. The window, the command-line tool and each test build one.
class AppContext {
public:
    struct Parts {
        Roots roots;                                   // where "/Library" and "~" are
        RunSettings settings;                          // the rest of what the entry read
        FormatTable formats = FormatTable::builtIn();  // one manager per row
        FileOperations *files = nullptr;               // default: the local disk
        UserInterface *ui = nullptr;                   // default: nobody there to answer
        LockTable *locks = nullptr;                    // default: a table of its own
        AuthorizationBackend *authorization = nullptr; // default: polkit where it helps
        bool prepareWindow = true;                     // run the window-load steps at once
        // The window's: system moves that need rights go through it (HelperRights).
        RightsMover *rights = nullptr;
    };

    explicit AppContext(Parts parts);
    ~AppContext();
    AppContext(const AppContext &) = delete;
    AppContext &operator=(const AppContext &) = delete;

    // The window-load steps: the controller's tabs and group menu, each manager's set list, then
    // the preferences controls (which ask the managers for their architecture column).
    void prepareWindow();

    const Locations &locations() const { return m_locations; }
    const FormatTable &formats() const { return m_formats; }
    const RunSettings &settings() const { return m_settings; }
    FileOperations &files() const { return *m_files; }
    UserInterface &ui() const { return *m_ui; }

    AppController *main() const { return m_main.get(); }
    Preferences *pref() const { return m_pref.get(); }
    const QList<FormatManager *> &managers() const { return m_managerList; }
    FormatManager *manager(int type) const { return m_managerList.value(type); }
    InfoPanelModel *info() const { return m_info.get(); }
    MissingItemsPrompt *missingItems() const { return m_missingItems.get(); }
    Authorization *authorization() const { return m_authorization.get(); }
    LaunchScript *script() const { return m_script.get(); }
    AboutText *about() const { return m_about.get(); }

private:
    Locations m_locations;
    RunSettings m_settings;
    FormatTable m_formats;
    std::unique_ptr<FileOperations> m_ownFiles;
    std::unique_ptr<UserInterface> m_ownUi;
    // Before the controllers: it outlives every lock they hold.
    std::unique_ptr<LockTable> m_ownLocks;
    std::unique_ptr<AuthorizationBackend> m_ownAuthorizationBackend;
    FileOperations *m_files;
    UserInterface *m_ui;
    LockTable *m_locks;
    AuthorizationBackend *m_authorizationBackend;

    std::unique_ptr<AppController> m_main;
    std::unique_ptr<Preferences> m_pref;
    std::unique_ptr<MissingItemsPrompt> m_missingItems;
    std::unique_ptr<Authorization> m_authorization;
    std::vector<std::unique_ptr<FormatManager>> m_managers;
    QList<FormatManager *> m_managerList;
    std::unique_ptr<InfoPanelModel> m_info;
    std::unique_ptr<LaunchScript> m_script;
    std::unique_ptr<AboutText> m_about;
};

} // namespace korvane
