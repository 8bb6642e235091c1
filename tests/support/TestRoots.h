#pragma once

#include <QString>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace korvane {

// A fresh system root (KORVANE_ROOT) and home (HOME, with .local/share for the trash) per test.
// Tear-down drops every shared controller and restores the real file operations and the
// headless interface, so no test sees another's state.
class TestRoots : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    QString root() const { return m_root.path(); }
    QString home() const { return m_home.path(); }
    // Paths under the roots: rootPath("Library/Audio") and homePath("Library/Audio").
    QString rootPath(const QString &relative) const;
    QString homePath(const QString &relative) const;

    static QString readText(const QString &path);
    static void writeText(const QString &path, const QByteArray &data);

private:
    QTemporaryDir m_root;
    QTemporaryDir m_home;
    QByteArray m_oldRoot, m_oldHome, m_oldXdg;
};

// Makes a path immutable (chattr +i) for the lifetime of the guard, so that even root cannot
// change it. ok() is false where the file system does not support it; tests then skip.
class ImmutableGuard {
public:
    explicit ImmutableGuard(const QString &path);
    ~ImmutableGuard();
    bool ok() const { return m_ok; }

private:
    QString m_path;
    bool m_ok = false;
};

} // namespace korvane
