#include "cli/CliUi.h"
#include "cli/Options.h"

#include <QTextStream>
#include <gtest/gtest.h>

namespace korvane {
namespace {

QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

Options parsed(const char *line)
{
    const ParsedCommandLine result = parseCommandLine(words(line));
    EXPECT_TRUE(result.options.has_value()) << line << ": " << result.error.toStdString();
    return result.options.value_or(Options{});
}

QString parseError(const char *line)
{
    const ParsedCommandLine result = parseCommandLine(words(line));
    EXPECT_FALSE(result.options.has_value()) << line;
    EXPECT_FALSE(result.error.isEmpty()) << line;
    return result.error;
}

TEST(ParseCommandLineTest, SetOptionsOfTheLaunchScriptApplySets)
{
    const Options options = parsed("-AU /s/Live.aukorv -VST /s/Live.vstkorv -rtas r.rtaskorv -Mas m");
    EXPECT_EQ(options.command, Options::Apply);
    EXPECT_EQ(options.sets[TypeAU], "/s/Live.aukorv");
    EXPECT_EQ(options.sets[TypeRTAS], "r.rtaskorv");
    EXPECT_EQ(options.sets[TypeMAS], "m");
    EXPECT_EQ(options.sets[TypeVST], "/s/Live.vstkorv");
    EXPECT_TRUE(options.root.isEmpty());
}

TEST(ParseCommandLineTest, EveryCommandWithItsArguments)
{
    Options list = parsed("list --format VsT --json");
    EXPECT_EQ(list.command, Options::List);
    EXPECT_EQ(list.format, TypeVST);
    EXPECT_TRUE(list.json);
    EXPECT_EQ(parsed("list").format, -1);

    Options enable = parsed("enable --format au Foo.component Bar");
    EXPECT_EQ(enable.command, Options::Enable);
    EXPECT_EQ(enable.format, TypeAU);
    EXPECT_EQ(enable.names, QStringList({"Foo.component", "Bar"}));
    EXPECT_EQ(parsed("disable Foo --format=mas").command, Options::Disable);
    EXPECT_EQ(parsed("disable Foo --format=mas").format, TypeMAS);

    EXPECT_EQ(parsed("duplicates --json").command, Options::Duplicates);
    Options save = parsed("save-set --format rtas out.rtaskorv");
    EXPECT_EQ(save.command, Options::SaveSet);
    EXPECT_EQ(save.file, "out.rtaskorv");
    Options show = parsed("show-set in.aukorv --json --verbose");
    EXPECT_EQ(show.command, Options::ShowSet);
    EXPECT_EQ(show.file, "in.aukorv");
    EXPECT_TRUE(show.json);
    EXPECT_TRUE(show.verbose);

    // After "--" a name may begin with a dash.
    EXPECT_EQ(parsed("disable --format vst -- -Odd.vst").names, QStringList({"-Odd.vst"}));
}

TEST(ParseCommandLineTest, GlobalOptionsStandBeforeOrAfterTheCommand)
{
    const Options before = parsed("--root /r --home /h list --format au");
    const Options after = parsed("list --format au --root /r --home=/h");
    EXPECT_EQ(before, after);
    EXPECT_EQ(before.root, "/r");
    EXPECT_EQ(before.home, "/h");
    EXPECT_EQ(parsed("-AU a --root /r").root, "/r");
}

TEST(ParseCommandLineTest, HelpAndVersionWinOverEverythingElse)
{
    EXPECT_EQ(parsed("--help").command, Options::Help);
    EXPECT_EQ(parsed("-h").command, Options::Help);
    EXPECT_EQ(parsed("list --bogus --help").command, Options::Help);
    EXPECT_EQ(parsed("--version").command, Options::Version);
    EXPECT_TRUE(helpText().contains("save-set --format F FILE"));
    EXPECT_TRUE(versionText().startsWith("KorvaneCMD "));
}

TEST(ParseCommandLineTest, MissingArgumentsAreErrorsNamingTheOption)
{
    EXPECT_TRUE(parseError("-AU").contains("-AU"));
    EXPECT_TRUE(parseError("-AU --json").contains("-AU"));
    EXPECT_TRUE(parseError("list --root").contains("--root"));
    EXPECT_TRUE(parseError("-VST x --home").contains("--home"));
    EXPECT_TRUE(parseError("list --format").contains("--format"));
    EXPECT_TRUE(parseError("list --format --json").contains("--format"));
    EXPECT_TRUE(parseError("list --root=").contains("--root"));
    EXPECT_TRUE(parseError("enable --format au").contains("enable"));
    EXPECT_TRUE(parseError("disable Foo").contains("--format"));
    EXPECT_TRUE(parseError("save-set --format au").contains("file"));
    EXPECT_TRUE(parseError("save-set out.aukorv").contains("--format"));
    EXPECT_TRUE(parseError("show-set").contains("file"));
    EXPECT_TRUE(parseError("").contains("nothing to do"));
}

TEST(ParseCommandLineTest, UnknownAndMisplacedArgumentsAreErrorsNamingThem)
{
    EXPECT_TRUE(parseError("--bogus").contains("--bogus"));
    EXPECT_TRUE(parseError("-AU a -x").contains("-x"));
    EXPECT_TRUE(parseError("frobnicate").contains("frobnicate"));
    EXPECT_TRUE(parseError("list --format wav").contains("wav"));
    EXPECT_TRUE(parseError("list --format au --format vst").contains("twice"));
    EXPECT_TRUE(parseError("-AU a -au b").contains("twice"));
    EXPECT_TRUE(parseError("list extra").contains("extra"));
    EXPECT_TRUE(parseError("show-set a b").contains("\"b\""));
    EXPECT_TRUE(parseError("list -AU a").contains("-AU"));
    EXPECT_TRUE(parseError("show-set f --format au").contains("--format"));
    EXPECT_TRUE(parseError("enable --format au --json X").contains("--json"));
    EXPECT_TRUE(parseError("-AU a --json").contains("--json"));
    EXPECT_TRUE(parseError("-AU a stray").contains("stray"));
}

TEST(ParseCommandLineTest, ToCommandLineParsesBackToTheSameOptions)
{
    for (const char *line : {"-AU a -VST b", "--root /r --home /h -MAS m", "list", "list --format rtas --json",
                             "enable --format au A B", "disable --format vst -- -Odd", "duplicates --json -v",
                             "save-set --format mas x", "show-set y --json", "--help", "--version"}) {
        const Options options = parsed(line);
        const ParsedCommandLine again = parseCommandLine(toCommandLine(options));
        ASSERT_TRUE(again.options.has_value()) << line << ": " << again.error.toStdString();
        EXPECT_EQ(*again.options, options) << line;
    }
}

TEST(CliUiTest, NothingWaitsAndAFailedFileOperationStops)
{
    CliUi ui;
    Alert fileError;
    fileError.messageText = "File operation error...";
    fileError.buttons = {"Proceed", "Stop"};
    EXPECT_EQ(ui.runAlert(fileError), AlertAlternate);

    Alert question;
    question.messageText = "Save changes to Set";
    question.buttons = {"Save", "Discard"};
    EXPECT_EQ(ui.runAlert(question), AlertDefault);

    Alert added;
    added.addedButtons = true;
    added.buttons = {"Cancel", "Stop", "Go"};
    EXPECT_EQ(ui.runAlert(added), AlertSecond);

    EXPECT_EQ(ui.runSavePanel({}), std::nullopt);
    EXPECT_EQ(ui.runOpenPanel({}), std::nullopt);
    EXPECT_EQ(ui.runMissingItems("A\nB"), 1);
    EXPECT_EQ(ui.answeredAlerts(),
              QStringList({"File operation error... -> Stop", "Save changes to Set -> Save", " -> Stop"}));
}

TEST(CliUiTest, ProgressIsThrottledAndClearedAtTheEnd)
{
    QString text;
    QTextStream stream(&text);
    CliUi ui(&stream);
    ui.progressBegin("scan AudioUnits:");
    for (int i = 1; i <= 1000; ++i) {
        ui.progressText("scan for AudioUnits:/Library/Audio/Plug-Ins/Components");
        ui.progressValue(25 * i / 1000, 25);
    }
    ui.progressEnd();
    stream.flush();
    EXPECT_LT(text.count('\r'), 20);
    EXPECT_TRUE(text.endsWith("\r\x1b[K"));

    CliUi silent;
    silent.progressBegin("scan AudioUnits:"); // no stream: nothing to draw on, nothing to crash
    silent.progressValue(1, 2);
    silent.progressEnd();
}

} // namespace
} // namespace korvane
