#include "cli/Options.h"

#include <gtest/gtest.h>

namespace korvane {

// Failure messages show options as the command line they stand for.
void PrintTo(const Options &options, std::ostream *os)
{
    *os << toCommandLine(options).join(' ').toStdString();
}

namespace {

ParsedCommandLine parse(const char *line)
{
    return parseCommandLine(QString::fromUtf8(line).split(' ', Qt::SkipEmptyParts));
}

TEST(ParseCommandLineTest, EveryCommandParsesAndToCommandLineParsesBack)
{
    using O = Options;
    const Options listAu{.command = O::List, .root = "/r", .home = "/h", .format = TypeAU};
    const std::pair<const char *, Options> cases[] = {
        {"-AU /s/Live.aukorv -VST /s/Live.vstkorv -rtas r.rtaskorv -Mas m",
         {.sets = {"/s/Live.aukorv", "r.rtaskorv", "m", "/s/Live.vstkorv"}}},
        {"list --format VsT --json", {.command = O::List, .format = TypeVST, .json = true}},
        {"enable --format au Foo.component Bar",
         {.command = O::Enable, .format = TypeAU, .names = {"Foo.component", "Bar"}}},
        {"disable Foo --format=mas", {.command = O::Disable, .format = TypeMAS, .names = {"Foo"}}},
        // After "--" a name may begin with a dash.
        {"disable --format vst -- -Odd.vst",
         {.command = O::Disable, .format = TypeVST, .names = {"-Odd.vst"}}},
        {"duplicates --json -v", {.command = O::Duplicates, .json = true, .verbose = true}},
        {"save-set --format rtas out.rtaskorv",
         {.command = O::SaveSet, .format = TypeRTAS, .file = "out.rtaskorv"}},
        {"show-set in.aukorv --json --verbose",
         {.command = O::ShowSet, .json = true, .verbose = true, .file = "in.aukorv"}},
        // Every mover takes --check and --json; a name like an option is given inline.
        {"--check -AU s --json", {.sets = {"s"}, .json = true, .check = true}},
        {"disable --check --format vst Foo",
         {.command = O::Disable, .format = TypeVST, .names = {"Foo"}, .check = true}},
        {"apply --format au --on Foo --on=-Odd --off=a=b --on-file on.txt --off-file=off --only",
         {.command = O::ApplyList,
          .format = TypeAU,
          .on = {"Foo", "-Odd"},
          .off = {"a=b"},
          .onFile = "on.txt",
          .offFile = "off",
          .only = true}},
        {"backup --format au --to=-b.tar.xz",
         {.command = O::Backup, .format = TypeAU, .to = "-b.tar.xz"}},
        {"restore --replace --format vst -- -b.tar.xz",
         {.command = O::Restore, .format = TypeVST, .file = "-b.tar.xz", .replace = true}},
        // Global options stand before or after the command.
        {"--root /r --home /h list --format au", listAu},
        {"list --format au --root /r --home=/h", listAu},
        // A folder named like an option can only be given inline.
        {"list --root=-VST --home=--root=h",
         {.command = O::List, .root = "-VST", .home = "--root=h"}},
        // Help and version win over everything else.
        {"--help", {.command = O::Help}},
        {"list --bogus --help", {.command = O::Help}},
        {"--version", {.command = O::Version}},
    };
    for (const auto &[line, expected] : cases) {
        const ParsedCommandLine result = parse(line);
        EXPECT_EQ(result.options, expected) << line << ": " << result.error.toStdString();
        EXPECT_EQ(parseCommandLine(toCommandLine(expected)).options, expected) << line;
    }
}

TEST(ParseCommandLineTest, WrongCommandLinesAreErrorsNamingTheCulprit)
{
    // Missing arguments first, then unknown or misplaced ones.
    // clang-format off
    const std::pair<const char *, const char *> cases[] = {
        {"-AU", "-AU"},                              {"-AU --json", "-AU"},
        {"list --root", "--root"},                   {"list --format", "--format"},
        {"list --root=", "--root"},                  {"enable --format au", "enable"},
        {"disable Foo", "--format"},                 {"save-set --format au", "file"},
        {"show-set", "file"},                        {"", "nothing to do"},
        {"--bogus", "--bogus"},                      {"-AU a -x", "-x"},
        {"frobnicate", "frobnicate"},                {"list --format wav", "wav"},
        {"list --format au --format vst", "twice"},  {"-AU a -au b", "twice"},
        {"list extra", "extra"},                     {"show-set a b", "\"b\""},
        {"list -AU a", "-AU"},                       {"show-set f --format au", "--format"},
        {"save-set --format au f --json", "--json"}, {"-AU a stray", "stray"},
        {"list --check", "--check"},                 {"apply --format au", "apply needs"},
        {"apply --on Foo", "--format"},              {"list --on Foo", "--on"},
        {"-AU a --only", "--only"},                  {"apply --format au --on", "--on"},
        {"apply --format au --on Foo --off Foo", "\"Foo\""},
        {"apply --format au --on-file a --on-file b", "twice"},
        {"apply --format au --on Foo stray", "stray"},
        {"-wav s", "no format is named \"wav\" (use au, rtas, mas, vst, lv2, "}};
    // clang-format on
    for (const auto &[line, culprit] : cases) {
        const ParsedCommandLine result = parse(line);
        EXPECT_FALSE(result.options.has_value()) << line;
        EXPECT_TRUE(result.error.contains(culprit)) << line << ": " << result.error.toStdString();
    }
    // An empty argument names no file, as an empty value names no set.
    for (const QStringList &arguments :
         {QStringList{"show-set", ""}, QStringList{"save-set", "--format", "au", ""}})
        EXPECT_TRUE(parseCommandLine(arguments).error.contains("needs a file"));
}

} // namespace
} // namespace korvane
