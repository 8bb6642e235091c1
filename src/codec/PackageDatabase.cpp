#include "codec/PackageDatabase.h"

#include "codec/FileBytes.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSet>

#include <algorithm>

namespace korvane {

namespace {

QByteArray withoutTrailingSlash(QByteArray path)
{
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path;
}

// Runs a program with an argument list, reading at most maxOutput bytes of its standard output.
bool run(const QString &program, const QStringList &arguments, qsizetype maxOutput, int timeoutMs,
         QByteArray *output, QString *error)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments, QIODevice::ReadOnly);
    if (!process.waitForStarted(timeoutMs)) {
        *error = QStringLiteral("%1 could not be started: %2").arg(program, process.errorString());
        return false;
    }
    QDeadlineTimer deadline(timeoutMs);
    while (process.state() != QProcess::NotRunning) {
        if (deadline.hasExpired() || output->size() > maxOutput) {
            process.kill();
            process.waitForFinished(1000);
            *error = output->size() > maxOutput
                         ? QStringLiteral("%1 wrote more than %2 bytes").arg(program).arg(maxOutput)
                         : QStringLiteral("%1 did not answer within %2 s")
                               .arg(program)
                               .arg(timeoutMs / 1000);
            return false;
        }
        process.waitForReadyRead(int(std::min<qint64>(deadline.remainingTime(), 250)));
        *output += process.readAllStandardOutput();
    }
    *output += process.readAllStandardOutput();
    if (output->size() > maxOutput) {
        *error = QStringLiteral("%1 wrote more than %2 bytes").arg(program).arg(maxOutput);
        return false;
    }
    return true;
}

} // namespace

PackageDatabase PackageDatabase::open(const QString &root, const QStringList &prefixes,
                                      const QString &rpmProgram, const Limits &limits)
{
    PackageDatabase database;
    database.m_root = root;
    database.m_limits = limits;
    for (const QString &prefix : prefixes)
        database.m_prefixes.append(withoutTrailingSlash(QDir::cleanPath(prefix).toUtf8()));

    const QDir info(root + QStringLiteral("/var/lib/dpkg/info"));
    if (info.exists()) {
        database.m_kind = Dpkg;
        const QStringList lists =
            info.entryList({QStringLiteral("*.list")}, QDir::Files, QDir::Name);
        for (const QString &name : lists) {
            const FileBytes file = FileBytes::read(info.filePath(name), limits.maxListBytes);
            if (!file.error.isEmpty()) {
                database.m_problems.append(
                    QStringLiteral("%1 %2").arg(info.filePath(name), file.error));
                continue;
            }
            database.addList(name.chopped(5), file.bytes);
        }
        return database;
    }
    if (QFileInfo(root + QStringLiteral("/var/lib/rpm")).isDir() && !rpmProgram.isEmpty()) {
        database.m_kind = Rpm;
        database.m_rpm = rpmProgram;
    }
    return database;
}

void PackageDatabase::addList(const QString &package, QByteArrayView bytes)
{
    if (package.isEmpty())
        return;
    int index = int(m_packages.indexOf(package));
    if (index < 0) {
        index = int(m_packages.size());
        m_packages.append(package);
    }
    qsizetype start = 0;
    while (start < bytes.size()) {
        qsizetype end = bytes.indexOf('\n', start);
        if (end < 0)
            end = bytes.size();
        QByteArrayView line = bytes.sliced(start, end - start);
        start = end + 1;
        if (line.endsWith('\r'))
            line.chop(1);
        if (!line.startsWith('/'))
            continue;
        const QByteArray path = withoutTrailingSlash(line.toByteArray());
        if (!m_prefixes.isEmpty()) {
            const bool wanted =
                std::any_of(m_prefixes.cbegin(), m_prefixes.cend(), [&](const QByteArray &prefix) {
                    return path.startsWith(prefix)
                           && (path.size() == prefix.size() || path[prefix.size()] == '/'
                               || prefix == "/");
                });
            if (!wanted)
                continue;
        }
        auto it = m_paths.find(path);
        if (it == m_paths.end()) {
            m_paths.insert(path, index);
        } else if (*it >= 0) {
            if (*it != index) {
                m_shared.append({*it, index});
                *it = -int(m_shared.size());
            }
        } else {
            QList<int> &owners = m_shared[-*it - 1];
            if (!owners.contains(index))
                owners.append(index);
        }
    }
}

