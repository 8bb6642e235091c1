#include "FormatManagerFixture.h"

#include "library/AudioUnitComponent.h"

namespace korvane {
namespace {

// A component's Pascal-string name splits into manufacturer and name; a length beyond the
// bytes or below zero names nothing.
TEST(AudioUnitComponentTest, ParsesManufacturerAndNameFromItsPascalString)
{
    AudioUnitComponent component(Component{"/nowhere.component", 0});
    const auto parsed = [&component](const QByteArray &pascalName) {
        component.parseName(pascalName);
        return component.manufacturer().value_or("-") + "|" + component.name().value_or("-");
    };
    const auto counted = [](const QByteArray &text) { return char(text.size()) + text; };
    EXPECT_EQ(parsed(counted("Acme:   Big Synth")), "Acme|Big Synth");
    EXPECT_EQ(parsed(counted("No colon here")), "-|-");
    EXPECT_EQ(parsed(counted("Acme: ")), "Acme|");
    EXPECT_EQ(parsed(char(0xC8) + QByteArray("Acme: X")), "-|-");    // a negative length is no name
    EXPECT_EQ(parsed(char(0x40) + QByteArray("Acme: X")), "Acme|X"); // shorter than announced
    EXPECT_EQ(parsed({}), "-|-");
}

} // namespace
} // namespace korvane
