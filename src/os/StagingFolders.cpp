#include "os/StagingFolders.h"

#include "os/ProcessList.h"

#include <QList>

#include <algorithm>

#include <unistd.h>

namespace korvane {

namespace {

const QString kStagingPrefix = QStringLiteral(".korvane-");
const QString kPartialKind = QStringLiteral(".partial");
const QString kRemovingKind = QStringLiteral(".removing");

struct Process {
    qint64 pid = 0;
    quint64 start = 0; // 0: /proc cannot tell
};

const Process &self()
{
    static const Process process{::getpid(), processStartTime(::getpid()).value_or(0)};
    return process;
}

QString stagingName(const QString &kind, int n)
{
    QString name = kStagingPrefix + QString::number(self().pid) + QLatin1Char('-')
                   + QString::number(self().start);
    if (n > 1)
        name += QLatin1Char('-') + QString::number(n);
    return name + kind;
}

bool isNumber(QStringView text)
{
    return !text.isEmpty()
           && std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); });
}

} // namespace

QString StagingFolders::partialName()
{
    return stagingName(kPartialKind, 1);
}

QString StagingFolders::removingName(int n)
{
    return stagingName(kRemovingKind, n);
}

std::optional<StagingFolders::Owner> StagingFolders::parse(const QString &name)
{
    if (!name.startsWith(kStagingPrefix))
        return std::nullopt;
    const bool removing = name.endsWith(kRemovingKind);
    if (!removing && !name.endsWith(kPartialKind))
        return std::nullopt;
    const QStringView middle = QStringView(name).mid(
        kStagingPrefix.size(),
        name.size() - kStagingPrefix.size() - (removing ? kRemovingKind : kPartialKind).size());
    const QList<QStringView> parts = middle.split(QLatin1Char('-'));
    if (parts.size() < 2 || parts.size() > 3 || !std::all_of(parts.begin(), parts.end(), isNumber))
        return std::nullopt;
    bool ok = false;
    const qint64 pid = parts.at(0).toLongLong(&ok);
    bool startOk = false;
    const quint64 start = parts.at(1).toULongLong(&startOk);
    if (!ok || !startOk || pid <= 0)
        return std::nullopt;
    return Owner{pid, start, removing};
}

bool StagingFolders::isBusy(const Owner &staging)
{
    if (staging.pid == self().pid && staging.start == self().start)
        return false;
    // Without /proc nobody can tell whether the process is gone: its work stays untouched.
    if (self().start == 0)
        return true;
    const std::optional<quint64> start = processStartTime(staging.pid);
    return start && *start == staging.start;
}

} // namespace korvane
