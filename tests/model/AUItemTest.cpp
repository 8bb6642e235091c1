#include "model/AUItem.h"

#include "app/ServicesFixture.h"
#include "platform/PropertyList.h"
#include "platform/TypedStream.h"

#include <PluginLibraryBuilder.h>
#include <climits>

using namespace korvane;

class AUItemTest : public ServicesFixture {
protected:
    void SetUp() override
    {
        ServicesFixture::SetUp();
        services.emplace(parts());
    }
    std::optional<AppServices> services; // the registries the items read
    static ArchivedObjectPtr text(const QString &s) { return TypedStreamWriter::makeString(s); }
};

TEST_F(AUItemTest, ArchitectureComesFromTheExecutablesFirstBytes)
{
    using B = PluginLibraryBuilder;
    const QString dir = rootPath("plugins");
    const QList<std::pair<QString, QString>> cases{
        {B::makeBundle(dir, "P.component", MachO::ppc()), "PPC"},
        {B::makeBundle(dir, "I.component", MachO::intel()), "Intel"},
        {B::makeBundle(dir, "U.component", MachO::universal2()), "Universal Binary"},
        {B::makeBundle(dir, "X.component", MachO::x86_64()), "Unknown"},
        {B::makeBundle(dir, "T.component", MachO::universal3()), "Unknown"},
        {B::makeBundle(dir, "N.component", MachO::ppc(), {}, B::Xml, ""), "Unknown"},
        {B::makeFile(dir, "plain.dpm"), "PPC"},
    };
    for (const auto &[path, expected] : cases) {
        AUItem item;
        item.setAUType(path);
        EXPECT_EQ(item.getAUType(), expected) << path.toStdString();
    }
}

TEST_F(AUItemTest, GroupsAreReadThroughTheRegistryByPosition)
{
    services->getGroups() = QStringList{"", "G1", "G2", "G3"};
    AUItem second(&*services), third(&*services), stranger(&*services);
    second.setAUGroup("G2");
    third.setAUGroup("G3");
    stranger.setAUGroup("Nowhere"); // the sign test lets "not found" through
    EXPECT_EQ(stranger.getGroupID(), INT_MAX);
    EXPECT_EQ(stranger.getAUGroup(), "");

    services->setGroupByIndex(1, "Renamed");
    EXPECT_EQ(second.getAUGroup(), "Renamed");
    services->removeGroupEntry(0);
    EXPECT_EQ(second.getAUGroup(), "G3"); // members keep their position
    EXPECT_EQ(third.getAUGroup(), "");    // past the end: no group
}

TEST_F(AUItemTest, ArchiveHoldsNameLocationAndTwoFlags)
{
    services->saveContent({"Echo.vst", "/presets"});
    AUItem item;
    item.setAULocation("/L");
    item.setAUGlobal(true);
    EXPECT_EQ(item.encodeWithCoder(), QStringList({"", "/L", "YES", "NO"}));

    const QList<ArchivedObjectPtr> coded{text("Echo.vst"), text("/L"), text("YES"), text("NO")};
    auto decoded = AUItem::initWithCoder(coded, &*services);
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->getAUGlobal() && !decoded->getAUActive());
    EXPECT_TRUE(decoded->hasContent()); // the content lookup ran
    // Decoded for display only: no registry, no content, no group.
    EXPECT_FALSE(AUItem::initWithCoder(coded)->hasContent());
    for (const auto &flag : {text("yes"), text("1"), ArchivedObjectPtr()}) {
        auto other = AUItem::initWithCoder({text("A"), text("/L"), flag, flag});
        ASSERT_TRUE(other);
        EXPECT_FALSE(other->getAUGlobal() || other->getAUActive());
    }
    EXPECT_TRUE(AUItem::initWithCoder({text("A"), text("/L")}));
    EXPECT_FALSE(AUItem::initWithCoder({TypedStreamWriter::makeNumber(1LL), text("/L")}));
    EXPECT_FALSE(AUItem::initWithCoder({text("A")}));
}
