#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "platform/PropertyList.h"

namespace korvane {

class GroupsTest : public FormatManagerFixture {
protected:
    QString groupsFile;

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        services().getGroups() << "Synths"
                               << "Drums";
        groupsFile = homePath("Library/Application Support/Korvane/augroups.plist");
        writeText(groupsFile, PropertyList::toXml(
                                  QVariantList{"A.component", "Synths", "B.component", "Drums",
                                               "C.component", "Synths", "A.component", "Drums"}));
        for (const char *name : {"A.component", "B.component", "C.component"})
            addAU(LocSystemDisabled, name);
        addAU(LocUserActive, "D.component");
        au->reloadData();
    }
    QStringList groups() const
    {
        QStringList result;
        for (const AUItemPtr &plugin : au->items())
            result << plugin->getAUName() + "=" + plugin->getAUGroup();
        return result;
    }
    QVariantList groupsOnDisk() const
    {
        return PropertyList::readArray(groupsFile).value_or(QVariantList{"unreadable"});
    }
};

TEST_F(GroupsTest, TheScanTakesTheFirstPairOfTheName)
{
    const QVariantList pairs{"A", "One", "B", "Two", "A", "Three", "Odd"};
    EXPECT_EQ(TypeManager::findGroup(pairs, "A"), "One");
    EXPECT_EQ(TypeManager::findGroup(pairs, "One"), ""); // group names are not keys
    EXPECT_EQ(TypeManager::findGroup(pairs, "Odd"), "");
    EXPECT_EQ(TypeManager::findGroup({42, "X", "C", QVariantList{}}, "C"), "");

    EXPECT_EQ(groups(), QStringList({"A.component=Synths", "B.component=Drums",
                                     "C.component=Synths", "D.component="}));
    EXPECT_EQ(item(au, "B.component")->getGroupID(), 2);

    writeText(groupsFile, "not a property list");
    au->reloadData();
    EXPECT_EQ(groups(),
              QStringList({"A.component=", "B.component=", "C.component=", "D.component="}));
}

TEST_F(GroupsTest, MenuAssignsToSelectedRowsAndSavesNamePairs)
{
    QDir(homePath("Library/Application Support")).removeRecursively();
    au->selectRows({rowOf(au, "A.component"), rowOf(au, "D.component")});
    au->setGroup("Drums");
    EXPECT_EQ(groupsOnDisk(), QVariantList({"A.component", "Drums", "B.component", "Drums",
                                            "C.component", "Synths", "D.component", "Drums"}));
    au->setGroup("none");
    EXPECT_EQ(item(au, "A.component")->getAUGroup(), "");
    EXPECT_EQ(item(au, "A.component")->getGroupID(), 0);

    au->selectRows({});
    QFile::remove(groupsFile);
    au->setGroup("Synths");
    EXPECT_EQ(item(au, "D.component")->getAUGroup(), "");
    EXPECT_TRUE(exists(groupsFile));
    TypeManager *empty = &context->vst; // scanned, and nothing installed
    empty->reloadData();
    empty->saveGroups();
    EXPECT_EQ(PropertyList::readArray(locations().dataFilePath("vstgroups.plist")), QVariantList());
}

TEST_F(GroupsTest, GroupCommandsSwitchTheMembersOfTheSelectedRowsGroup)
{
    au->setGroupActive(); // nothing selected
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 0);

    au->selectRows({rowOf(au, "A.component")});
    au->setGroupActive();
    EXPECT_TRUE(item(au, "C.component")->getAUActive());
    EXPECT_FALSE(item(au, "B.component")->getAUActive());
    EXPECT_EQ(item(au, "C.component")->getAULocation(), folder(TypeAU, LocSystemActive));
    EXPECT_EQ(au->countOfUnprocessedLogItems(), 2);
    au->setGroupInactive();
    EXPECT_FALSE(au->isApplyEnabled());
}

} // namespace korvane
