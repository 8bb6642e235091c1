#include "FormatManagerFixture.h"

#include "codec/PropertyList.h"
#include "codec/TypedStream.h"
#include "library/SetDocument.h"

namespace korvane {

// One line per item: what a set document keeps of it.
static QStringList summary(const QList<PluginPtr> &items)
{
    QStringList lines;
    for (const PluginPtr &item : items)
        lines << item->name() + "|" + item->location() + "|" + (item->isGlobal() ? "1" : "0")
                     + (item->isActive() ? "1" : "0");
    return lines;
}

class SetControllerTest : public FormatManagerFixture {
protected:
    QString documents;

    void SetUp() override
    {
        FormatManagerFixture::SetUp();
        for (const char *name : {"A.component", "B.component", "C.component"})
            addAU(LocSystemActive, name);
        documents = homePath("Documents");
        QDir().mkpath(documents);
        au->rescan();
        au->sets().loadSetList();
    }
    QString saveAs(const QString &name)
    {
        QString path = documents + "/" + name;
        ui.savePanelAnswers << path;
        au->sets().saveSet();
        return path;
    }
    // Four items: every pair of flags, names and places beyond ASCII and of great length.
    QList<PluginPtr> sample() const
    {
        const QStringList items{"Über Delay.component|/Library/Audio/Plug-Ins/Components|11",
                                "日本語 Reverb.vst|"
                                    + homePath("Library/Audio/Plug-Ins/VST (Disabled)") + "|00",
                                QString(230, 'n') + ".component|/" + QString(250, 'p') + "|10",
                                "Sub/Folder Plug.dpm|/Library/Audio/Plug-Ins/MAS|01"};
        QList<PluginPtr> result;
        for (const QString &line : items) {
            result << std::make_shared<Plugin>();
            result.last()->setName(line.section('|', 0, 0));
            result.last()->setLocation(line.section('|', 1, 1));
            result.last()->setGlobal(line.section('|', 2).startsWith('1'));
            result.last()->setActive(line.section('|', 2).endsWith('1'));
        }
        return result;
    }
    // Writes a document and tells whether it is readable and what it reads as.
    QStringList reread(const QByteArray &bytes, bool readable = false) const
    {
        const QString path = homePath("doc.aukorv");
        writeText(path, bytes);
        EXPECT_EQ(SetDocument::load(path).has_value(), readable);
        return summary(SetDocument::read(path));
    }
    // The pop-up's titles after loading a sets file holding that.
    QStringList loadSets(const QByteArray &contents)
    {
        writeText(homePath("Library/Application Support/Korvane/ausets.plist"), contents);
        au->sets().loadSetList();
        return au->sets().setTitles();
    }
};

TEST_F(SetControllerTest, SavedSetReopensWithItsFlags)
{
    const QString path = saveAs("one.aukorv");
    EXPECT_EQ(ui.savePanels[0].directory, documents);
    au->sets().saveSetAs(path); // a path is listed once
    EXPECT_EQ(au->sets().setTitles(), QStringList({"no set", path}));
    EXPECT_EQ(au->sets().selectedSetIndex(), 1);

    au->marking().changeItem(item(au, "B.component"), "AUActive", false);
    EXPECT_TRUE(au->sets().isSetChanged());
    au->sets().openSet(path);
    EXPECT_TRUE(item(au, "B.component")->isActive());
    EXPECT_FALSE(au->isApplyEnabled());

    // Apply asks about the set by its name, and Cancel leaves set, marks and disk alone.
    ui.alertAnswers << AlertAnswer::Third << AlertAnswer::Second; // Cancel, then Don't Save
    au->marking().changeItem(item(au, "B.component"), "AUActive", false);
    au->apply();
    EXPECT_EQ(ui.alertMessages(), QStringList({"Save changes to the set “one”?"}));
    EXPECT_EQ(ui.alerts.last().buttons, QStringList({"Save", "Don't Save", "Cancel"}));
    EXPECT_TRUE(au->sets().isSetChanged() && au->isApplyEnabled());
    au->apply();
    EXPECT_FALSE(au->sets().isSetChanged());
    EXPECT_EQ(au->sets().selectedSetIndex(), 0);
    EXPECT_FALSE(au->isApplyEnabled());
}

// A set saved into a folder that refuses it once appeared in the pop-up and the name field with
// no file behind it. The failure is said, Save As asks again, and nothing takes the name.
TEST_F(SetControllerTest, ASetThatCannotBeWrittenIsSaidAndNeitherListedNorNamed)
{
    const QString locked = homePath("Locked");
    QDir().mkpath(locked);
    ImmutableGuard guard(locked);
    if (!guard.ok())
        GTEST_SKIP() << "no immutable attribute on this file system";
    const QStringList titles = au->sets().setTitles();
    const QString name = au->sets().currentSetName();
    ui.savePanelAnswers << locked + "/Live Gig.aukorv"; // then the panel is cancelled
    EXPECT_FALSE(au->sets().saveSetAs());
    EXPECT_EQ(ui.savePanels.size(), 2); // asked again after the failure, where it failed
    EXPECT_EQ(ui.savePanels.last().directory, locked);
    EXPECT_EQ(ui.alertMessages(), QStringList{"The set “Live Gig” was not saved"});
    EXPECT_TRUE(ui.alerts.first().informativeText.startsWith("Could not save " + locked
                                                             + "/Live Gig.aukorv: "));
    EXPECT_EQ(au->sets().setTitles(), titles);
    EXPECT_EQ(au->sets().currentSetName(), name);
    EXPECT_FALSE(QFileInfo::exists(locked + "/Live Gig.aukorv"));
}

TEST_F(SetControllerTest, SetsFileGainsNoSetAndAGoneSetAsksUntilRemovedOrCancelled)
{
    EXPECT_EQ(loadSets(PropertyList::toXml(QVariantList{"/a.aukorv", "/b.aukorv"})),
              QStringList({"no set", "/a.aukorv", "/b.aukorv"}));
    EXPECT_EQ(loadSets("not a plist"), QStringList({"no set"}));

    loadSets(PropertyList::toXml(QVariantList{"no set", "/gone/x.aukorv"}));
    ui.alertAnswers << AlertAnswer::Second << AlertAnswer::Second << AlertAnswer::Third;
    au->sets().selectSet(1);
    ASSERT_EQ(ui.alerts.size(), 3);
    EXPECT_EQ(ui.alerts[2].buttons, QStringList({"Cancel", "try again", "remove"}));
    EXPECT_EQ(au->sets().setTitles(), QStringList({"no set"}));

    // Cancel (Return and Escape) asks no more and keeps the entry for later.
    loadSets(PropertyList::toXml(QVariantList{"no set", "/gone/x.aukorv"}));
    ui.alerts.clear();
    ui.alertAnswers << AlertAnswer::First;
    au->sets().selectSet(1);
    EXPECT_EQ(ui.alerts.size(), 1);
    EXPECT_EQ(au->sets().setTitles(), QStringList({"no set", "/gone/x.aukorv"}));
    EXPECT_EQ(au->sets().selectedSetIndex(), 0);

    // With nobody there to answer, "try again" would never end: it is asked once, and the entry
    // stays for a person to decide on.
    HeadlessUi nobody;
    ManagersOfOneRun unattended(locations(), disk(), nobody);
    unattended.au.sets().loadSetList();
    unattended.au.sets().openDefaultSet("/gone/y.aukorv");
    const QStringList titles = unattended.au.sets().setTitles();
    unattended.au.sets().selectSet(int(titles.indexOf("/gone/y.aukorv")));
    EXPECT_EQ(unattended.au.sets().setTitles(), titles);
    EXPECT_EQ(unattended.au.sets().selectedSetIndex(), 0);
}

// Each entry goes to the copy the set names, whatever the table's order; with one copy gone, the
// set's entry for it is missing, not handed to the survivor.
TEST_F(SetControllerTest, ApplyAfterLoadingMovesEachSavedCopyWhereTheSetSays)
{
    const QString system = B::makeAudioUnit(folder(TypeAU, 0), "Foo.component", MachO::ppc());
    const QString user = addAU(LocUserActive, "Foo.component");
    au->rescan();
    au->table().sortBy({{"AULocation", true}});
    for (const PluginPtr &it : au->items()) {
        if ((it->name() == "Foo.component" && it->isGlobal()) || it->name() == "A.component") {
            it->setActive(false);
            it->updateLocation(au->traits(), locations().allFolderPaths(au->traits()));
        }
    }
    const QString path = documents + "/copies.aukorv";
    au->sets().writeSet(path);

    au->rescan();
    au->table().sortBy({{"AULocation", false}});
    setPref("AUActivateAfterLoading", true);
    au->sets().openDefaultSet(path);
    EXPECT_TRUE(ui.missingItemsLists.isEmpty());
    EXPECT_TRUE(ui.alerts.isEmpty());
    EXPECT_FALSE(exists(system) || exists(auPath(0, "A.component")));
    EXPECT_TRUE(exists(auPath(1, "A.component")) && exists(auPath(0, "B.component")));
    EXPECT_TRUE(whole(auPath(1, "Foo.component"), MachO::ppc()));
    EXPECT_TRUE(whole(user, MachO::intel()));

    // Missing entries are listed; ignored, the document stays and no set is selected; removed,
    // the document loses them.
    QDir(auPath(1, "Foo.component")).removeRecursively();
    au->rescan();
    au->sets().openDefaultSet(path);
    EXPECT_EQ(ui.missingItemsLists, QStringList({"Foo.component"}));
    EXPECT_EQ(au->sets().selectedSetIndex(), 0);
    EXPECT_EQ(SetDocument::read(path).size(), 5);
    ui.missingItemsAnswers << MissingItemsAnswer::Remove;
    au->sets().openDefaultSet(path);
    EXPECT_EQ(SetDocument::read(path).size(), 4);
    EXPECT_EQ(au->sets().selectedSetIndex(), 1);
    EXPECT_TRUE(whole(user, MachO::intel()));
}

// The worked example reads and is written byte for byte; a saved document opens with every item; a
// failed write keeps the old document.
TEST_F(SetControllerTest, DocumentsAreWrittenIdenticallyAndFailedWritesKeepTheOld)
{
    QFile file(KORVANE_TEST_DATA "/typedstream/AUItemExample");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray example = file.readAll();
    const QList<PluginPtr> items = SetDocument::decode(example);
    EXPECT_EQ(summary(items), QStringList{"Foo.component|/Library/Audio/Plug-Ins/Components|11"});
    EXPECT_EQ(SetDocument::encode(items), example);

    const QString nowhere = homePath("missing/folder/set.aukorv");
    EXPECT_FALSE(SetDocument::write(disk(), nowhere, sample()) || QFile::exists(nowhere));

    const QString path = homePath("locked/set.aukorv");
    QDir().mkpath(homePath("locked"));
    ASSERT_TRUE(SetDocument::write(disk(), path, {}));
    ASSERT_TRUE(SetDocument::write(disk(), path, sample())); // replaces the document whole
    EXPECT_TRUE(SetDocument::load(path).has_value());
    EXPECT_EQ(summary(SetDocument::read(path)), summary(sample()));
    ImmutableGuard guard(homePath("locked"));
    if (!guard.ok())
        GTEST_SKIP() << "no immutable attribute on this file system";
    EXPECT_FALSE(SetDocument::write(disk(), path, {}));
    EXPECT_EQ(summary(SetDocument::read(path)), summary(sample()));
}

TEST_F(SetControllerTest, OnlyArraysOfItemsAreReadableAndDamageNeverCrashes)
{
    EXPECT_FALSE(SetDocument::load(homePath("nothing.aukorv")).has_value());
    EXPECT_TRUE(reread("not an archive at all").isEmpty());

    using W = TypedStreamWriter;
    const auto name = W::makeString("A.component"), where = W::makeString("/Library");
    const auto yes = W::makeString("YES");
    const auto item = [&](const char *className, QList<ArchivedObjectPtr> objects) {
        return W::makeArray({W::makeObject(className, std::move(objects))});
    };
    const struct {
        const char *what;
        ArchivedObjectPtr root;
    } cases[] = {
        {"root is a string", name},
        {"root is nil", nullptr},
        {"element is a string",
         W::makeArray({W::makeObject("AUItem", {name, where, yes, yes}), name})},
        {"element is nil", W::makeArray({nullptr})},
        {"wrong class name", item("AUltem", {name, where, yes, yes})},
        {"three objects", item("AUItem", {name, where, yes})},
        {"name not a string", item("AUItem", {W::makeArray({}), where, yes, yes})},
    };
    for (const auto &c : cases)
        EXPECT_TRUE(reread(W::write(c.root)).isEmpty()) << c.what;

    // Either array class, nil or non-"YES" flags as NO, an empty array as an empty set.
    const auto lower = W::makeObject("AUItem", {name, where, nullptr, W::makeString("yes")});
    EXPECT_EQ(reread(W::write(W::makeArray({lower}, false)), true),
              QStringList{"A.component|/Library|00"});
    EXPECT_TRUE(reread(W::write(W::makeArray({})), true).isEmpty());

    const QByteArray valid = SetDocument::encode(sample());
    // Cut short, a document reads as nothing; a changed byte may leave it readable (a letter of a
    // name), never with a different count.
    for (qsizetype at = 0; at < valid.size(); ++at) {
        EXPECT_TRUE(SetDocument::decode(valid.left(at)).isEmpty()) << at;
        for (const char value :
             {'\x00', '\x01', '\x7f', '\x80', '\x81', '\x84', '\x85', '\x86', '\x92', '\xff'}) {
            QByteArray damaged = valid;
            damaged[at] = value;
            const qsizetype count = SetDocument::decode(damaged).size();
            EXPECT_TRUE(count == 0 || count == 4) << at << " " << int(value);
        }
    }
}

} // namespace korvane
