#pragma once

#include "core/Locations.h"
#include "os/LocalFileOperations.h"
#include "os/LockTable.h"

#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>
#include <gtest/gtest.h>
#include <optional>

#include <ostream>

// Readable failure messages for Qt strings.
inline void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace korvane {

// A fresh system root and home (with .local/share for the trash) per test, and the file
// operations of the local disk under them. Nothing is taken from the environment.
class TestRoots : public ::testing::Test {
protected:
    void SetUp() override;

    QString root() const { return m_root.path(); }
    QString home() const { return m_home.path(); }
    Roots roots() const { return Roots::at(root(), home()); }
    const Locations &locations() const { return *m_locations; }
    LocalFileOperations &disk() { return *m_disk; }
    // The folder locks of the test's run; it outlives every lock the test makes.
    LockTable &locks() { return m_locks; }
    // A built-in format's folder under these roots.
    QString folder(int type, int loc) const;
    // An XML property list written straight to the disk.
    static bool writePlist(const QString &path, const QVariant &root);
    // Paths under the roots: rootPath("Library/Audio") and homePath("Library/Audio").
    QString rootPath(const QString &relative) const { return root() + '/' + relative; }
    QString homePath(const QString &relative) const { return home() + '/' + relative; }

    static QString readText(const QString &path);
    static void writeText(const QString &path, const QByteArray &data);

private:
    QTemporaryDir m_root;
    QTemporaryDir m_home;
    std::optional<Locations> m_locations;
    std::optional<LocalFileOperations> m_disk;
    LockTable m_locks;
};

// Makes a path immutable (chattr +i) for the lifetime of the guard, so that even root cannot
// change it. ok() is false where the file system does not support it; tests then skip.
class ImmutableGuard {
public:
    explicit ImmutableGuard(const QString &path) : m_path(path), m_ok(chattr("+i") == 0) {}
    ~ImmutableGuard()
    {
        if (m_ok)
            chattr("-i");
    }
    bool ok() const { return m_ok; }

private:
    int chattr(const char *flag) const { return QProcess::execute("chattr", {flag, m_path}); }
    QString m_path;
    bool m_ok = false;
};

} // namespace korvane
