#pragma once

#include "helper/SystemFolders.h"
#include "os/Roots.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace korvane {

class FileOperations;

namespace helper {

// What korvane-helper is told on its command line, and nothing else: it runs as root with an
// environment it must not trust.
struct HelperArguments {
    Roots roots;
    int waitMs = 10000; // how long another mover may hold the folders
};

// --root R --home H [--wait-ms N], each once; R and H absolute, written plainly, and folders.
// nullopt with why otherwise.
std::optional<HelperArguments> parseArguments(const QStringList &arguments, QString *why);

// Answers one request: refuses it whole when any path may not be moved, else takes the folders'
// lock, moves each in turn and writes each outcome as it is known, then the ending. Returns the
// exit status (helper::Exit).
int runRequest(const QByteArray &request, const HelperArguments &arguments, FileOperations &files,
               const std::function<void(const QByteArray &line)> &write,
               const OwnedPrefixes &owned = OwnedPrefixes::distribution());

} // namespace helper
} // namespace korvane
