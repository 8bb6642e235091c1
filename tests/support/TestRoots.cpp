#include "support/TestRoots.h"

#include "codec/PropertyList.h"
#include "core/FormatTable.h"

#include <QDir>
#include <QFile>

namespace korvane {

void TestRoots::SetUp()
{
    ASSERT_TRUE(m_root.isValid());
    ASSERT_TRUE(m_home.isValid());
    QDir().mkpath(homePath(".local/share"));
    m_locations.emplace(roots());
    m_disk.emplace(roots());
}

QString TestRoots::folder(int type, int loc) const
{
    return m_locations->folderPath(FormatTable::builtIn().at(type), loc);
}

bool TestRoots::writePlist(const QString &path, const QVariant &root)
{
    LocalFileOperations disk;
    return PropertyList::writeXml(disk, path, root);
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

} // namespace korvane