QStringList PackageDatabase::lookup(const QByteArray &path) const
{
    QStringList names;
    const auto it = m_paths.constFind(path);
    if (it == m_paths.cend())
        return names;
    if (*it >= 0) {
        names.append(m_packages.at(*it));
    } else {
        for (int index : m_shared.at(-*it - 1))
            names.append(m_packages.at(index));
    }
    names.sort();
    return names;
}

QStringList PackageDatabase::owners(const QString &path)
{
    return owners(QStringList{path}).value(path);
}

QHash<QString, QStringList> PackageDatabase::owners(const QStringList &paths)
{
    QHash<QString, QStringList> found;
    if (m_kind == Rpm) {
        QStringList missing;
        for (const QString &path : paths) {
            if (!m_asked.contains(path))
                missing.append(path);
        }
        if (!missing.isEmpty())
            askRpm(missing);
        for (const QString &path : paths) {
            const QStringList names = m_asked.value(path);
            if (!names.isEmpty())
                found.insert(path, names);
        }
        return found;
    }
    for (const QString &path : paths) {
        const QByteArray clean = withoutTrailingSlash(QDir::cleanPath(path).toUtf8());
        QStringList names = lookup(clean);
        if (names.isEmpty() && clean.startsWith("/usr/"))
            names = lookup(clean.mid(4));
        if (!names.isEmpty())
            found.insert(path, names);
    }
    return found;
}

// Two questions, each one batch: which packages own the paths (rpm -qf prints a package per
// owner, or a sentence for a path nobody owns, so its lines cannot be matched to the paths), then
// every file of those packages, from which each path finds its owners.
void PackageDatabase::askRpm(const QStringList &paths)
{
    for (const QString &path : paths)
        m_asked.insert(path, {});
    QByteArray output;
    QString error;
    QStringList arguments{QStringLiteral("--root"), m_root, QStringLiteral("-qf"),
                          QStringLiteral("--queryformat"), QStringLiteral("%{NAME}\\n")};
    // rpm exits 1 when any path is unowned; the answer is still in its output.
    run(m_rpm, arguments + paths, m_limits.maxRpmOutput, m_limits.rpmTimeoutMs, &output, &error);
    if (!error.isEmpty()) {
        m_problems.append(error);
        return;
    }
    QSet<QString> packages;
    for (const QByteArray &line : output.split('\n')) {
        const QByteArray name = line.trimmed();
        if (!name.isEmpty() && !name.contains(' ') && !name.contains(':'))
            packages.insert(QString::fromUtf8(name));
    }
    if (packages.isEmpty())
        return;
    QStringList names(packages.cbegin(), packages.cend());
    names.sort();
    output.clear();
    arguments =
        QStringList{QStringLiteral("--root"), m_root, QStringLiteral("-q"),
                    QStringLiteral("--queryformat"), QStringLiteral("[%{FILENAMES}\\t%{NAME}\\n]")};
    run(m_rpm, arguments + names, m_limits.maxRpmOutput, m_limits.rpmTimeoutMs, &output, &error);
    if (!error.isEmpty()) {
        m_problems.append(error);
        return;
    }
    QHash<QString, QString> wanted; // cleaned path -> the path as asked
    for (const QString &path : paths)
        wanted.insert(QDir::cleanPath(path), path);
    for (const QByteArray &line : output.split('\n')) {
        const qsizetype tab = line.lastIndexOf('\t');
        if (tab <= 0)
            continue;
        const QString file = QDir::cleanPath(QString::fromUtf8(line.left(tab)));
        const auto it = wanted.constFind(file);
        if (it == wanted.cend())
            continue;
        QStringList &owners = m_asked[*it];
        const QString name = QString::fromUtf8(line.mid(tab + 1).trimmed());
        if (!name.isEmpty() && !owners.contains(name)) {
            owners.append(name);
            owners.sort();
        }
    }
}

} // namespace korvane
