#pragma once

#include <QByteArray>
#include <QString>

namespace korvane {

// Runs a shell command and returns its standard output (popen-style); nullopt-like empty + ok=false
// when the pipe cannot be opened.
QByteArray readCommandOutput(const QString &command, bool *ok);

} // namespace korvane
