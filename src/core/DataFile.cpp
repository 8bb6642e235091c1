#include "core/DataFile.h"

#include "codec/PropertyList.h"
#include "core/Texts.h"
#include "os/FileOperations.h"
#include "os/PathBytes.h"
#include "os/SystemLog.h"

#include <QDateTime>
#include <sys/stat.h>

namespace korvane {

namespace {
// Enough for a file damaged again and again within one second; past it something else is wrong.
constexpr int kMaxCounter = 100;
} // namespace

bool DataFile::keep(FileOperations &files, const QString &path, QString *report)
{
    // A run that only reports writes nothing, so it has nothing to keep aside either.
    if (files.isReadOnly())
        return false;
    const QString base =
        path + QStringLiteral(".damaged-")
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH-mm-ss"));
    QString line;
    QString shown;
    bool kept = false;
    for (int counter = 1; counter <= kMaxCounter; ++counter) {
        const QString target =
            counter == 1 ? base : base + QLatin1Char('-') + QString::number(counter);
        if (files.exists(target))
            continue;
        if (files.move(path, target)) {
            line = QStringLiteral("Could not read %1; kept it as %2").arg(path, target);
            shown = korvane::tr("Could not read %1; kept it as %2").arg(path, target);
            kept = true;
            break;
        }
        // Another process may have taken the name in the meantime; any other failure is final.
        if (!files.exists(target))
            break;
    }
    if (!kept) {
        line = QStringLiteral("Could not read %1 nor move it aside; left it as it is").arg(path);
        shown = korvane::tr("Could not read %1 nor move it aside; left it as it is").arg(path);
    }
    // The system log stays in English; the log window speaks the user's language. Either way a
    // person is told at once: KorvaneCMD prints it on standard error.
    systemNotice(line);
    if (report)
        *report = shown + QLatin1Char('\n');
    return kept;
}

bool DataFile::prepareToReplace(FileOperations &files, const QString &path, const Check &readable,
                                QString *report)
{
    if (!files.exists(path) || readable(path))
        return true;
    return keep(files, path, report);
}

DataFile::Identity DataFile::identity(const QString &path)
{
    struct stat info;
    if (path.isEmpty() || ::stat(pathBytes(path).constData(), &info) != 0)
        return {};
    Identity id;
    id.exists = true;
    id.device = quint64(info.st_dev);
    id.inode = quint64(info.st_ino);
    id.size = qint64(info.st_size);
#ifdef Q_OS_MACOS
    id.modifiedNs = qint64(info.st_mtimespec.tv_sec) * 1000000000 + info.st_mtimespec.tv_nsec;
#else
    id.modifiedNs = qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
#endif
    return id;
}

} // namespace korvane
