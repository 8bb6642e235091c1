#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace korvane {

// A set kept as plain text, as a fleet's own repository keeps it: one plug-in name a line. Blank
// lines and lines whose first character past the spaces is "#" are ignored, and so are spaces
// and tabs around a name and the carriage return of a CRLF file. A name keeps the bytes it was
// written in, as the file system holds names.
QStringList parseNameList(const QByteArray &bytes);

// The names in a plain file of at most kMaxNameListBytes; nullopt with the reason for anything
// else (missing, a folder, a FIFO or a device, too large).
std::optional<QStringList> readNameList(const QString &path, QString *problem);

// Room for tens of thousands of names: a list larger than that was not written as one.
constexpr qsizetype kMaxNameListBytes = 1 << 20;

} // namespace korvane
