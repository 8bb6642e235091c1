#pragma once

#include "cli/CliUi.h"

#include <QByteArray>
#include <QString>
#include <memory>

class QTextStream;

namespace korvane {

class NullAuthorizationBackend;
class SystemLogCapture;
struct Options;

// Everything one run of the tool sets up and takes down again: the roots from --root and --home
// (in the environment before any controller reads them), the prompt-free interface, no
// authorization prompt, and the diagnostics kept for --verbose. The controllers it lets the
// accessors create are dropped when it goes.
class CliSession {
public:
    CliSession(const Options &options, QTextStream &err);
    ~CliSession();
    CliSession(const CliSession &) = delete;
    CliSession &operator=(const CliSession &) = delete;

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
};

} // namespace korvane
