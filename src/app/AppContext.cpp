#include "app/AppContext.h"

#include "app/AboutText.h"
#include "app/AppController.h"
#include "app/InfoPanelModel.h"
#include "app/LaunchScript.h"
#include "app/Preferences.h"
#include "core/UserInterface.h"
#include "library/Authorization.h"
#include "library/FormatManager.h"
#include "library/MissingItemsPrompt.h"
#include "os/AuthorizationBackend.h"
#include "os/LocalFileOperations.h"
#include "os/LockTable.h"

namespace korvane {

AppContext::AppContext(Parts parts)
    : m_locations(parts.roots), m_settings(parts.settings), m_formats(std::move(parts.formats))
{
    if (!parts.files)
        m_ownFiles = std::make_unique<LocalFileOperations>(parts.roots);
    if (!parts.ui)
        m_ownUi = std::make_unique<HeadlessUi>();
    if (!parts.locks)
        m_ownLocks = std::make_unique<LockTable>();
    if (!parts.authorization)
        m_ownAuthorizationBackend = AuthorizationBackend::createDefault();
    m_files = parts.files ? parts.files : m_ownFiles.get();
    m_ui = parts.ui ? parts.ui : m_ownUi.get();
    m_locks = parts.locks ? parts.locks : m_ownLocks.get();
    m_authorizationBackend =
        parts.authorization ? parts.authorization : m_ownAuthorizationBackend.get();

    // Each controller is handed the ones made before it; none finds another by itself.
    const RunParts run{m_locations, *m_files, *m_ui,
                       m_formats,   *m_locks, parts.settings.lockWaitMs};
    m_main = std::make_unique<AppController>(run);
    m_pref = std::make_unique<Preferences>(m_main->parts(), m_main->dataFiles()); // seeds defaults
    m_missingItems = std::make_unique<MissingItemsPrompt>(*m_ui);
    m_authorization = std::make_unique<Authorization>(*m_authorizationBackend, *m_ui);
    // The controller owns the shared parts (and the run's, which outlive this call).
    const ManagerParts managerParts{m_main->parts(),
                                    m_main->log(),
                                    m_main->undoHistory(),
                                    m_main->groupRegistry(),
                                    m_main->contentRegistry(),
                                    m_main->dataFiles(),
                                    *m_pref,
                                    *m_missingItems,
                                    *m_authorization,
                                    parts.rights};
    for (const Format &format : m_formats) {
        m_managers.push_back(std::make_unique<FormatManager>(format, managerParts));
        m_managerList << m_managers.back().get();
    }
    m_main->setControllers(m_pref.get(), m_managerList);

    // The info panel follows the tables; the managers only announce.
    m_info = std::make_unique<InfoPanelModel>(*m_main, *m_pref);
    InfoPanelModel *info = m_info.get();
    for (FormatManager *manager : std::as_const(m_managerList)) {
        QObject::connect(manager, &FormatManager::rowSelected, info, [info](const PluginPtr &item) {
            if (info->isVisible())
                info->showInfo(item);
        });
        QObject::connect(manager, &FormatManager::infoRequested, info,
                         [info](const PluginPtr &item, bool showContent) {
                             info->setShowsContent(showContent);
                             if (item)
                                 info->showInfo(item);
                         });
    }
    m_script =
        std::make_unique<LaunchScript>(m_main->parts(), m_managerList, parts.settings.bundle);
    m_about = std::make_unique<AboutText>(parts.settings.resources);

    if (parts.prepareWindow)
        prepareWindow();
}

AppContext::~AppContext()
{
    // Newest first: a controller may still reach older ones while it goes.
    m_about.reset();
    m_script.reset();
    m_info.reset();
    m_managerList.clear();
    while (!m_managers.empty())
        m_managers.pop_back();
    m_authorization.reset();
    m_missingItems.reset();
    m_pref.reset();
    m_main.reset();
}

void AppContext::prepareWindow()
{
    m_main->prepareWindow();
    for (FormatManager *manager : std::as_const(m_managerList))
        manager->sets().loadSetList();
    m_pref->prepareWindow();
}

} // namespace korvane
