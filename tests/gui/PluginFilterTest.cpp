#include "GuiFixture.h"

#include "gui/table/PluginFilter.h"
#include "gui/table/QuickFilterBar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSignalSpy>

namespace korvane {
namespace {

// Plug-ins as a scan leaves them, each with what its files said.
class PluginFilterTest : public GuiTest {
protected:
    static PluginPtr plugin(const QString &name, const QString &vendor,
                            const QString &unreadable = {})
    {
        auto item = std::make_shared<Plugin>();
        item->setName(name);
        item->setLocation("/home/Audio Vendor/.vst3");
        item->setActive(true);
        auto metadata = std::make_shared<PluginMetadata>();
        metadata->vendor = vendor;
        metadata->architectures = {"x86_64"};
        metadata->unreadable = unreadable;
        item->setMetadata(metadata);
        return item;
    }
};

TEST_F(PluginFilterTest, TheSearchLooksAtNameAndVendorButNeverTheFolder)
{
    const PluginPtr squash = plugin("Squash.vst3", "Acme Audio");
    PluginFilter filter;
    EXPECT_FALSE(filter.isFiltering());
    for (const char *text : {"squash", "ACME", "audio"}) {
        filter.text = text;
        EXPECT_TRUE(filter.accepts(*squash, 0)) << text;
    }
    for (const char *text : {"Vendor", ".vst3/", "home"}) { // all in the folder alone
        filter.text = text;
        EXPECT_FALSE(filter.accepts(*squash, 0)) << text;
    }
}

TEST_F(PluginFilterTest, QuickFiltersCombineAndTheFormatFilterPicksOneFormat)
{
    const PluginPtr fine = plugin("Fine.vst3", "Acme");
    const PluginPtr broken =
        plugin("Broken.vst3", "", "cannot be read: moduleinfo.json is not JSON5");
    PluginFilter filter;
    filter.unreadableOnly = true;
    EXPECT_FALSE(filter.accepts(*fine, 4));
    EXPECT_TRUE(filter.accepts(*broken, 4));
    filter.architecture = "aarch64";
    EXPECT_FALSE(filter.accepts(*broken, 4));
    filter.architecture = "x86_64";
    filter.format = 5;
    EXPECT_FALSE(filter.accepts(*broken, 4));
    EXPECT_TRUE(filter.accepts(*broken, 5));
    filter.state = PluginFilter::State::Off;
    EXPECT_FALSE(filter.accepts(*broken, 5));
}

TEST_F(PluginFilterTest, TheBarShowsTheFormatFilterOnlyWhereAListHoldsSeveralFormats)
{
    QuickFilterBar bar("VST3");
    bar.show();
    EXPECT_FALSE(bar.formatFilter()->isVisible());
    EXPECT_FALSE(bar.focusOrder().isEmpty());
    QSignalSpy changed(&bar, &QuickFilterBar::changed);

    bar.setFormats({{4, "LV2"}, {5, "VST3"}});
    EXPECT_TRUE(bar.formatFilter()->isVisible());
    bar.formatFilter()->setCurrentIndex(2);
    bar.unreadableFilter()->setChecked(true);
    EXPECT_EQ(changed.size(), 2);
    PluginFilter base;
    base.text = "kept";
    const PluginFilter filter = bar.applied(base);
    EXPECT_EQ(filter.format, 5);
    EXPECT_TRUE(filter.unreadableOnly);
    EXPECT_EQ(filter.text, "kept");

    // An architecture no longer offered falls back to all, and says so.
    bar.setArchitectures({"arm64", "x86_64"});
    bar.architectureFilter()->setCurrentIndex(1);
    changed.clear();
    bar.setArchitectures({"x86_64"});
    EXPECT_EQ(bar.applied({}).architecture, "");
    EXPECT_EQ(changed.size(), 1);
    bar.setFormats({});
    EXPECT_FALSE(bar.formatFilter()->isVisible());
    EXPECT_EQ(bar.applied({}).format, -1);
}

} // namespace
} // namespace korvane
