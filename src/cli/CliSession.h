#pragma once

#include "cli/CliUi.h"
#include "os/Environment.h"
#include "os/LockTable.h"

#include <QString>
#include <memory>

class QTextStream;

namespace korvane {

class AppContext;
class FileOperations;
class LibraryLock;
class LocalFileOperations;
class AllowAllAuthorization;
class ReadOnlyFileOperations;
class SystemLogCapture;
struct Options;

// Everything one run of the tool sets up and takes down again: the roots (the program's defaults
// with --root and --home over them), the prompt-free interface, no authorization prompt, and the
// diagnostics kept for --verbose. The controllers are made only when asked for, so that input can
// be checked before anything is written. A command that only reports, and a mover with --check,
// runs on read-only file operations from the start: it changes nothing on disk.
class CliSession {
public:
    CliSession(const Options &options, const Environment &environment, QTextStream &err);
    ~CliSession();
    CliSession(const CliSession &) = delete;
    CliSession &operator=(const CliSession &) = delete;

    // Every controller, without the window-load steps and without the start-up that opens
    // default sets.
    AppContext &controllers();

    // Locks the folders of every format's plug-ins for the rest of the run; false with the reason
    // when another program holds them past the wait (heldByAnother), or they cannot be locked.
    bool lockLibrary(QString *failure, bool *heldByAnother = nullptr);

    const Roots &roots() const { return m_roots; }
    FileOperations &files() const;

    // Commands that only look: list, duplicates, show-set, and every mover with --check.
    static bool isReadOnly(const Options &options);

    // What the run said that a person must know (the trash, a damaged file kept aside), in order.
    QStringList notices() const;

    // "~" and relative paths as the shell would have resolved them, with this run's home.
    QString resolvePath(const QString &path) const;

private:
    QTextStream &m_err;
    bool m_verbose;
    Roots m_roots;
    RunSettings m_settings;
    CliUi m_ui;
    std::unique_ptr<LocalFileOperations> m_local;
    std::unique_ptr<ReadOnlyFileOperations> m_readOnly;
    std::unique_ptr<AllowAllAuthorization> m_authorization;
    std::unique_ptr<SystemLogCapture> m_log;
    LockTable m_locks; // outlives the lock and the controllers below
    std::unique_ptr<LibraryLock> m_lock;
    std::unique_ptr<AppContext> m_context;
};

} // namespace korvane
