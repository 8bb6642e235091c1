#include "FormatManagerFixture.h"

#include "managers/MyAdminObj.h"
#include "managers/MyMASObj.h"
#include "managers/SetDocument.h"
#include "panels/MyPrefObj.h"
#include "panels/UserDefaults.h"
#include "platform/PropertyList.h"

#include <QDir>

namespace korvane {

class SetsTest : public FormatManagerFixture {
protected:
    MyAdminObj *au = nullptr;
    QString documents;

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        for (const char *name : {"A.component", "B.component", "C.component"})
            addAU(LocSystemActive, name);
        documents = homePath("Documents");
        QDir().mkpath(documents);
        au = MyAdminObj::getAUObj();
        au->reloadData();
        au->awakeFromNib();
    }
    QString saveAs(const QString &name)
    {
        const QString path = documents + "/" + name;
        ui.savePanelAnswers << path;
        au->save();
        return path;
    }
    QString setsFile() const
    {
        return homePath("Library/Application Support/Korvane/ausets.plist");
    }
};

TEST_F(SetsTest, SavedSetReopensWithItsFlags)
{
    const QString path = saveAs("one.aukorv");
    ASSERT_EQ(ui.savePanels.size(), 1);
    EXPECT_EQ(ui.savePanels[0].fileName, "untitled.aukorv");
    EXPECT_EQ(ui.savePanels[0].directory, documents);
    EXPECT_EQ(au->setTitles(), QStringList({"no set", path}));
    EXPECT_EQ(au->selectedSetIndex(), 1);

    au->changeObject(item(au, "B.component"), "AUActive", true);
    EXPECT_FALSE(item(au, "B.component")->getAUActive());
    au->openPanelDidEnd(1, path);
    EXPECT_TRUE(item(au, "B.component")->getAUActive());
    EXPECT_FALSE(au->isApplyEnabled());
    EXPECT_TRUE(ui.missingItemsLists.isEmpty());
}

TEST_F(SetsTest, MissingItemsAreListedThenIgnoredOrRemoved)
{
    const QString path = saveAs("one.aukorv");
    QDir(folder(TypeAU, LocSystemActive) + "/B.component").removeRecursively();
    QDir(folder(TypeAU, LocSystemActive) + "/C.component").removeRecursively();
    au->reloadData();

    au->openDefaultSet(path); // ignored
    EXPECT_EQ(ui.missingItemsLists, QStringList({"B.component\nC.component"}));
    EXPECT_EQ(au->selectedSetIndex(), 0);
    EXPECT_EQ(SetDocument::read(path).size(), 3);

    ui.missingItemsAnswers << 2;
    au->openDefaultSet(path);
    ASSERT_EQ(SetDocument::read(path).size(), 1);
    EXPECT_EQ(SetDocument::read(path)[0]->getAUName(), "A.component");
    EXPECT_EQ(au->selectedSetIndex(), 1);
}

TEST_F(SetsTest, MissingSetFileAsksUntilRemoved)
{
    TestRoots::writeText(setsFile(), PropertyList::toXml(QVariantList{"no set", "/gone/x.aukorv"}));
    au->awakeFromNib();
    ui.alertAnswers << 1 << 1 << 0;

    au->selectSet(1);
    ASSERT_EQ(ui.alerts.size(), 3);
    const Alert &alert = ui.alerts.last();
    EXPECT_EQ(alert.messageText, "Selected Set not found");
    EXPECT_EQ(alert.informativeText, "The set \"/gone/x.aukorv\" not longer exist.");
    EXPECT_EQ(alert.buttons, QStringList({"try again", "remove"}));
    EXPECT_EQ(au->setTitles(), QStringList({"no set"}));
    EXPECT_EQ(au->selectedSetIndex(), 0);
}

TEST_F(SetsTest, MasWindowLoadNameIsArchivedInTheCurrentFolder)
{
    const QString previous = QDir::currentPath();
    QTemporaryDir work;
    ASSERT_TRUE(QDir::setCurrent(work.path()));
    MyMASObj *mas = MyMASObj::getMASObj();
    mas->awakeFromNib();
    EXPECT_EQ(mas->setName(), "Untitled.maskorv");
    mas->bChanged = true;
    mas->save();
    QDir::setCurrent(previous);

    EXPECT_TRUE(ui.savePanels.isEmpty());
    EXPECT_TRUE(SetDocument::isReadable(work.path() + "/Untitled.maskorv"));
    EXPECT_FALSE(mas->bChanged);
}

TEST_F(SetsTest, SavePanelAddsEachPathOnceAndCancelStillClearsChanged)
{
    au->bChanged = true;
    au->save(); // cancelled
    EXPECT_FALSE(au->bChanged);
    EXPECT_EQ(au->setTitles(), QStringList({"no set"}));

    const QString path = documents + "/two.aukorv";
    au->savePanelDidEnd(1, path);
    au->savePanelDidEnd(1, path);
    EXPECT_EQ(au->setTitles(), QStringList({"no set", path}));
}

TEST_F(SetsTest, SetsFileGainsNoSetAtTheTopAndIsWrittenBack)
{
    TestRoots::writeText(setsFile(), PropertyList::toXml(QVariantList{"/a.aukorv", "/b.aukorv"}));
    au->awakeFromNib();
    EXPECT_EQ(au->setTitles(), QStringList({"no set", "/a.aukorv", "/b.aukorv"}));

    TestRoots::writeText(setsFile(), PropertyList::toXml(QVariantList{"/a.aukorv", "no set"}));
    au->awakeFromNib();
    EXPECT_EQ(au->setTitles(), QStringList({"/a.aukorv", "no set"}));

    TestRoots::writeText(setsFile(), "not a plist");
    au->awakeFromNib();
    EXPECT_EQ(au->setTitles(), QStringList({"no set"}));

    QDir(homePath("Library")).removeRecursively();
    au->savePanelDidEnd(1, "/c.aukorv");
    au->saveSets();
    EXPECT_EQ(PropertyList::readStringArray(setsFile()), QStringList({"no set", "/c.aukorv"}));
}

TEST_F(SetsTest, ApplyAfterLoadingMovesThePlugIns)
{
    const QString path = documents + "/off.aukorv";
    item(au, "A.component")->setAUActive(false);
    au->archivePlugins(path);
    au->reloadData();
    MyPrefObj::getPref()->defaults()->setObject("AUActivateAfterLoading", true);

    au->openDefaultSet(path);
    EXPECT_TRUE(exists(folder(TypeAU, LocSystemDisabled) + "/A.component"));
    EXPECT_FALSE(exists(folder(TypeAU, LocSystemActive) + "/A.component"));
    EXPECT_TRUE(ui.alerts.isEmpty());
}

TEST_F(SetsTest, ToggleMarksTheSetChangedOnlyWithADocumentSelected)
{
    au->changeObject(item(au, "A.component"), "AUActive", false);
    EXPECT_FALSE(au->bChanged);

    saveAs("one.aukorv");
    au->changeObject(item(au, "B.component"), "AUActive", false);
    EXPECT_TRUE(au->bChanged);
    ui.alertAnswers << 0; // Discard
    au->activate();
    EXPECT_EQ(ui.alertMessages(), QStringList({"Save changes to Set"}));
    EXPECT_EQ(ui.alerts[0].informativeText, "Save changes to actual Set?");
    EXPECT_FALSE(au->bChanged);
    EXPECT_EQ(au->selectedSetIndex(), 0);
}

} // namespace korvane
