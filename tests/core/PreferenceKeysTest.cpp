#include "core/PreferenceKeys.h"
#include "core/FormatTable.h"

#include <QHash>
#include <gtest/gtest.h>

namespace korvane {
namespace {

using PreferenceKeys::FormatKey;

// One preferences file holds the keys of the program and of every format row: a row's prefix
// followed by one of its names must never spell another key ("AllPlugins" + "Columns" would be the
// list's header), or two settings would overwrite each other.
TEST(PreferenceKeysTest, EveryKeyOfTheProgramAndOfEachFormatRowIsOneOfAKind)
{
    QHash<QString, QString> owners; // key -> what it belongs to
    QStringList clashes;
    const auto add = [&](const QString &key, const QString &owner) {
        EXPECT_FALSE(key.isEmpty()) << owner.toStdString();
        if (owners.contains(key))
            clashes << key + " (" + owners.value(key) + ", " + owner + ")";
        owners.insert(key, owner);
    };
    for (QLatin1String key : PreferenceKeys::kProgramKeys)
        add(key, "the program");
    for (const Format &format : FormatTable::builtIn())
        for (FormatKey key : PreferenceKeys::kFormatKeys)
            add(PreferenceKeys::forFormat(format, key), format.prefix);
    EXPECT_TRUE(clashes.isEmpty()) << clashes.join("; ").toStdString();
}

} // namespace
} // namespace korvane
