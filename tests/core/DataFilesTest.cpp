#include "core/DataFiles.h"

#include "support/ServicesFixture.h"

#include <QDir>
#include <QFileInfo>

namespace korvane {
namespace {

using DataFilesTest = ServicesFixture;

TEST_F(DataFilesTest, CreatedFoldersStayInsideTheRoots)
{
    QDir().mkpath(rootPath("a"));
    createFolders(disk(), rootPath("a/../escape/b/file"));
    EXPECT_FALSE(QFileInfo::exists(rootPath("escape")));
    createFolders(disk(), rootPath("a/b/c/file")); // the parents only
    EXPECT_TRUE(QFileInfo(rootPath("a/b/c")).isDir());
    EXPECT_FALSE(QFileInfo::exists(rootPath("a/b/c/file")));
    ImmutableGuard guard(rootPath("a"));
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    createFolders(disk(), rootPath("a/x/y/file")); // a failure is ignored
    EXPECT_FALSE(QFileInfo::exists(rootPath("a/x")));
}

} // namespace
} // namespace korvane
