#pragma once

#include "os/FileOperations.h"
#include "os/Roots.h"

#include <QString>
#include <functional>
#include <optional>

namespace korvane {

// The freedesktop home trash of a run's roots ($XDG_DATA_HOME/Trash, else
// ~/.local/share/Trash): its files/ and info/ folders, made 0700 with their parents when
// missing. There is no other place to put an item: without a home folder, no trash.
class HomeTrash {
public:
    // Moves an item to a path in the trash's files/ folder; false with the reason.
    using Mover = std::function<bool(const QString &from, const QString &to, FileError *error)>;

    // The trash of roots, made when missing; nullopt, with the reason, where there is none.
    static std::optional<HomeTrash> open(const Roots &roots, FileError *error);

    // Puts path in the trash as preferredName, or NAME.2, NAME.3, ... where that is taken: its
    // record is written first (which reserves the name), then move takes the item there. A
    // failed move takes the record away again. trashedTo: where the item now lies.
    bool put(const QString &path, const QString &preferredName, const Mover &move, FileError *error,
             QString *trashedTo) const;

private:
    QString m_files;
    QString m_info;
};

} // namespace korvane
