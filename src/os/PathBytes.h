#pragma once

#include <QByteArray>
#include <QString>

namespace korvane {

// A file name is the bytes the file system holds, whatever their encoding. Every path the
// program hands to or takes from the system passes through these two, so that a name that
// is not valid UTF-8 is listed, moved and saved by its own bytes and never meets a different
// name that decodes alike. Valid UTF-8 becomes its characters; each byte of an invalid sequence
// becomes the lone low surrogate U+DC80..U+DCFF of the same low eight bits ("surrogateescape"),
// which valid UTF-8 never yields, and encodes back to that byte.
QByteArray pathBytes(const QString &path);
QString pathFromBytes(const char *bytes, qsizetype size);
inline QString pathFromBytes(const QByteArray &bytes)
{
    return pathFromBytes(bytes.constData(), bytes.size());
}
inline QString pathFromBytes(const char *bytes)
{
    return pathFromBytes(bytes, qsizetype(qstrlen(bytes)));
}

// A name as a person sees it: each escaped byte shown as U+FFFD.
QString displayName(const QString &path);

} // namespace korvane
