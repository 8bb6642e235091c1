#pragma once

#include "os/LocalFileOperations.h"
#include "os/StagingFolders.h"
#include "support/TestRoots.h"

#include "PluginLibraryBuilder.h"

#include <QFile>
#include <QMap>

#include <filesystem>
#include <utility>

#include <sys/stat.h>

// What the tests of the file operations share: snapshots of a tree, a bundle with some depth, and
// the local disk with faults on request.
namespace korvane {

using B = PluginLibraryBuilder;

inline int modeOf(const QString &path)
{
    struct stat info;
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? int(info.st_mode & 07777)
                                                                    : -1;
}

// Everything below path, keyed by relative path: permissions, then contents or link target.
inline QMap<QString, QByteArray> snapshot(const QString &path)
{
    QMap<QString, QByteArray> result;
    for (const QString &relative : QStringList{""} + LocalFileOperations().subpaths(path)) {
        QFile file(relative.isEmpty() ? path : path + "/" + relative);
        QByteArray &entry = result[relative] = QByteArray::number(modeOf(file.fileName()), 8);
        if (QFileInfo(file).isSymLink())
            entry +=
                " link " + std::filesystem::read_symlink(file.fileName().toStdString()).string();
        else if (file.open(QIODevice::ReadOnly)) // not a folder
            entry += " " + file.readAll();
    }
    return result;
}

// A plug-in bundle with some depth: executable, resources, a symbolic link and a read-only file.
inline QString makeRichBundle(const QString &folder, const QString &name)
{
    QString bundle = B::makeVST(folder, name, MachO::universal2());
    B::makeFile(bundle + "/Contents/Resources", "en.lproj/Strings", {}, "strings");
    B::makeFile(bundle + "/Contents/Resources", "Presets", {}, QByteArray(200000, 'p'));
    QFile::setPermissions(bundle + "/Contents/Resources/Presets", QFile::ReadOwner);
    QFile::link("Resources/Presets", bundle + "/Contents/Presets");
    return bundle;
}

// The local disk with faults on request: every third file copied fails half-written, as on a full
// disk; `intruder` appears before the first copy, as another program could make it; a
// cross-device move's leftover will not be removed, as on a busy file system.
struct InjectedOperations : LocalFileOperations {
    using LocalFileOperations::LocalFileOperations;
    bool failEveryThirdCopy = false, stuckLeftover = false;
    QString intruder;
    int copied = 0;

    bool remove(const QString &path, FileError *error = nullptr) override
    {
        if (!stuckLeftover || !path.contains(StagingFolders::removingName() + "/"))
            return LocalFileOperations::remove(path, error);
        if (error)
            *error = FileError{path, QStringLiteral("Device or resource busy")};
        return false;
    }
    bool copyFile(const QString &from, const QString &to, FileError *error) override
    {
        if (!intruder.isEmpty())
            B::makeFile(std::exchange(intruder, {}), "Other", {}, "other");
        if (++copied % 3 != 0 || !failEveryThirdCopy)
            return LocalFileOperations::copyFile(from, to, error);
        QFile half(to);
        half.open(QIODevice::WriteOnly) && half.write("half");
        if (error)
            *error = FileError{to, QStringLiteral("No space left on device")};
        return false;
    }
};

// The local disk with faults on request, under fresh roots.
class DiskFixture : public TestRoots {
protected:
    QStringList entries(const QString &folder) { return files.directoryContents(folder); }
    QString trash(const QString &path) const { return homePath(".local/share/Trash/" + path); }
    InjectedOperations files{roots()};
};

} // namespace korvane
