#include "app/AppServices.h"

#include "ServicesFixture.h"
#include "platform/PropertyList.h"
#include "support/TestRoots.h"

#include <QDir>

using namespace korvane;

namespace {

class SupportFolderTest : public ServicesFixture {};

// A fresh account may not even have "Library/Application Support": the data files must still land.
TEST_F(SupportFolderTest, AHomeWithoutLibraryStillGetsEveryDataFile)
{
    ASSERT_FALSE(QFileInfo::exists(homePath("Library")));
    const QString support = homePath("Library/Application Support/Korvane");
    AppServices services(parts());
    EXPECT_EQ(PropertyList::readArray(support + "/content.plist"), QVariantList());

    QDir(homePath("Library")).removeRecursively();
    services.saveContent({"Echo.vst", "/Presets"});
    EXPECT_EQ(PropertyList::readArray(support + "/content.plist"),
              QVariantList({QVariantList{"Echo.vst", "/Presets"}}));

    QDir(homePath("Library")).removeRecursively();
    services.addGroupEntry();
    services.saveGroupRegistry();
    EXPECT_EQ(PropertyList::readStringArray(support + "/groups.plist"),
              QStringList({"", "New Group"}));
}

} // namespace
