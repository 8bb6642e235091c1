#include "library/ProductCatalog.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

ProductSource source(const QString &format, const QString &file, const QString &name = {},
                     const QString &vendor = {}, const QStringList &identifiers = {})
{
    auto item = std::make_shared<Plugin>();
    item->setName(file);
    if (!name.isEmpty() || !vendor.isEmpty() || !identifiers.isEmpty()) {
        auto metadata = std::make_shared<PluginMetadata>();
        metadata->name = name;
        metadata->vendor = vendor;
        metadata->identifiers = identifiers;
        item->setMetadata(metadata);
    }
    return ProductSource{nullptr, -1, format, item};
}

QStringList namesOf(const QList<Product> &products)
{
    QStringList names;
    for (const Product &product : products)
        names << product.name + QLatin1Char('=') + product.formats().join(QLatin1Char('+'));
    return names;
}

TEST(ProductCatalogTest, NamesCompareWithoutCaseSpacingPunctuationBuildWordsOrExtensions)
{
    const QString surge = ProductCatalog::nameKey(QStringLiteral("Surge XT"));
    EXPECT_EQ(surge, "surgext");
    for (const char *variant : {"Surge XT (VST3)", "surge-xt.vst3", "Surge XT x64", "SURGE_XT.clap",
                                "Surge XT.lv2", "Surge XT [64-bit].so", "Surge XT VST3 x64",
                                "Surge XT.rtas", "Surge XT RTAS", "Surge XT.vst3.so"})
        EXPECT_EQ(ProductCatalog::nameKey(QString::fromUtf8(variant)), surge) << variant;
    // Words that make another product stay; a build word alone is a name.
    EXPECT_EQ(ProductCatalog::nameKey(QStringLiteral("Dexed Mono")), "dexedmono");
    EXPECT_EQ(ProductCatalog::nameKey(QStringLiteral("Bass 2")), "bass2");
    EXPECT_EQ(ProductCatalog::nameKey(QStringLiteral("AU")), "au");
    EXPECT_EQ(ProductCatalog::nameKey(QStringLiteral("Vital VST")), "vital");
    EXPECT_EQ(ProductCatalog::nameKey(QStringLiteral("Größe Hall")), "größehall");
    EXPECT_EQ(ProductCatalog::vendorKey(QStringLiteral("Surge Synth Team, Inc.")),
              "surgesynthteam");
    EXPECT_EQ(ProductCatalog::vendorKey(QStringLiteral("u-he")), "uhe");
    EXPECT_EQ(ProductCatalog::vendorKey(QStringLiteral("Calf Studio Gear")), "calfstudiogear");
    EXPECT_EQ(ProductCatalog::vendorKey(QStringLiteral("Inc")), "inc");
}

TEST(ProductCatalogTest, OneProductAcrossFormatsByVendorAndName)
{
    const QList<Product> products =
        ProductCatalog::group({source("VST3", "Surge XT.vst3", "Surge XT", "Surge Synth Team"),
                               source("CLAP", "Surge XT.clap", "Surge XT", "Surge Synth Team"),
                               source("LV2", "surge-xt.lv2", "Surge XT", "surge synth team"),
                               source("VST3", "Vital.vst3", "Vital", "Vital Audio"),
                               // Same name, another maker: another product.
                               source("LV2", "vital.lv2", "Vital", "Someone Else")});
    EXPECT_EQ(namesOf(products),
              QStringList({"Surge XT=VST3+CLAP+LV2", "Vital=VST3", "Vital=LV2"}));
    EXPECT_TRUE(products.at(0).inSeveralFormats());
    EXPECT_FALSE(products.at(1).inSeveralFormats());
    EXPECT_EQ(products.at(0).vendor, "Surge Synth Team");
}

TEST(ProductCatalogTest, APlugInWithoutVendorJoinsTheOnlyProductOfItsName)
{
    // A Linux VST 2 or LADSPA file names no vendor.
    QList<Product> products = ProductCatalog::group(
        {source("Linux VST", "Dexed.so"), source("VST3", "Dexed.vst3", "Dexed", "Digital Suburban"),
         source("LV2", "dexed.lv2", "Dexed", "Digital Suburban")});
    EXPECT_EQ(namesOf(products), QStringList({"Dexed=Linux VST+VST3+LV2"}));
    // The name is the first member's: the file's name without its extension.
    EXPECT_EQ(products.first().name, "Dexed");
    EXPECT_EQ(products.first().vendor, "Digital Suburban");

    // Two makers of that name: nothing says which one the file is.
    products = ProductCatalog::group({source("Linux VST", "Reverb.so"),
                                      source("VST3", "Reverb.vst3", "Reverb", "Maker A"),
                                      source("VST3", "Reverb 2.vst3", "Reverb", "Maker B")});
    EXPECT_EQ(products.size(), 3);
}

TEST(ProductCatalogTest, AVst3ThatReplacesAVst2IdIsThatPlugInsProduct)
{
    const QList<Product> products = ProductCatalog::group(
        {source("VST", "OldGain.vst", "Gain Classic", "", {"VST2:Gain"}),
         source("VST3", "Gain.vst3", "Gain Rewritten", "Example Audio",
                {"0123456789ABCDEF0123456789ABCDEF", "VST2:Gain"}),
         // A VST 3 naming an ID no plug-in has is left alone, and never takes another VST 3
         // that names the same ID for the VST 2 itself.
         source("VST3", "Other.vst3", "Other", "Example Audio", {"VST2:Nope"}),
         source("VST3", "Third.vst3", "Third", "Another Maker", {"VST2:Nope"})});
    EXPECT_EQ(namesOf(products),
              QStringList({"Gain Classic=VST+VST3", "Other=VST3", "Third=VST3"}));
}

TEST(ProductCatalogTest, CopiesOfOneFormatInTwoFoldersAreOneProductInOneFormat)
{
    const QList<Product> products = ProductCatalog::group(
        {source("LV2", "eq.lv2", "EQ", "x42"), source("LV2", "eq.lv2", "EQ", "x42")});
    ASSERT_EQ(products.size(), 1);
    EXPECT_EQ(products.first().members.size(), 2);
    EXPECT_FALSE(products.first().inSeveralFormats());
}

} // namespace
} // namespace korvane
