#include "support/TestRoots.h"

#include "platform/FileOperations.h"
#include "platform/SharedInstances.h"
#include "ui/UserInterface.h"

#include <QDir>
#include <QFile>
#include <QProcess>

namespace korvane {

void TestRoots::SetUp()
{
    ASSERT_TRUE(m_root.isValid());
    ASSERT_TRUE(m_home.isValid());
    m_oldRoot = qgetenv("KORVANE_ROOT");
    m_oldHome = qgetenv("HOME");
    m_oldXdg = qgetenv("XDG_DATA_HOME");
    qputenv("KORVANE_ROOT", m_root.path().toUtf8());
    qputenv("HOME", m_home.path().toUtf8());
    qunsetenv("XDG_DATA_HOME");
    QDir().mkpath(homePath(".local/share"));
    resetSharedInstances();
}

void TestRoots::TearDown()
{
    resetSharedInstances();
    FileOperations::setCurrent(nullptr);
    UserInterface::setCurrent(nullptr);
    qputenv("KORVANE_ROOT", m_oldRoot);
    qputenv("HOME", m_oldHome);
    if (m_oldXdg.isEmpty())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", m_oldXdg);
}

QString TestRoots::rootPath(const QString &relative) const
{
    return m_root.path() + QLatin1Char('/') + relative;
}

QString TestRoots::homePath(const QString &relative) const
{
    return m_home.path() + QLatin1Char('/') + relative;
}

QString TestRoots::readText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

void TestRoots::writeText(const QString &path, const QByteArray &data)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(data);
}

ImmutableGuard::ImmutableGuard(const QString &path) : m_path(path)
{
    m_ok = QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("+i"), path}) == 0;
}

ImmutableGuard::~ImmutableGuard()
{
    if (m_ok)
        QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("-i"), m_path});
}

} // namespace korvane
