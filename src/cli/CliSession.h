#pragma once

#include "cli/CliUi.h"

#include <QByteArray>
#include <QString>
#include <memory>

class QTextStream;

namespace korvane {

class AppContext;
class LibraryLock;
class NullAuthorizationBackend;
class ReadOnlyScope;
class SystemLogCapture;
struct Options;

// Everything one run of the tool sets up and takes down again: the roots from --root and --home
// (in the environment before any controller reads them), the prompt-free interface, no
// authorization prompt, and the diagnostics kept for --verbose. The controllers are made only
// when asked for, so that input can be checked before anything is written. A command that only
// reports runs with read-only file operations from the start: it changes nothing on disk.
class CliSession {
public:
    CliSession(const Options &options, QTextStream &err);
    ~CliSession();
    CliSession(const CliSession &) = delete;
    CliSession &operator=(const CliSession &) = delete;

    // Every controller, installed for the accessors; without the window-load steps and without
    // the start-up that opens default sets.
    void startControllers();

    // Takes the library's lock for the rest of the run; false with the reason when another
    // program holds it past the wait, or it cannot be made.
    bool lockLibrary(QString *failure);

    // Commands that only look: list, duplicates, show-set.
    static bool isReadOnly(const Options &options);

    // "~" and relative paths as the shell would have resolved them, with this run's home.
    static QString resolvePath(const QString &path);

private:
    struct SavedVariable {
        const char *name;
        QByteArray value;
        bool wasSet;
        bool changed;
    };
    void setVariable(SavedVariable &saved, const QString &value);
    void restoreVariable(const SavedVariable &saved);

    QTextStream &m_err;
    bool m_verbose;
    SavedVariable m_root{"KORVANE_ROOT", {}, false, false};
    SavedVariable m_home{"HOME", {}, false, false};
    CliUi m_ui;
    std::unique_ptr<NullAuthorizationBackend> m_authorization;
    std::unique_ptr<SystemLogCapture> m_log;
    std::unique_ptr<ReadOnlyScope> m_readOnly;
    std::unique_ptr<LibraryLock> m_lock;
    std::unique_ptr<AppContext> m_context;
};

} // namespace korvane
