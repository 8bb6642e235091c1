#pragma once

#include "probe/ProbeReport.h"

#include <QDateTime>
#include <QHash>
#include <QString>

namespace korvane {

// The outcome of probing one binary: the report, or what went wrong, said for the person who
// asked ("the plug-in crashed while loading: signal 11").
struct ProbeResult {
    enum Status {
        Loaded,      // the probe loaded the binary and reported (report.error may still be set:
                     // no entry point, a library that cannot be loaded)
        Crashed,     // the probe died of a signal while the plug-in was loading or answering
        TimedOut,    // no answer within the time limit; the probe was killed
        OutOfMemory, // the plug-in went past the memory limit
        BadReport,   // the probe's output was not a report (or too long)
        NotStarted,  // the probe program could not be started; not cached
    };
    Status status = NotStarted;
    QString message; // empty when Loaded without report.error
    ProbeReport report;

    // Loaded, and the probe found the entry point.
    bool ok() const { return status == Loaded && report.error.isEmpty(); }
};

struct ProbeLimits {
    int timeoutMs = 10000;
    qint64 memoryBytes = qint64(2) << 30; // address space of the probe process
    qsizetype maxOutput = 4 * 1024 * 1024;
};

// Runs korvane-probe on a binary in its own process with a time and memory limit and reads its
// report; remembers results by path, size and modification time (in memory, and in a cache file
// when asked). Never loads plug-in code itself.
class ProbeRunner {
public:
    explicit ProbeRunner(QString program = defaultProgram(), const ProbeLimits &limits = {});

    // The probe beside the running program, else in ../libexec/korvane.
    static QString defaultProgram();

    // format: "auto", "ladspa", "dssi" or "clap". A cached result is returned while the file's
    // size and modification time are unchanged.
    ProbeResult probe(const QString &path, const QString &format = QStringLiteral("auto"));
    // Runs the probe without the cache.
    ProbeResult run(const QString &path, const QString &format) const;

    // The cache file: a JSON file written atomically. A missing file is an empty cache; a file
    // that cannot be read leaves the cache as it was and says why.
    bool loadCache(const QString &file, QString *error = nullptr);
    bool saveCache(const QString &file, QString *error = nullptr) const;
    void clearCache() { m_cache.clear(); }
    qsizetype cacheSize() const { return m_cache.size(); }

private:
    struct Entry {
        qint64 size = -1;
        qint64 modified = 0; // ms since the epoch
        ProbeResult result;
    };
    static QString key(const QString &path, const QString &format);

    QString m_program;
    ProbeLimits m_limits;
    QHash<QString, Entry> m_cache;
};

} // namespace korvane
