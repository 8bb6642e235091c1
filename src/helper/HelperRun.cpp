#include "helper/HelperRun.h"

#include "core/FormatTable.h"
#include "os/FileOperations.h"
#include "os/LibraryLock.h"
#include "os/LockTable.h"

#include <QDir>
#include <QFileInfo>

namespace korvane::helper {

namespace {

// Long enough for any apply another mover may be in the middle of; a request cannot make root
// wait longer.
constexpr int kMaxWaitMs = 10 * 60 * 1000;

bool isPlainAbsolute(const QString &path)
{
    return path.startsWith(QLatin1Char('/')) && QDir::cleanPath(path) == path;
}

} // namespace

std::optional<HelperArguments> parseArguments(const QStringList &arguments, QString *why)
{
    const auto refuse = [why](const QString &reason) {
        *why = reason;
        return std::nullopt;
    };
    QString root, home;
    std::optional<int> waitMs;
    for (qsizetype i = 0; i < arguments.size(); i += 2) {
        const QString &name = arguments.at(i);
        if (i + 1 >= arguments.size())
            return refuse(QStringLiteral("%1 needs a value").arg(name));
        const QString &value = arguments.at(i + 1);
        if (name == QLatin1String("--root") && root.isNull()) {
            root = value;
        } else if (name == QLatin1String("--home") && home.isNull()) {
            home = value;
        } else if (name == QLatin1String("--wait-ms") && !waitMs) {
            bool ok = false;
            waitMs = value.toInt(&ok);
            if (!ok || *waitMs < 0 || *waitMs > kMaxWaitMs)
                return refuse(
                    QStringLiteral("--wait-ms takes 0 to %1 milliseconds").arg(kMaxWaitMs));
        } else {
            return refuse(QStringLiteral("unknown or repeated argument \"%1\"").arg(name));
        }
    }
    if (root.isNull() || home.isNull())
        return refuse(QStringLiteral("--root and --home are both needed"));
    for (const QString &folder : {root, home})
        if (!isPlainAbsolute(folder) || !QFileInfo(folder).isDir())
            return refuse(QStringLiteral("\"%1\" is no absolute path of a folder").arg(folder));
    HelperArguments parsed{Roots::at(root, home)};
    if (waitMs)
        parsed.waitMs = *waitMs;
    return parsed;
}

int runRequest(const QByteArray &request, const HelperArguments &arguments, FileOperations &files,
               const std::function<void(const QByteArray &line)> &write, const OwnedPrefixes &owned)
{
    Ending ending;
    const auto end = [&](Ending::Kind kind, int exit) {
        ending.kind = kind;
        write(encodeEnding(ending));
        return exit;
    };
    const std::optional<QList<Move>> moves = decodeRequest(request, &ending.error);
    if (!moves)
        return end(Ending::Refused, ExitRefused);
    const SystemFolders folders(FormatTable::builtIn(), arguments.roots, owned);
    if (const std::optional<Refusal> refused = folders.check(*moves)) {
        ending.path = refused->path;
        ending.error = refused->reason;
        return end(Ending::Refused, ExitRefused);
    }
    if (moves->isEmpty())
        return end(Ending::Done, ExitAllMoved);

    // The same lock as every other mover's, taken as root: it excludes them and they exclude it.
    LockTable locks; // the run's: this lock is its only one
    const LibraryLock lock(locks, files, folders.lockFolders(*moves), arguments.waitMs);
    if (!lock.isLocked()) {
        ending.error = lock.failure();
        ending.holder = lock.holder();
        return end(Ending::LockNotTaken, ExitLockNotTaken);
    }
    const BatchScope batch(files);
    for (const Move &move : *moves) {
        MoveResult result;
        result.move = move;
        FileError error;
        if (std::optional<FileError> refused = folders.prepare(files, move))
            error = *refused;
        else
            result.ok = files.move(move.from, move.to, &error);
        if (!result.ok) {
            result.error = QStringLiteral("%1: %2").arg(error.path, error.reason);
            result.code = error.code;
        }
        ++(result.ok ? ending.moved : ending.failed);
        write(encodeResult(result));
    }
    return end(Ending::Done, ending.failed == 0 ? ExitAllMoved : ExitSomeFailed);
}

} // namespace korvane::helper
