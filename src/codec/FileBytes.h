#pragma once

#include <QByteArray>
#include <QString>

namespace korvane {

// Reads outside files with a size limit and without blocking: a FIFO, a device or a folder put
// where a file should be is refused rather than read.
struct FileBytes {
    QByteArray bytes;
    QString error;       // empty when read: "cannot be read: No such file or directory"
    int errorNumber = 0; // errno of a failed open or read
    // What fstat said of the opened file (size -1 where it did not open): a caller that must
    // notice a later change keeps these rather than asking stat again.
    qint64 size = -1;
    qint64 modified = 0; // nanoseconds since the epoch
    qint64 changed = 0;

    enum Mode {
        Whole,  // a file larger than maxBytes is refused
        Prefix, // the first maxBytes bytes of any size of file
    };
    static FileBytes read(const QString &path, qsizetype maxBytes, Mode mode = Whole);
};

} // namespace korvane
