#include "probe/ProbeRunner.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QSaveFile>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace korvane {

namespace {

constexpr int kOutOfMemoryExit = 3; // the probe's exit status when an allocation failed
constexpr qsizetype kMaxCacheBytes = 64 * 1024 * 1024;

const char *const kStatusNames[] = {"loaded",        "crashed",    "timed-out",
                                    "out-of-memory", "bad-report", "not-started"};

QString statusName(ProbeResult::Status status)
{
    return QLatin1String(kStatusNames[status]);
}

std::optional<ProbeResult::Status> statusFromName(const QString &name)
{
    for (int i = 0; i <= ProbeResult::NotStarted; ++i) {
        if (name == QLatin1String(kStatusNames[i]))
            return ProbeResult::Status(i);
    }
    return std::nullopt;
}

QString mebibytes(qint64 bytes)
{
    return QString::number(bytes / (1024 * 1024));
}

} // namespace

ProbeRunner::ProbeRunner(QString program, const ProbeLimits &limits)
    : m_program(std::move(program)), m_limits(limits)
{
}

QString ProbeRunner::defaultProgram()
{
    const QString dir = QCoreApplication::applicationDirPath();
    QString beside = dir + QStringLiteral("/korvane-probe");
    if (QFileInfo(beside).isExecutable())
        return beside;
    return QDir::cleanPath(dir + QStringLiteral("/../libexec/korvane/korvane-probe"));
}

QString ProbeRunner::key(const QString &path, const QString &format)
{
    return format + u'\n' + QFileInfo(path).absoluteFilePath();
}

ProbeResult ProbeRunner::probe(const QString &path, const QString &format)
{
    const QFileInfo info(path);
    const qint64 size = info.size();
    const qint64 modified = info.lastModified().toMSecsSinceEpoch();
    const QString k = key(path, format);
    const auto it = m_cache.constFind(k);
    if (it != m_cache.cend() && it->size == size && it->modified == modified && info.exists())
        return it->result;
    ProbeResult result = run(path, format);
    if (result.status != ProbeResult::NotStarted && info.exists())
        m_cache.insert(k, Entry{size, modified, result});
    return result;
}

ProbeResult ProbeRunner::run(const QString &path, const QString &format) const
{
    ProbeResult result;
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    // What the plug-in prints is noise for us; the probe keeps its report apart on stdout.
    process.setStandardErrorFile(QProcess::nullDevice());
    const rlim_t memory = rlim_t(m_limits.memoryBytes);
    process.setChildProcessModifier([memory]() {
        // Between fork and exec: only async-signal-safe calls.
        struct rlimit limit {
            memory, memory
        };
        ::setrlimit(RLIMIT_AS, &limit);
        struct rlimit noCore {
            0, 0
        };
        ::setrlimit(RLIMIT_CORE, &noCore);
        // Its own process group, so that a child the plug-in starts goes when the probe is killed.
        ::setpgid(0, 0);
    });
    process.start(m_program, {QStringLiteral("--format"), format, path}, QIODevice::ReadOnly);
    if (!process.waitForStarted(m_limits.timeoutMs)) {
        result.status = ProbeResult::NotStarted;
        result.message = QStringLiteral("the probe %1 could not be started: %2")
                             .arg(m_program, process.errorString());
        return result;
    }
    const qint64 pid = process.processId();
    auto killGroup = [&]() {
        if (pid > 0)
            ::kill(-pid_t(pid), SIGKILL);
        process.kill();
        process.waitForFinished(5000);
    };

    QByteArray output;
    const QDeadlineTimer deadline(m_limits.timeoutMs);
    bool tooLong = false;
    while (process.state() != QProcess::NotRunning) {
        if (deadline.hasExpired()) {
            killGroup();
            result.status = ProbeResult::TimedOut;
            result.message = QStringLiteral("the plug-in did not answer within %1 s")
                                 .arg((m_limits.timeoutMs + 999) / 1000);
            return result;
        }
        const int slice = int(std::min<qint64>(deadline.remainingTime(), 100));
        // A closed output makes waitForReadyRead return at once; then wait for the end instead.
        if (!process.waitForReadyRead(slice) && process.state() != QProcess::NotRunning)
            process.waitForFinished(std::min(slice, 50));
        output += process.read(m_limits.maxOutput + 1 - output.size());
        if (output.size() > m_limits.maxOutput) {
            tooLong = true;
            killGroup();
            break;
        }
    }
    if (!tooLong)
        output += process.read(m_limits.maxOutput + 1 - output.size());
    if (pid > 0)
        ::kill(-pid_t(pid), SIGKILL); // whatever the plug-in left running

    if (tooLong || output.size() > m_limits.maxOutput) {
        result.status = ProbeResult::BadReport;
        result.message =
            QStringLiteral("the probe's report is longer than %1 bytes").arg(m_limits.maxOutput);
        return result;
    }
    if (process.exitStatus() == QProcess::CrashExit) {
        result.status = ProbeResult::Crashed;
        result.message =
            QStringLiteral("the plug-in crashed while loading: signal %1").arg(process.exitCode());
        return result;
    }
    if (process.exitCode() == kOutOfMemoryExit) {
        result.status = ProbeResult::OutOfMemory;
        result.message =
            QStringLiteral("the plug-in ran out of memory while loading (limit %1 MiB)")
                .arg(mebibytes(m_limits.memoryBytes));
        return result;
    }
    QString error;
    const std::optional<ProbeReport> report = ProbeReport::parse(output, &error);
    if (!report) {
        result.status = ProbeResult::BadReport;
        result.message =
            process.exitCode() != 0
                ? QStringLiteral("the probe failed with exit status %1").arg(process.exitCode())
                : error;
        return result;
    }
    result.status = ProbeResult::Loaded;
    result.report = *report;
    result.message = report->error;
    return result;
}

