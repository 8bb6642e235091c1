#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyAdminObj.h"
#include "platform/PropertyList.h"

#include <QDir>

namespace korvane {

class GroupsTest : public FormatManagerFixture {
protected:
    MyAdminObj *au = nullptr;
    QString groupsFile;

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        AppServices::getMainObj()->getGroups() << "Synths"
                                               << "Drums";
        groupsFile = homePath("Library/Application Support/Korvane/augroups.plist");
        TestRoots::writeText(groupsFile, PropertyList::toXml(QVariantList{
                                             "A.component", "Synths", "B.component", "Drums",
                                             "C.component", "Synths", "A.component", "Drums"}));
        for (const char *name : {"A.component", "B.component", "C.component"})
            addAU(LocSystemDisabled, name);
        addAU(LocUserActive, "D.component");
        au = MyAdminObj::getAUObj();
        au->reloadData();
    }
    QVariantList groupsOnDisk() const
    {
        return PropertyList::readArray(groupsFile).value_or(QVariantList{"unreadable"});
    }
};

TEST_F(GroupsTest, FindGroupTakesTheFirstPairOfTheName)
{
    const QVariantList groups{"A", "One", "B", "Two", "A", "Three", "Odd"};
    EXPECT_EQ(TypeManager::findGroup(groups, "A"), "One");
    EXPECT_EQ(TypeManager::findGroup(groups, "One"), ""); // group names are not keys
    EXPECT_EQ(TypeManager::findGroup(groups, "Odd"), "");
    EXPECT_EQ(TypeManager::findGroup({}, "A"), "");
    EXPECT_EQ(TypeManager::findGroup({42, "X", "C", QVariantList{}}, "C"), "");
    EXPECT_EQ(item(au, "A.component")->getAUGroup(), "Synths");
    EXPECT_EQ(item(au, "D.component")->getAUGroup(), "");
}

TEST_F(GroupsTest, SaveWritesNamePairsAndAnEmptyListAsAnEmptyArray)
{
    QDir(homePath("Library/Application Support")).removeRecursively();
    au->saveGroups();
    QVariantList expected;
    for (const AUItemPtr &plugin : au->plugins)
        expected << plugin->getAUName() << plugin->getAUGroup();
    EXPECT_EQ(groupsOnDisk(), expected);

    au->plugins.clear();
    au->saveGroups();
    EXPECT_EQ(groupsOnDisk(), QVariantList());
}

TEST_F(GroupsTest, MenuAssignsToSelectedRowsAndNoneClears)
{
    au->selectRows({rowOf(au, "A.component"), rowOf(au, "D.component")});
    au->setGroup("Drums");
    EXPECT_EQ(item(au, "A.component")->getAUGroup(), "Drums");
    EXPECT_EQ(item(au, "D.component")->getAUGroup(), "Drums");
    EXPECT_EQ(item(au, "C.component")->getAUGroup(), "Synths");

    au->setGroup("none");
    EXPECT_EQ(item(au, "A.component")->getAUGroup(), "");
    EXPECT_EQ(item(au, "A.component")->getGroupID(), 0);

    au->selectRows({});
    QFile::remove(groupsFile);
    au->setGroup("Synths");
    EXPECT_EQ(item(au, "D.component")->getAUGroup(), "");
    EXPECT_TRUE(exists(groupsFile));
}

TEST_F(GroupsTest, GroupActiveSwitchesMembersByID)
{
    au->selectRows({rowOf(au, "A.component")}, rowOf(au, "A.component"));
    au->setGroupActive();
    EXPECT_TRUE(item(au, "A.component")->getAUActive());
    EXPECT_TRUE(item(au, "C.component")->getAUActive());
    EXPECT_FALSE(item(au, "B.component")->getAUActive());
    EXPECT_EQ(item(au, "C.component")->getAULocation(), folder(TypeAU, LocSystemActive));
    EXPECT_TRUE(au->isApplyEnabled());
}

} // namespace korvane
