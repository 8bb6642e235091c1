#pragma once

#include "core/ActivityLog.h"
#include "core/ContentRegistry.h"
#include "core/DataFiles.h"
#include "core/GroupRegistry.h"
#include "core/RunParts.h"
#include "core/UndoHistory.h"

#include <QObject>

namespace korvane {

class FileOperations;
class FormatTable;
class Locations;
class UserInterface;

// The shared parts of one run, each with its own state and signals: the log, the undo history,
// the data files, the group registry and the content registry. It only owns them and hands them
// out; a class that needs one or two is handed those, not this. AppController (app/) derives
// from it and adds start-up, tabs and routing.
class AppServices : public QObject {
    Q_OBJECT
public:
    explicit AppServices(const RunParts &parts); // loads the group registry, then the content one
    ~AppServices() override;

    const Locations &locations() const { return m_parts.locations; }
    FileOperations &files() const { return m_parts.files; }
    UserInterface &ui() const { return m_parts.ui; }
    const FormatTable &formats() const { return m_parts.formats; }
    const RunParts &parts() const { return m_parts; }

    ActivityLog &log() { return m_log; }
    const ActivityLog &log() const { return m_log; }
    UndoHistory &undoHistory() { return m_undo; }
    DataFiles &dataFiles() { return m_dataFiles; }
    GroupRegistry &groupRegistry() { return m_groups; }
    const GroupRegistry &groupRegistry() const { return m_groups; }
    ContentRegistry &contentRegistry() { return m_content; }

    // The format whose tab is in front (0 AU, 1 RTAS, 2 MAS, 3 VST, ...); the controller's tabs
    // answer.
    virtual int activeType() const { return m_activeType; }
    virtual void setActiveType(int type);

private:
    RunParts m_parts;
    // In this order: the data files log their failures, and both registries write through them.
    ActivityLog m_log;
    UndoHistory m_undo;
    DataFiles m_dataFiles;
    GroupRegistry m_groups;
    ContentRegistry m_content;
    int m_activeType = 0;
};

} // namespace korvane
