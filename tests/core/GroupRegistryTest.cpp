#include "core/GroupRegistry.h"

#include "codec/PropertyList.h"
#include "core/AppServices.h"
#include "support/ServicesFixture.h"

#include <QDir>

namespace korvane {
namespace {

const QString kSupport = QStringLiteral("Library/Application Support/Korvane");

class GroupRegistryTest : public ServicesFixture {
protected:
    QString groupsFile() const { return homePath(kSupport + "/groups.plist"); }
};

// The first entry is always the empty "no group": the editor's rows are one off the registry's.
TEST_F(GroupRegistryTest, GroupEditsRenumberAndAFailedSaveKeepsTheFile)
{
    writeText(groupsFile(), PropertyList::toXml(QVariantList{"New Group", "G1", "G2"}));
    AppServices run(parts());
    GroupRegistry &groups = run.groupRegistry();
    groups.setGroupAt(2, "Synths"); // one past the last: appended
    int changes = 0;
    QObject::connect(&groups, &GroupRegistry::groupsChanged, [&] { ++changes; });
    for (int row : {-1, -7, 3}) // no selection, or none that exists: nothing shifts
        groups.removeGroup(row);
    EXPECT_EQ(changes, 0);
    groups.removeGroup(0);
    EXPECT_EQ(groups.groupMenuTitles(), QStringList({"G2", "Synths"}));
    QDir(homePath("Library")).removeRecursively(); // the folders are made again
    groups.save();
    const QStringList saved{"", "G2", "Synths"};
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), saved);

    ImmutableGuard guard(groupsFile());
    if (!guard.ok())
        GTEST_SKIP() << "chattr not supported here";
    groups.addGroup();
    ui.alertAnswers << AlertAnswer::Third; // Cancel: said, and nothing replaced
    groups.save();
    EXPECT_EQ(PropertyList::readStringArray(groupsFile()), saved);
    EXPECT_EQ(ui.alertMessages(), QStringList{"“groups.plist” could not be saved."});
}

} // namespace
} // namespace korvane
