#pragma once

#include "core/DataFileSaver.h"
#include "core/UndoStack.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>
#include <optional>

namespace korvane {

class ScanCache;

class FileOperations;
class FormatTable;
struct FileError;
class Locations;
class LockTable;
class UserInterface;

// What the person chose after a file operation failed.
enum class FileErrorAnswer { Proceed, Stop };

// What every controller of one run works with: where its paths lie, how it touches the disk,
// whom it asks, and which formats it knows. AppContext makes them and outlives every user.
struct RunParts {
    const Locations &locations;
    FileOperations &files;
    UserInterface &ui;
    const FormatTable &formats;
    LockTable &locks;    // the folder locks the run holds, shared by every mover in it
    int lockWaitMs = -1; // how long a mover waits for another's lock; negative: the lock's own
};

// The part of the application controller that every lower layer shares: the content registry, the
// group registry and its submenu, the log text, the undo stack with its menu titles, and the
// answer to a failed file operation. AppController (app/) derives from it and adds start-up, tabs
// and routing; the layers below the application are handed it as AppServices.
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

    // --- Content registry -------------------------------------------------------------------
    void loadContentRegistry();
    std::optional<QStringList> contentFor(const QString &key);
    void storeContent(const QStringList &entry);
    QStringList withoutContentPaths(int type, const QStringList &scanPaths);
    QString fullPath(const QString &name, int type, int loc) const; // empty: out of range
    QStringList relevantPaths(int type, int loc, const QStringList &scanPaths,
                              ScanCache *cache = nullptr);
    void createFolders(const QString &path);
    // "~/Library/Application Support/Korvane" and any of its missing parents, before a data file
    // is written into it.
    void createSupportFolder();
    const QList<QStringList> &contentRegistry() const { return m_content; }

    // Writes one of the program's data files atomically; a file there that readable rejects is
    // first kept aside, and the log window says so. False when nothing was written.
    bool writeDataFile(const QString &path, const QVariant &root,
                       const std::function<bool(const QString &path)> &readable);
    // Every data file is written through here, so each failed write is said with its remedies.
    DataFileSaver &dataFileSaver() { return m_saver; }

    // --- Group registry ---------------------------------------------------------------------
    void loadGroups();
    void saveGroupRegistry(); // the whole list to groups.plist, at quit
    // "No group" first, then every group by name; a plug-in's group is a position in it.
    QStringList &groups() { return m_groups; }
    // The named groups, as the group editor lists them: the i-th from 0, "no group" aside.
    int groupCount() const;
    QString groupAt(int i) const;
    void setGroupAt(int i, const QString &name);
    void addGroup();
    // The editor table's selected row, -1 for none; asks first, naming how many plug-ins are in
    // the group. Its members are left without a group; every other assignment stays.
    void removeGroup(int selectedRow);
    // How many plug-ins are in the group at position; the controller counts its managers'.
    virtual int groupMemberCount(int position) const
    {
        (void)position;
        return 0;
    }
    void showGroups();
    // The group submenu, as the titles of the items added behind the fixed "none" item.
    void updateGroupMenu();
    QStringList groupMenuTitles() const { return m_groupMenuTitles; }

    // --- Log window -------------------------------------------------------------------------
    void showLog();
    void hideLog(); // also what closing the window by its close box does
    void appendLog(const QString &entry);
    QString logText() const { return m_logText; }
    bool isLogVisible() const { return m_logVisible; }
    bool isShowLogEnabled() const { return m_showLogEnabled; }

    // --- Undo -------------------------------------------------------------------------------
    UndoStack *undoStack() { return &m_undoStack; }
    void undo();
    void redo();
    void updateUndoTitle();
    void updateRedoTitle();
    QString undoTitle() const { return m_undoTitle; }
    QString redoTitle() const { return m_redoTitle; }

    // --- File-operation errors --------------------------------------------------------------
    // Shows the failure and asks whether the rest of the work goes on ("Proceed or Stop?").
    FileErrorAnswer askToProceedAfter(const FileError &error);

    // The format whose tab is in front (0 AU, 1 RTAS, 2 MAS, 3 VST, ...); the controller's tabs
    // answer.
    virtual int activeType() const { return m_activeType; }
    virtual void setActiveType(int type);

signals:
    void logChanged();
    void logVisibilityChanged(bool visible);
    void undoTitlesChanged();
    void groupsChanged();
    void groupRemoved(int position); // members renumber before groupsChanged
    void groupMenuChanged();
    void groupEditorShown();

protected:
    void writeContentFile();
    QString userContentFile() const;
    QString groupsFile() const;

    RunParts m_parts;
    QList<QStringList> m_content;
    bool m_contentLoaded = false;
    QStringList m_groups;
    QStringList m_groupMenuTitles;
    UndoStack m_undoStack;
    DataFileSaver m_saver;
    QString m_undoTitle;
    QString m_redoTitle;
    QString m_logText;
    bool m_logVisible = false;
    bool m_showLogEnabled = true;
    int m_activeType = 0;
};

} // namespace korvane
