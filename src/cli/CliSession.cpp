#include "cli/CliSession.h"

#include "cli/Options.h"
#include "platform/LibraryLock.h"
#include "platform/Locations.h"
#include "platform/ReadOnlyFileOperations.h"
#include "platform/SharedInstances.h"
#include "platform/SystemLog.h"
#include "privileged/NullAuthorizationBackend.h"
#include "shell/AppContext.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <unistd.h>

namespace korvane {

namespace {

// Progress is for a person watching; a pipe or a log file gets none.
QTextStream *progressStream(QTextStream &err) {
    auto *file = qobject_cast<QFile *>(err.device());
    if (!file || file->handle() != STDERR_FILENO || !::isatty(STDERR_FILENO))
        return nullptr;
    return &err;
}

} // namespace

CliSession::CliSession(const Options &options, QTextStream &err)
    : m_err(err), m_verbose(options.verbose), m_ui(progressStream(err)),
      m_authorization(std::make_unique<NullAuthorizationBackend>()),
      m_log(std::make_unique<SystemLogCapture>()) {
    if (!options.root.isEmpty())
        setVariable(m_root, QFileInfo(options.root).absoluteFilePath());
    if (!options.home.isEmpty())
        setVariable(m_home, QFileInfo(options.home).absoluteFilePath());
    if (isReadOnly(options))
        m_readOnly = std::make_unique<ReadOnlyScope>();
    UserInterface::setCurrent(&m_ui);
    // Nothing depends on the activation right, and a prompt would hang a launch script.
    AuthorizationBackend::setCurrent(m_authorization.get());
}

CliSession::~CliSession() {
    m_context.reset();
    resetSharedInstances();
    m_lock.reset(); // nothing moves any more
    m_readOnly.reset();
    AuthorizationBackend::setCurrent(nullptr);
    UserInterface::setCurrent(nullptr);
    if (m_verbose) {
        for (const QString &line : m_log->lines())
            m_err << "log: " << line << '\n';
        for (const QString &line : m_ui.answeredAlerts())
            m_err << "answered: " << line << '\n';
        m_err.flush();
    }
    m_log.reset();
    restoreVariable(m_home);
    restoreVariable(m_root);
}

void CliSession::startControllers() {
    if (!m_context)
        m_context = std::make_unique<AppContext>(AppContext::Options{false});
}

bool CliSession::lockLibrary(QString *failure) {
    if (!m_lock)
        m_lock = std::make_unique<LibraryLock>();
    if (!m_lock->isLocked() && failure)
        *failure = m_lock->failure();
    return m_lock->isLocked();
}

bool CliSession::isReadOnly(const Options &options) {
    return options.command == Options::List || options.command == Options::Duplicates ||
           options.command == Options::ShowSet;
}

QString CliSession::resolvePath(const QString &path) {
    QString resolved = path;
    if (resolved == QLatin1String("~") || resolved.startsWith(QLatin1String("~/")))
        resolved = Locations::home() + resolved.mid(1);
    return QFileInfo(resolved).absoluteFilePath();
}

void CliSession::setVariable(SavedVariable &saved, const QString &value) {
    saved.wasSet = qEnvironmentVariableIsSet(saved.name);
    saved.value = qgetenv(saved.name);
    saved.changed = true;
    qputenv(saved.name, QFile::encodeName(value));
}

void CliSession::restoreVariable(const SavedVariable &saved) {
    if (!saved.changed)
        return;
    if (saved.wasSet)
        qputenv(saved.name, saved.value);
    else
        qunsetenv(saved.name);
}

} // namespace korvane
