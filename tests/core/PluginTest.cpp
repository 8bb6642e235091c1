#include "core/Plugin.h"

#include "codec/PropertyList.h"
#include "codec/TypedStream.h"
#include "support/ServicesFixture.h"

#include <PluginLibraryBuilder.h>
#include <climits>

using namespace korvane;

class PluginTest : public ServicesFixture {
protected:
    void SetUp() override
    {
        ServicesFixture::SetUp();
        services.emplace(parts());
    }
    std::optional<AppServices> services; // the registries the items read
    static ArchivedObjectPtr text(const QString &s) { return TypedStreamWriter::makeString(s); }
};

TEST_F(PluginTest, ArchitectureComesFromTheExecutablesFirstBytes)
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
        Plugin item;
        item.detectArchitecture(path);
        EXPECT_EQ(item.architectureName(), expected) << path.toStdString();
    }
}

TEST_F(PluginTest, GroupsAreReadThroughTheRegistryByPosition)
{
    services->groups() = QStringList{"", "G1", "G2", "G3"};
    Plugin second(&*services), third(&*services), stranger(&*services);
    second.setGroup("G2");
    third.setGroup("G3");
    stranger.setGroup("Nowhere"); // the sign test lets "not found" through
    EXPECT_EQ(stranger.groupId(), INT_MAX);
    EXPECT_EQ(stranger.group(), "");

    Plugin first(&*services);
    first.setGroup("G1");
    services->setGroupAt(0, "Renamed");
    EXPECT_EQ(first.group(), "Renamed");
    // Removed, its members have none and later members keep their group, not the next one's.
    QObject::connect(&*services, &AppServices::groupRemoved, [&](int position) {
        for (Plugin *item : {&first, &second, &third})
            item->groupRemoved(position);
    });
    services->removeGroup(0);
    EXPECT_EQ(first.group(), "");
    EXPECT_EQ(second.group(), "G2");
    EXPECT_EQ(third.group(), "G3");
}

TEST_F(PluginTest, ArchiveHoldsNameLocationAndTwoFlags)
{
    services->storeContent({"Echo.vst", "/presets"});
    Plugin item;
    item.setLocation("/L");
    item.setGlobal(true);
    EXPECT_EQ(item.encode(), QStringList({"", "/L", "YES", "NO"}));

    const QList<ArchivedObjectPtr> coded{text("Echo.vst"), text("/L"), text("YES"), text("NO")};
    auto decoded = Plugin::decode(coded, &*services);
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->isGlobal() && !decoded->isActive());
    EXPECT_TRUE(decoded->hasContent()); // the content lookup ran
    // Decoded for display only: no registry, no content, no group.
    EXPECT_FALSE(Plugin::decode(coded)->hasContent());
    for (const auto &flag : {text("yes"), text("1"), ArchivedObjectPtr()}) {
        auto other = Plugin::decode({text("A"), text("/L"), flag, flag});
        ASSERT_TRUE(other);
        EXPECT_FALSE(other->isGlobal() || other->isActive());
    }
    EXPECT_TRUE(Plugin::decode({text("A"), text("/L")}));
    EXPECT_FALSE(Plugin::decode({TypedStreamWriter::makeNumber(1LL), text("/L")}));
    EXPECT_FALSE(Plugin::decode({text("A")}));
}
