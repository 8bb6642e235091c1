#pragma once

namespace korvane {

class FormatManager;
struct ManagerParts;

// The maintenance commands of a format: info on the selected plug-in, the duplicate report in the
// log, moving the selected plug-ins to the trash, switching plug-ins by architecture, and a
// backup of the format's plug-ins with its restore (PluginBackup, with its dialogs).
class Maintenance {
public:
    Maintenance(FormatManager &manager, const ManagerParts &parts);

    void requestInfo();
    void reportDuplicates();
    void moveSelectedToTrash();
    // Marks every plug-in that Plugin::holds the command's architecture
    // (Plugin::ArchitectureCommand).
    void setArchitectureActive(int command, bool active);
    void backup();
    void restoreBackup();

private:
    FormatManager &m_manager;
    const ManagerParts &m_parts;
};

} // namespace korvane
