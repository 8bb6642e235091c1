#include "FormatManagerFixture.h"

#include "app/AppServices.h"
#include "managers/MyVSTObj.h"
#include "platform/FileOperations.h"

#include <QRandomGenerator>

namespace korvane {

class MaintenanceTest : public FormatManagerFixture {
protected:
    // The duplicate report's lines for a list of those names.
    static QString duplicateReport(const QStringList &names)
    {
        QList<AUItemPtr> items;
        for (const QString &name : names) {
            items << std::make_shared<AUItem>();
            items.last()->setAUName(name);
        }
        QString report;
        for (const auto &[name, count] : TypeManager::duplicateNames(items))
            report += QString("Plugin %1 is found %2 times\n").arg(name).arg(count);
        return report;
    }
};

// The report as first written: for every item, count the items of its name.
QString quadraticReport(const QStringList &names)
{
    QString report;
    for (int i = 0; i < names.size(); ++i)
        if (names.count(names[i]) > 1 && names.indexOf(names[i]) == i)
            report +=
                QString("Plugin %1 is found %2 times\n").arg(names[i]).arg(names.count(names[i]));
    return report;
}

TEST_F(MaintenanceTest, DuplicatesAreReportedOnceAtTheFirstPosition)
{
    // In the log: a dated header, then one line per name held more than once.
    for (int loc : {LocSystemActive, LocUserActive, LocUserDisabled})
        addAU(loc, "A.component");
    addAU(LocSystemActive, "B.component");
    au->reloadData();
    au->checkForDuplicates();
    EXPECT_TRUE(services().isLogVisible());
    const QString log = services().logText();
    EXPECT_TRUE(log.startsWith("----- ")) << log.toStdString();
    EXPECT_EQ(log.section('\n', 1), "Plugin A.component is found 3 times\n");

    EXPECT_EQ(duplicateReport({"B", "A", "C", "A", "A"}), "Plugin A is found 3 times\n");
    EXPECT_EQ(duplicateReport({}), "");

    QRandomGenerator random(20240611);
    QStringList names;
    for (int i = 0; i < 500; ++i)
        names << QString("P%1.component").arg(random.bounded(200));
    EXPECT_EQ(duplicateReport(names), quadraticReport(names));
}

// Records the order of the trash requests before doing them.
class RecordingOperations : public LocalFileOperations {
public:
    using LocalFileOperations::LocalFileOperations;
    QStringList trashed;
    bool moveToTrash(const QString &path, FileError *error, QString *trashedTo) override
    {
        trashed << path;
        return LocalFileOperations::moveToTrash(path, error, trashedTo);
    }
};

TEST_F(MaintenanceTest, DeleteTrashesFromTheHighestRowDown)
{
    for (int i = 0; i < 7; ++i)
        addAU(LocUserActive, QString("P%1.component").arg(i));
    RecordingOperations recording(roots());
    relaunch(&recording);
    au->reloadData();
    const QString dir = folder(TypeAU, LocUserActive) + "/";
    au->selectRows({2, 5});

    au->deleteItem();
    EXPECT_EQ(recording.trashed, QStringList({dir + "P5.component", dir + "P2.component"}));
    EXPECT_TRUE(exists(homePath(".local/share/Trash/files/P5.component")));
    EXPECT_FALSE(exists(dir + "P2.component"));
    EXPECT_EQ(names(au), QStringList({"P0.component", "P1.component", "P3.component",
                                      "P4.component", "P6.component"}));
    EXPECT_EQ(au->selectedRows(), QList<int>({0}));

    au->selectRows({});
    au->deleteItem();
    EXPECT_EQ(au->numberOfRowsInTableView(), 5);
    EXPECT_EQ(au->selectedRows(), QList<int>({0}));

    // A failed trash still drops the item.
    ImmutableGuard guard(folder(TypeAU, LocUserActive));
    if (!guard.ok())
        GTEST_SKIP() << "chattr +i is not supported here";
    au->deleteItem();
    EXPECT_EQ(au->numberOfRowsInTableView(), 4);
    EXPECT_TRUE(exists(dir + "P0.component"));
}

TEST_F(MaintenanceTest, InfoWithoutSelectionAndRestoreExplainThemselves)
{
    MyVSTObj *vst = &context->vst;
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

    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Ppc.component", MachO::ppc());
    PluginLibraryBuilder::makeAudioUnit(folder(TypeAU, 0), "Fat.component", MachO::universal2());
    au->reloadData();
    au->setPlattformActive(3, false);
    EXPECT_FALSE(item(au, "Fat.component")->getAUActive());
    EXPECT_TRUE(item(au, "Ppc.component")->getAUActive());
    EXPECT_TRUE(au->isApplyEnabled());
}

} // namespace korvane
