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
    std::optional<AppServices> services; // the registries that fill the items
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
    GroupRegistry &groups = services->groupRegistry();
    for (const char *name : {"G1", "G2", "G3"})
        groups.setGroupAt(groups.groupCount(), name);
    auto group = [&groups](const Plugin &item) { return groups.nameAt(item.groupId()); };
    Plugin second, third, stranger;
    second.setGroupId(groups.positionOf("G2"));
    third.setGroupId(groups.positionOf("G3"));
    stranger.setGroupId(groups.positionOf("Nowhere")); // the sign test lets "not found" through
    EXPECT_EQ(stranger.groupId(), INT_MAX);
    EXPECT_EQ(group(stranger), "");

    Plugin first;
    first.setGroupId(groups.positionOf("G1"));
    groups.setGroupAt(0, "Renamed");
    EXPECT_EQ(group(first), "Renamed");
    // Removed, its members have none and later members keep their group, not the next one's.
    QObject::connect(&groups, &GroupRegistry::groupRemoved, [&](int position) {
        for (Plugin *item : {&first, &second, &third})
            item->groupRemoved(position);
    });
    groups.removeGroup(0);
    EXPECT_EQ(group(first), "");
    EXPECT_EQ(group(second), "G2");
    EXPECT_EQ(group(third), "G3");
}

TEST_F(PluginTest, ArchiveHoldsNameLocationAndTwoFlags)
{
    ContentRegistry &content = services->contentRegistry();
    content.store(QStringList{"Echo.vst", "/presets"});
    Plugin item;
    item.setLocation("/L");
    item.setGlobal(true);
    EXPECT_EQ(item.encode(), QStringList({"", "/L", "YES", "NO"}));

    const QList<ArchivedObjectPtr> coded{text("Echo.vst"), text("/L"), text("YES"), text("NO")};
    auto decoded = Plugin::decode(coded);
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->isGlobal() && !decoded->isActive());
    // Decoded for display only: no content, no group, until the registry fills it.
    EXPECT_FALSE(decoded->hasContent() || decoded->groupId() != 0);
    content.fill(*decoded);
    EXPECT_TRUE(decoded->hasContent());
    for (const auto &flag : {text("yes"), text("1"), ArchivedObjectPtr()}) {
        auto other = Plugin::decode({text("A"), text("/L"), flag, flag});
        ASSERT_TRUE(other);
        EXPECT_FALSE(other->isGlobal() || other->isActive());
    }
    EXPECT_TRUE(Plugin::decode({text("A"), text("/L")}));
    EXPECT_FALSE(Plugin::decode({TypedStreamWriter::makeNumber(1LL), text("/L")}));
    EXPECT_FALSE(Plugin::decode({text("A")}));
}
