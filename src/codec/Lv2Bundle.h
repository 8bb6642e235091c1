#pragma once

#include "codec/FileBytes.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

namespace korvane {

// One plug-in of an LV2 bundle, as its Turtle files describe it.
struct Lv2Plugin {
    QString uri;
    QString name;   // doap:name
    QString binary; // lv2:binary: a path inside the bundle ("x.so"), or the URI as written
    QString vendor; // foaf:name of doap:maintainer, of the plug-in or else of its lv2:project
    int minorVersion = -1; // -1 when not given
    int microVersion = -1;
    // "minor.micro" ("2.4"); empty when the files give no minor version.
    QString version() const;
};

// What one bundle holds. A bundle that cannot be read (no manifest, a manifest that is not
// Turtle, a file where a folder should be) has error set and may still list what it could read.
struct Lv2BundleInfo {
    QString path;
    QList<Lv2Plugin> plugins; // in the manifest's order
    QString error;            // why the bundle cannot be read; empty when it can
    QStringList problems;     // everything that went wrong, file by file (includes error)
};

struct Lv2Limits {
    qsizetype maxFileBytes = 32 * 1024 * 1024;
    int maxFiles = 4096; // data files per bundle
};

// Reads an LV2 bundle's plug-ins from its Turtle files without loading any code: the manifest,
// then each file a plug-in names with rdfs:seeAlso there (its data file; user interfaces and
// presets are not read). Turtle is read with serd. Files come through a function the caller
// gives, so the reader works on bytes in tests and fuzzing; seeAlso targets outside the bundle are
// refused before that function sees them.
class Lv2Bundle {
public:
    struct FileRead {
        QByteArray bytes;
        QString error; // empty when read: "cannot be read: No such file or directory"
    };
    // path -> bytes; must refuse files larger than maxBytes.
    using FileReader = std::function<FileRead(const QString &path, qsizetype maxBytes)>;

    using Limits = Lv2Limits;

    // bundlePath is absolute; files are asked for as bundlePath + "/" + relative path.
    static Lv2BundleInfo read(const QString &bundlePath, const FileReader &reader,
                              const Limits &limits = {});
    // The same, from the disk.
    static Lv2BundleInfo read(const QString &bundlePath) { return read(bundlePath, readFile); }

    // Reads a regular file of at most maxBytes without blocking on a FIFO or device; says plainly
    // when the bundle is a file rather than a folder.
    static FileRead readFile(const QString &path, qsizetype maxBytes);
    // The same from a read already made (FileBytes::read, Whole).
    static FileRead fileRead(FileBytes file);
};

} // namespace korvane
