#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyAdminObj.h"
#include "managers/MyVSTObj.h"
#include "platform/FileOperations.h"

#include <QRandomGenerator>

namespace korvane {

class MaintenanceTest : public FormatManagerFixture {
protected:
    MyAdminObj *au = nullptr;

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        au = MyAdminObj::getAUObj();
    }
    void setNames(const QStringList &names)
    {
        au->plugins.clear();
        for (const QString &name : names) {
            auto plugin = std::make_shared<AUItem>();
            plugin->setAUName(name);
            au->plugins << plugin;
        }
    }
    // The report without its dated header line.
    QString reportBody() const { return AppServices::getMainObj()->logText().section('\n', 1); }
};

// The report as first written: for every item, count the others of its name.
QString quadraticReport(const QStringList &names)
{
    QString report;
    QStringList reported;
    for (int i = 0; i < names.size(); ++i) {
        int others = 0;
        for (int j = 0; j < names.size(); ++j)
            if (j != i && names[j] == names[i])
                ++others;
        if (others >= 1 && !reported.contains(names[i])) {
            report += QString("Plugin %1 is found %2 times\n").arg(names[i]).arg(others + 1);
            reported << names[i];
        }
    }
    return report;
}

TEST_F(MaintenanceTest, DuplicatesAreReportedOnceAtTheFirstPosition)
{
    setNames({"B", "A", "C", "A", "A"});
    au->checkForDuplicates();
    EXPECT_TRUE(AppServices::getMainObj()->logText().startsWith("----- "));
    EXPECT_EQ(reportBody(), "Plugin A is found 3 times\n");

    setNames({});
    const qsizetype before = AppServices::getMainObj()->logText().size();
    au->checkForDuplicates();
    EXPECT_EQ(AppServices::getMainObj()->logText().mid(before).count('\n'), 1);
}

TEST_F(MaintenanceTest, DuplicateReportMatchesTheQuadraticOne)
{
    QRandomGenerator random(20240611);
    QStringList names;
    for (int i = 0; i < 500; ++i)
        names << QString("P%1.component").arg(random.bounded(200));
    setNames(names);
    au->checkForDuplicates();
    EXPECT_EQ(reportBody(), quadraticReport(names));
}

// Records the order of the trash requests before doing them.
class RecordingOperations : public FileOperations {
public:
    QStringList trashed;
    bool moveToTrash(const QString &path, FileError *error) override
    {
        trashed << path;
        return FileOperations::moveToTrash(path, error);
    }
};

TEST_F(MaintenanceTest, DeleteTrashesFromTheHighestRowDown)
{
    for (int i = 0; i < 7; ++i)
        addAU(LocUserActive, QString("P%1.component").arg(i));
    au->reloadData();
    const QString second = au->plugins.at(2)->getAUName(), fifth = au->plugins.at(5)->getAUName();
    RecordingOperations recording;
    FileOperations::setCurrent(&recording);
    au->selectRows({2, 5});

    au->deleteItem();
    const QString folderPath = folder(TypeAU, LocUserActive);
    EXPECT_EQ(recording.trashed,
              QStringList({folderPath + "/" + fifth, folderPath + "/" + second}));
    EXPECT_TRUE(exists(homePath(".local/share/Trash/files/") + fifth));
    EXPECT_FALSE(exists(folderPath + "/" + second));
    EXPECT_EQ(au->plugins.size(), 5);
    EXPECT_EQ(au->selectedRows(), QList<int>({0}));

    au->selectRows({});
    au->deleteItem();
    EXPECT_EQ(au->plugins.size(), 5);
    EXPECT_EQ(au->selectedRows(), QList<int>({0}));
}

TEST_F(MaintenanceTest, AFailedTrashStillDropsTheItem)
{
    addAU(LocUserActive, "Stuck.component");
    au->reloadData();
    ImmutableGuard guard(folder(TypeAU, LocUserActive));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    au->selectRows({0});
    au->deleteItem();
    EXPECT_TRUE(au->plugins.isEmpty());
    EXPECT_TRUE(exists(folder(TypeAU, LocUserActive) + "/Stuck.component"));
}

TEST_F(MaintenanceTest, InfoWithoutSelectionAndRestoreExplainThemselves)
{
    MyVSTObj *vst = MyVSTObj::getVSTObj();
    vst->getInfo();
    vst->backupRestore();
    EXPECT_EQ(ui.alertMessages(),
              QStringList({"VST Plug-Ins Info", "VST Plug-Ins Backup Restore"}));
    EXPECT_EQ(ui.alerts[0].informativeText, "Please select a VST Plug-In");
}

TEST_F(MaintenanceTest, ArchitectureColumnAndSwitch)
{
    au->setPlattformVisible(true);
    au->setPlattformVisible(true);
    au->setPlattformVisible(false);
    EXPECT_EQ(au->columns().count("AUType"), 1);

    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Ppc.component",
                                        MachO::ppc());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, LocSystemActive), "Fat.component",
                                        MachO::universal2());
    au->reloadData();
    au->setPlattformActive(3, false);
    EXPECT_FALSE(item(au, "Fat.component")->getAUActive());
    EXPECT_TRUE(item(au, "Ppc.component")->getAUActive());
    EXPECT_TRUE(au->isApplyEnabled());
}

} // namespace korvane
