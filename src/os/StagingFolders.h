#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

namespace korvane {

// The hidden folders a move across file systems stages an item in: beside the target the copy
// under way (".korvane-<pid>-<start>.partial"), beside the source the old copy on its way out
// (".removing"). Each is named after the process that made it, the start time telling a reused
// pid apart, and the item keeps its own name inside; a later run knows whose it is
// (InterruptedMoves settles what a mover that died left there).
class StagingFolders {
public:
    // This process's staging folders beside items: the copies under way, and the old copies on
    // their way out (a fresh one for n > 1, where an older one still holds an item of the name).
    static QString partialName();
    static QString removingName(int n = 1);

    struct Owner {
        qint64 pid = 0;
        quint64 start = 0;
        bool removing = false;
    };
    // Who made a staging folder of this name, and which kind it is.
    static std::optional<Owner> parse(const QString &name);
    // Whether the process that made a staging folder still runs; this process's own staging
    // folders count as left over, as nothing of it moves while it settles.
    static bool isBusy(const Owner &owner);
};

} // namespace korvane
