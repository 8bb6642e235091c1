#include "library/DuplicateReport.h"

#include "FormatManagerFixture.h"

namespace korvane {
namespace {

class DuplicateReportTest : public FormatManagerFixture {
protected:
    QList<DuplicateReport::Name> report() const
    {
        return DuplicateReport::find(au->plugins(), locations().allFolderPaths(au->traits()));
    }
    static QStringList sorted(QStringList lines)
    {
        lines.sort();
        return lines;
    }
    // "folder | version | on", a copy as the report names it; sorted.
    static QStringList described(const DuplicateReport::Name &name)
    {
        QStringList copies;
        for (const DuplicateReport::Copy &copy : name.copies)
            copies << copy.folder + " | " + copy.version + " | " + (copy.active ? "on" : "off");
        copies.sort();
        return copies;
    }
};

// Each copy of a name installed twice is told apart by its folder, its version (the short
// version and the build where they differ) and whether it is on; a name held once is left out.
TEST_F(DuplicateReportTest, EachCopyIsNamedByItsFolderVersionAndState)
{
    B::makeBundle(folder(TypeAU, LocSystemActive), "Echo.component", MachO::intel(),
                  {{"CFBundleShortVersionString", "2.1"}, {"CFBundleVersion", "210"}});
    B::makeBundle(folder(TypeAU, LocUserDisabled), "Echo.component", MachO::intel());
    addAU(LocUserActive, "Solo.component");
    au->rescan();

    const QList<DuplicateReport::Name> names = report();
    ASSERT_EQ(names.size(), 1);
    EXPECT_EQ(names.first().name, "Echo.component");
    EXPECT_EQ(described(names.first()),
              sorted({folder(TypeAU, LocSystemActive) + " | 2.1 (210) | on",
                      folder(TypeAU, LocUserDisabled) + " | 1.0 | off"}));
    EXPECT_EQ(DuplicateReport::items(names).size(), 2);
}

// A copy marked but not yet applied is reported where it lies and as it is there: the report
// is about what is installed, not what the next Apply will make of it.
TEST_F(DuplicateReportTest, AMarkedCopyIsReportedAsItLiesOnDisk)
{
    addAU(LocSystemActive, "Echo.component");
    addAU(LocUserActive, "Echo.component");
    au->rescan();
    au->marking().setAllInactive();
    ASSERT_EQ(au->pendingCount(), 2);

    const QList<DuplicateReport::Name> names = report();
    ASSERT_EQ(names.size(), 1);
    EXPECT_EQ(described(names.first()), sorted({folder(TypeAU, LocSystemActive) + " | 1.0 | on",
                                                folder(TypeAU, LocUserActive) + " | 1.0 | on"}));
}

// A copy whose files name no version says none, and a damaged Info.plist is no version either.
TEST_F(DuplicateReportTest, ACopyWithoutAReadableVersionHasNone)
{
    addAU(LocSystemActive, "Echo.component");
    const QString damaged = addAU(LocUserActive, "Echo.component");
    writeText(damaged + "/Contents/Info.plist", "<plist><dict><key>CFBundleVersion");
    au->rescan();

    const QList<DuplicateReport::Name> names = report();
    ASSERT_EQ(names.size(), 1);
    EXPECT_EQ(described(names.first()), sorted({folder(TypeAU, LocSystemActive) + " | 1.0 | on",
                                                folder(TypeAU, LocUserActive) + " |  | on"}));
}

// The counts alone (KorvaneCMD's bench and the log's lines): each name once, where it first
// appears, with every copy counted.
TEST_F(DuplicateReportTest, CountsNameEachDuplicateOnceInTheOrderItFirstAppears)
{
    QList<PluginPtr> items;
    for (const char *name : {"b", "a", "b", "c", "a", "b"}) {
        auto plugin = std::make_shared<Plugin>();
        plugin->setName(name);
        items << plugin;
    }
    EXPECT_EQ(DuplicateReport::counts(items), (QList<QPair<QString, int>>{{"b", 3}, {"a", 2}}));
    EXPECT_TRUE(DuplicateReport::counts({}).isEmpty());
}

} // namespace
} // namespace korvane
