#include "os/CrossDeviceMove.h"

#include "os/LocalFileOperations.h"
#include "os/PathBytes.h"
#include "os/PlatformFiles.h"
#include "os/PosixFiles.h"
#include "os/StagingFolders.h"
#include "os/SystemLog.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace korvane {

using namespace posix;
using PlatformFiles::renameNoReplace;
using PlatformFiles::syncFileSystem;
using PlatformFiles::syncFolder;

bool CrossDeviceMove::makeStagingFolder(const QString &folder, const QString &item,
                                        FileError *error)
{
    if (m_batchStaging.contains(folder))
        return true;
    if (::mkdir(pathBytes(folder).constData(), 0777) != 0) {
        const int failure = errno;
        struct stat info;
        // Hidden as the folder is, its failure is told as the item's own.
        if (failure != EEXIST || !lstatPath(folder, &info) || !S_ISDIR(info.st_mode))
            return fail(error, item, failure == EEXIST ? ENOTDIR : failure);
    }
    if (m_inBatch)
        m_batchStaging.insert(folder);
    return true;
}

void CrossDeviceMove::removeIfEmpty(const QString &folder)
{
    // A batch keeps its staging folders until it ends: making and removing one per item cost
    // about as much as a small plug-in's copy.
    if (!m_batchStaging.contains(folder))
        ::rmdir(pathBytes(folder).constData());
}

void CrossDeviceMove::endBatch()
{
    m_inBatch = false;
    for (const QString &folder : std::as_const(m_batchStaging))
        ::rmdir(pathBytes(folder).constData());
    m_batchStaging.clear();
}

bool CrossDeviceMove::run(const QString &from, const QString &to, FileError *error)
{
    // A source that could not be removed afterwards is not worth copying.
    if (!checkRemovable(from, error))
        return false;
    // Copied into this process's staging folder beside the target while the source stays whole
    // where it is; the item keeps its name there, so any name that fits a folder fits. A copy of
    // the name already there is this process's own, left by a clean-up that failed: never the
    // only copy of anything, as its source was still whole when it was left.
    const QString partialFolder = childOf(parentOf(to), StagingFolders::partialName());
    const QString partial = childOf(partialFolder, nameOf(to));
    if (!makeStagingFolder(partialFolder, to, error))
        return false;
    const auto dropPartial = [&] {
        removeTree(partial);
        removeIfEmpty(partialFolder);
    };
    struct stat info;
    if (lstatPath(partial, &info) && !removeTree(partial, error)) {
        removeIfEmpty(partialFolder);
        return false;
    }
    m_files.beginCopy(from);
    if (!m_files.copyTree(from, partial, error)) {
        dropPartial();
        return false;
    }
    // The copy must be on the disk before the source goes out of sight.
    if (const int result = syncFileSystem(partialFolder); result != 0) {
        dropPartial();
        return fail(error, to, result);
    }
    // Time has passed: every part of the source must still be removable, or nothing happens.
    if (!checkRemovable(from, error)) {
        dropPartial();
        return false;
    }

    // The source is hidden first and the copy takes the name second, so no moment shows the
    // item twice; a run cut short between the two leaves a pair a later scan puts right. An older
    // hidden copy of the name is left for that judgement too, and this one takes a fresh folder.
    QString removingFolder, removing;
    for (int n = 1; n < 100; ++n) {
        removingFolder = childOf(parentOf(from), StagingFolders::removingName(n));
        removing = childOf(removingFolder, nameOf(from));
        if (!lstatPath(removing, &info))
            break;
    }
    if (!makeStagingFolder(removingFolder, from, error)) {
        dropPartial();
        return false;
    }
    if (const int result = renameNoReplace(from, removing); result != 0) {
        dropPartial();
        removeIfEmpty(removingFolder);
        return fail(error, from, result);
    }
    if (const int result = renameNoReplace(partial, to); result != 0) {
        if (const int back = renameNoReplace(removing, from); back != 0) {
            systemLog(QStringLiteral("Could not put %1 back from %2 after a failed move: %3")
                          .arg(from, removing, reasonFor(back)));
            return fail(error, removing, result);
        }
        dropPartial();
        removeIfEmpty(removingFolder);
        return fail(error, to, result);
    }
    removeIfEmpty(partialFolder);
    // The item is whole at the target: the move has happened, whatever becomes of the hidden
    // remains of the old copy. They go only once the new name is on the disk.
    if (const int result = syncFolder(parentOf(to)); result != 0) {
        systemLog(QStringLiteral("Moved %1 to %2, but kept the hidden old copy %3: %4")
                      .arg(from, to, removing, reasonFor(result)));
        return true;
    }
    FileError leftover;
    if (m_files.remove(removing, &leftover))
        removeIfEmpty(removingFolder);
    else
        systemLog(
            QStringLiteral("Moved %1 to %2, but the hidden leftover %3 could not be removed: %4")
                .arg(from, to, leftover.path, leftover.reason));
    return true;
}

} // namespace korvane
