#include "core/PathChecks.h"

#include <QStringList>
#include <cerrno>
#include <cstring>

namespace korvane {

std::optional<FileError> stepOffTheWay(FileOperations &files, const QString &folder,
                                       const QString &path, bool create)
{
    const QString base = folder.endsWith(QLatin1Char('/')) ? folder.chopped(1) : folder;
    const auto refused = [](const QString &at, int code, const QString &reason) {
        return FileError{
            at, reason.isEmpty() ? QString::fromLocal8Bit(std::strerror(code)) : reason, code};
    };
    if (!liesInside(path, base))
        return refused(path, EINVAL, {});
    // Most paths are a folder and a name: no step to look at, and nothing to allocate.
    if (!QStringView(path).mid(base.size() + 1).contains(QLatin1Char('/')))
        return std::nullopt;
    QStringList steps = path.mid(base.size() + 1).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (!steps.isEmpty())
        steps.removeLast();
    QString at = base;
    for (const QString &step : std::as_const(steps)) {
        at += QLatin1Char('/') + step;
        if (step == QLatin1String(".") || step == QLatin1String(".."))
            return refused(at, EINVAL, {});
        std::optional<FileIdentity> found = files.identity(at, false);
        if (!found && create) {
            FileError error;
            if (!files.createDirectory(at, &error) && error.code != EEXIST)
                return error;
            found = files.identity(at, false);
        }
        if (!found)
            return refused(at, ENOENT, {});
        if (found->isLink)
            return refused(
                at, ELOOP,
                QStringLiteral(QT_TRANSLATE_NOOP(
                    "korvane", "A folder on the way is a link; nothing moves through it")));
        if (!found->isFolder)
            return refused(at, ENOTDIR, {});
    }
    return std::nullopt;
}

} // namespace korvane
