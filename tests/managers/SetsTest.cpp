#include "FormatManagerFixture.h"

#include "managers/SetDocument.h"
#include "platform/PropertyList.h"

namespace korvane {

class SetsTest : public FormatManagerFixture {
protected:
    QString documents;

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        for (const char *name : {"A.component", "B.component", "C.component"})
            addAU(LocSystemActive, name);
        documents = homePath("Documents");
        QDir().mkpath(documents);
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
    // The pop-up's titles after loading a sets file holding that.
    QStringList loadSets(const QByteArray &contents)
    {
        writeText(homePath("Library/Application Support/Korvane/ausets.plist"), contents);
        au->awakeFromNib();
        return au->setTitles();
    }
};

TEST_F(SetsTest, SavedSetReopensWithItsFlags)
{
    au->save(); // cancelled
    EXPECT_EQ(au->setTitles(), QStringList({"no set"}));
    const QString path = saveAs("one.aukorv");
    EXPECT_EQ(ui.savePanels[1].directory, documents);
    au->savePanelDidEnd(1, path); // a path is listed once
    EXPECT_EQ(au->setTitles(), QStringList({"no set", path}));
    EXPECT_EQ(au->selectedSetIndex(), 1);

    au->changeObject(item(au, "B.component"), "AUActive", false);
    EXPECT_TRUE(au->isSetChanged());
    au->openPanelDidEnd(1, path);
    EXPECT_TRUE(item(au, "B.component")->getAUActive());
    EXPECT_FALSE(au->isApplyEnabled());
    EXPECT_TRUE(ui.missingItemsLists.isEmpty());

    ui.alertAnswers << 0; // Discard the change
    au->changeObject(item(au, "B.component"), "AUActive", false);
    au->activate();
    EXPECT_EQ(ui.alertMessages(), QStringList({"Save changes to Set"}));
    EXPECT_FALSE(au->isSetChanged());
    EXPECT_EQ(au->selectedSetIndex(), 0);
}

TEST_F(SetsTest, SetsFileGainsNoSetAndAGoneSetAsksUntilRemoved)
{
    EXPECT_EQ(loadSets(PropertyList::toXml(QVariantList{"/a.aukorv", "/b.aukorv"})),
              QStringList({"no set", "/a.aukorv", "/b.aukorv"}));
    EXPECT_EQ(loadSets("not a plist"), QStringList({"no set"}));

    loadSets(PropertyList::toXml(QVariantList{"no set", "/gone/x.aukorv"}));
    ui.alertAnswers << 1 << 1 << 0;
    au->selectSet(1);
    ASSERT_EQ(ui.alerts.size(), 3);
    EXPECT_EQ(ui.alerts[2].buttons, QStringList({"try again", "remove"}));
    EXPECT_EQ(au->setTitles(), QStringList({"no set"}));

    // With nobody there to answer, "try again" would never end: it is asked once, and the entry
    // stays for a person to decide on.
    HeadlessUi nobody;
    ManagersOfOneRun unattended(locations(), disk(), nobody);
    unattended.au.awakeFromNib();
    unattended.au.openDefaultSet("/gone/y.aukorv");
    const QStringList titles = unattended.au.setTitles();
    unattended.au.selectSet(int(titles.indexOf("/gone/y.aukorv")));
    EXPECT_EQ(unattended.au.setTitles(), titles);
    EXPECT_EQ(unattended.au.selectedSetIndex(), 0);

    QDir(homePath("Library")).removeRecursively();
    const QString path = saveAs("c.aukorv");
    au->saveSets();
    EXPECT_EQ(
        PropertyList::readStringArray(homePath("Library/Application Support/Korvane/ausets.plist")),
        QStringList({"no set", path}));
}

TEST_F(SetsTest, MasWindowSavesUnderItsDefaultNameWithoutAsking)
{
    const QString previous = QDir::currentPath();
    QTemporaryDir work;
    ASSERT_TRUE(QDir::setCurrent(work.path()));
    context->mas.awakeFromNib();
    context->mas.save();
    QDir::setCurrent(previous);
    EXPECT_TRUE(ui.savePanels.isEmpty());
    EXPECT_TRUE(SetDocument::load(work.path() + "/Untitled.maskorv").has_value());
}

// Each entry goes to the copy the set names, whatever the table's order; with one copy gone, the
// set's entry for it is missing, not handed to the survivor.
TEST_F(SetsTest, ApplyAfterLoadingMovesEachSavedCopyWhereTheSetSays)
{
    const QString system = B::makeAudioUnit(folder(TypeAU, 0), "Foo.component", MachO::ppc());
    const QString user = addAU(LocUserActive, "Foo.component");
    au->reloadData();
    au->sortDescriptorsDidChange({{"AULocation", true}});
    for (const AUItemPtr &it : au->items()) {
        if ((it->getAUName() == "Foo.component" && it->getAUGlobal())
            || it->getAUName() == "A.component") {
            it->setAUActive(false);
            it->checkObject(TypeAU);
        }
    }
    const QString path = documents + "/copies.aukorv";
    au->archivePlugins(path);

    au->reloadData();
    au->sortDescriptorsDidChange({{"AULocation", false}});
    setPref("AUActivateAfterLoading", true);
    au->openDefaultSet(path);
    EXPECT_TRUE(ui.missingItemsLists.isEmpty());
    EXPECT_TRUE(ui.alerts.isEmpty());
    EXPECT_FALSE(exists(system) || exists(auPath(0, "A.component")));
    EXPECT_TRUE(exists(auPath(1, "A.component")) && exists(auPath(0, "B.component")));
    EXPECT_TRUE(whole(auPath(1, "Foo.component"), MachO::ppc()));
    EXPECT_TRUE(whole(user, MachO::intel()));

    // Missing entries are listed; ignored, the document stays and no set is selected; removed,
    // the document loses them.
    QDir(auPath(1, "Foo.component")).removeRecursively();
    au->reloadData();
    au->openDefaultSet(path);
    EXPECT_EQ(ui.missingItemsLists, QStringList({"Foo.component"}));
    EXPECT_EQ(au->selectedSetIndex(), 0);
    EXPECT_EQ(SetDocument::read(path).size(), 5);
    ui.missingItemsAnswers << 2;
    au->openDefaultSet(path);
    EXPECT_EQ(SetDocument::read(path).size(), 4);
    EXPECT_EQ(au->selectedSetIndex(), 1);
    EXPECT_TRUE(whole(user, MachO::intel()));
}

} // namespace korvane