bool ProbeRunner::saveCache(const QString &file, QString *error) const
{
    QJsonArray entries;
    for (auto it = m_cache.cbegin(); it != m_cache.cend(); ++it) {
        const qsizetype newline = it.key().indexOf(u'\n');
        QJsonObject entry{{QStringLiteral("format"), it.key().left(newline)},
                          {QStringLiteral("path"), it.key().mid(newline + 1)},
                          {QStringLiteral("size"), it->size},
                          {QStringLiteral("modified"), it->modified},
                          {QStringLiteral("status"), statusName(it->result.status)},
                          {QStringLiteral("message"), it->result.message}};
        if (it->result.status == ProbeResult::Loaded)
            entry.insert(QStringLiteral("report"), it->result.report.toJson());
        entries.append(entry);
    }
    const QJsonObject top{{QStringLiteral("korvaneProbeCache"), 1},
                          {QStringLiteral("entries"), entries}};
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(QJsonDocument(top).toJson()) < 0
        || !out.commit()) {
        if (error)
            *error = QStringLiteral("%1 could not be written: %2").arg(file, out.errorString());
        return false;
    }
    return true;
}

bool ProbeRunner::loadCache(const QString &file, QString *error)
{
    QFile in(file);
    if (!in.exists())
        return true;
    if (!in.open(QIODevice::ReadOnly) || in.size() > kMaxCacheBytes) {
        if (error)
            *error = QStringLiteral("%1 could not be read: %2")
                         .arg(file, in.size() > kMaxCacheBytes ? QStringLiteral("too large")
                                                               : in.errorString());
        return false;
    }
    const QJsonDocument document = QJsonDocument::fromJson(in.read(kMaxCacheBytes));
    if (!document.isObject()
        || document.object().value(QLatin1String("korvaneProbeCache")).toInt() != 1) {
        if (error)
            *error = QStringLiteral("%1 is not a probe cache").arg(file);
        return false;
    }
    const QJsonArray entries = document.object().value(QLatin1String("entries")).toArray();
    for (const auto &item : entries) {
        const QJsonObject entry = item.toObject();
        const auto status = statusFromName(entry.value(QLatin1String("status")).toString());
        const QString path = entry.value(QLatin1String("path")).toString();
        const QString format = entry.value(QLatin1String("format")).toString();
        if (!status || *status == ProbeResult::NotStarted || path.isEmpty() || format.isEmpty())
            continue;
        Entry cached;
        cached.size = qint64(entry.value(QLatin1String("size")).toDouble(-1));
        cached.modified = qint64(entry.value(QLatin1String("modified")).toDouble());
        cached.result.status = *status;
        cached.result.message = entry.value(QLatin1String("message")).toString();
        if (*status == ProbeResult::Loaded) {
            const auto report =
                ProbeReport::fromJson(entry.value(QLatin1String("report")).toObject());
            if (!report)
                continue;
            cached.result.report = *report;
        }
        m_cache.insert(format + u'\n' + path, cached);
    }
    return true;
}

} // namespace korvane
