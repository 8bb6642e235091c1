#include "core/FormatTable.h"

#include <gtest/gtest.h>

namespace korvane {
namespace {

// A row that leaves one of its texts out shows an empty title or an alert with no words; every
// built-in row writes each of them.
TEST(FormatTest, EveryBuiltInRowGivesEachOfItsTexts)
{
    for (const Format &format : FormatTable::builtIn()) {
        const FormatTexts &t = format.texts;
        for (const char *text :
             {t.panelTitle, t.folderTextPrefix, t.installFirstButton, t.installInformative,
              t.installProgressTitle, t.infoMessage, t.infoText, t.noSetMessage,
              format.activeOnWord, format.activeOffWord})
            EXPECT_STRNE(text, "") << format.prefix.toStdString();
    }
}

} // namespace
} // namespace korvane
