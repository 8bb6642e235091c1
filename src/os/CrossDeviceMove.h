#pragma once

#include "os/FileOperations.h"

#include <QSet>
#include <QString>

namespace korvane {

class LocalFileOperations;

// A move between file systems that never shows the item twice nor half: the copy is made in a
// staging folder beside the target and flushed, the source is hidden in a staging folder beside
// it, the copy takes the name, the target folder is flushed, and only then does the hidden source
// go (StagingFolders names the folders after this process; InterruptedMoves settles what a
// mover that died left). A batch keeps its staging folders until it ends.
class CrossDeviceMove {
public:
    // Copies and removes through files, so a subclass's faults and progress count.
    explicit CrossDeviceMove(LocalFileOperations &files) : m_files(files) {}

    bool run(const QString &from, const QString &to, FileError *error);

    void beginBatch() { m_inBatch = true; }
    // Removes the staging folders the batch kept, where they are empty.
    void endBatch();

private:
    // A hidden folder of the move, made when missing; failures name item.
    bool makeStagingFolder(const QString &folder, const QString &item, FileError *error);
    // Removes a staging folder with nothing left in it, or, in a batch, when the batch ends.
    void removeIfEmpty(const QString &folder);

    LocalFileOperations &m_files;
    bool m_inBatch = false;
    // During a batch: the staging folders it made or found.
    QSet<QString> m_batchStaging;
};

} // namespace korvane
