#include "cli/CliSession.h"

#include "core/LinuxFormats.h"

#include "app/AppContext.h"
#include "cli/Options.h"
#include "cli/ShownText.h"
#include "core/FormatTable.h"
#include "core/LinuxFormats.h"
#include "core/Locations.h"
#include "os/AllowAllAuthorization.h"
#include "os/LibraryLock.h"
#include "os/LocalFileOperations.h"
#include "os/ReadOnlyFileOperations.h"
#include "os/SystemLog.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <unistd.h>

namespace korvane {

namespace {

// Progress is for a person watching; a pipe or a log file gets none.
QTextStream *progressStream(QTextStream &err)
{
    auto *file = qobject_cast<QFile *>(err.device());
    if (!file || file->handle() != STDERR_FILENO || !::isatty(STDERR_FILENO))
        return nullptr;
    return &err;
}

} // namespace

CliSession::CliSession(const Options &options, const Environment &environment, QTextStream &err)
    : m_err(err), m_verbose(options.verbose),
      m_roots(environment.roots.withOptions(options.root, options.home)),
      m_settings(environment.settings), m_ui(progressStream(err)),
      m_local(std::make_unique<LocalFileOperations>(m_roots)),
      m_authorization(std::make_unique<AllowAllAuthorization>()),
      m_log(std::make_unique<SystemLogCapture>())
{
    if (isReadOnly(options))
        m_readOnly = std::make_unique<ReadOnlyFileOperations>(*m_local);
    // What the window would show in its log and a person must know (a move to the trash, a
    // damaged file kept aside) is said at once, with or without --verbose.
    m_log->setNoticeHandler([this](const QString &text) {
        m_ui.clearLine();
        m_err << "KorvaneCMD: " << shownLine(text) << '\n';
        m_err.flush();
    });
}

CliSession::~CliSession()
{
    m_context.reset();
    m_lock.reset(); // nothing moves any more
    if (m_verbose) {
        QStringList said = m_log->notices();
        for (const QString &line : m_log->lines())
            if (!said.removeOne(line))
                m_err << "log: " << line << '\n';
        for (const QString &line : m_ui.answeredAlerts())
            m_err << "answered: " << line << '\n';
        m_err.flush();
    }
}

FileOperations &CliSession::files() const
{
    if (m_readOnly)
        return *m_readOnly;
    return *m_local;
}

AppContext &CliSession::controllers()
{
    if (!m_context) {
        AppContext::Parts parts;
        parts.roots = m_roots;
        parts.settings = m_settings;
        parts.formats = withRunFolders(FormatTable::builtIn(), m_roots, m_roots.pluginPaths);
        parts.files = &files();
        parts.ui = &m_ui;
        parts.locks = &m_locks; // the managers share the run's lock
        // A polkit prompt would hang a launch script: the tool asks for no rights.
        parts.authorization = m_authorization.get();
        parts.prepareWindow = false;
        m_context = std::make_unique<AppContext>(std::move(parts));
    }
    return *m_context;
}

bool CliSession::lockLibrary(QString *failure, bool *heldByAnother)
{
    // Every format's folders: the run may touch any of them.
    if (!m_lock)
        m_lock = std::make_unique<LibraryLock>(
            m_locks, files(),
            Locations(m_roots).pluginFolders(
                withRunFolders(FormatTable::builtIn(), m_roots, m_roots.pluginPaths)),
            m_settings.lockWaitMs);
    if (!m_lock->isLocked() && failure)
        *failure = m_lock->failure();
    if (heldByAnother)
        *heldByAnother = !m_lock->isLocked() && !m_lock->holder().isEmpty();
    return m_lock->isLocked();
}

bool CliSession::isReadOnly(const Options &options)
{
    return options.check || options.command == Options::List
           || options.command == Options::Duplicates || options.command == Options::ShowSet
           || options.command == Options::Details || options.command == Options::Backup;
}

QStringList CliSession::notices() const
{
    return m_log->notices();
}

QString CliSession::resolvePath(const QString &path) const
{
    QString resolved = path;
    if (resolved == QLatin1String("~") || resolved.startsWith(QLatin1String("~/")))
        resolved = m_roots.home + resolved.mid(1);
    return QFileInfo(resolved).absoluteFilePath();
}

} // namespace korvane
