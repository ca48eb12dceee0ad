#include "ArgumentParser/Usage/HelpGenerator.h"

#include "ArgumentParser/TestCommands.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include <pty.h>
#include <unistd.h>

namespace argtest {
namespace {

/// Labels of 23 and 24 characters, an entry without help, a multi-line
/// abstract, a discussion, a hidden flag and a custom value name.
struct Layout : ParsableCommand<Layout> {
  static constexpr std::string_view typeName = "Layout";
  static CommandConfiguration configuration() {
    return {.abstract = "Lays out help text so that it can be checked.",
            .discussion = "More about it."};
  }
  bool fits = false, below = false, plain = false, multi = false,
       discuss = false, secret = false, words = false;
  std::optional<std::string> value;
  static Arguments<Layout> arguments() {
    return {
        flag(&Layout::fits, "fits")
            .name(customLong("aaaaaaaaaaaaaaaaaaaaa"))
            .help("Fits beside."),
        flag(&Layout::below, "below")
            .name(customLong("bbbbbbbbbbbbbbbbbbbbbb"))
            .help("Goes below."),
        flag(&Layout::plain, "plain"),
        flag(&Layout::multi, "multi").help("First line\nSecond line"),
        flag(&Layout::discuss, "discuss")
            .help(ArgumentHelp("Short.", "A longer discussion that explains.")),
        flag(&Layout::secret, "secret").help(ArgumentHelp::hidden()),
        option(&Layout::value, "value")
            .help(ArgumentHelp("Custom value name.", "", "path")),
        flag(&Layout::words, "words")
            .help("one two three four five six seven eight"),
    };
  }
};

/// Thirteen flags of which one is hidden: twelve usage entries.
struct Twelve : ParsableCommand<Twelve> {
  static constexpr std::string_view typeName = "Twelve";
  bool a = false, b = false, c = false, d = false, e = false, f = false,
       g = false, h = false, i = false, j = false, k = false, l = false,
       m = false;
  static Arguments<Twelve> arguments() {
    return {flag(&Twelve::a, "a"),
            flag(&Twelve::b, "b"),
            flag(&Twelve::c, "c"),
            flag(&Twelve::d, "d"),
            flag(&Twelve::e, "e"),
            flag(&Twelve::f, "f"),
            flag(&Twelve::g, "g"),
            flag(&Twelve::h, "h"),
            flag(&Twelve::i, "i"),
            flag(&Twelve::j, "j"),
            flag(&Twelve::k, "k"),
            flag(&Twelve::l, "l"),
            flag(&Twelve::m, "m").help(ArgumentHelp::hidden())};
  }
};

TEST(HelpGeneratorTest, PlacesAbstractsBesideOrBelowTheirLabels) {
  const std::string expected =
      R"(OVERVIEW: Lays out help text so that it can be checked.
More about it.


USAGE: layout [--aaaaaaaaaaaaaaaaaaaaa] [--bbbbbbbbbbbbbbbbbbbbbb] [--plain] [--multi] [--discuss] [--value <path>] [--words]

OPTIONS:
  --aaaaaaaaaaaaaaaaaaaaa Fits beside.
  --bbbbbbbbbbbbbbbbbbbbbb
                          Goes below.
  --plain
  --multi                 First line
                          Second line
  --discuss               Short.
        A longer discussion that explains.
  --value <path>          Custom value name.
  --words                 one two three four five six seven eight
  -h, --help              Show help information.
)";
  EXPECT_EQ(Layout::helpMessage(80), expected);
}

TEST(HelpGeneratorTest, WrapsAbstractsToTheScreenWidth) {
  const std::string rendered = Layout::helpMessage(50);
  EXPECT_NE(rendered.find("  --words                 one two three four five\n"
                          "                          six seven eight\n"),
            std::string::npos)
      << rendered;
  EXPECT_NE(rendered.find("OVERVIEW: Lays out help text so that it can be\n"
                          "checked.\nMore about it.\n"),
            std::string::npos)
      << rendered;
}

TEST(HelpGeneratorTest, UsesTheOverrideWhenNoWidthIsGiven) {
  HelpGenerator::screenWidthOverride = 50;
  EXPECT_EQ(Layout::helpMessage(), Layout::helpMessage(50));
  HelpGenerator::screenWidthOverride = 80;
  EXPECT_EQ(Layout::helpMessage(), Layout::helpMessage(80));
}

TEST(HelpGeneratorTest, WrapsAtTheTerminalWidthWithoutOverride) {
  winsize size{24, 50, 0, 0};
  int master = -1;
  int slave = -1;
  ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, &size), 0);
  std::fflush(stdout);
  int saved = dup(1);
  dup2(slave, 1);
  HelpGenerator::screenWidthOverride.reset();
  const std::string rendered = Layout::helpMessage();
  HelpGenerator::screenWidthOverride = 80;
  dup2(saved, 1);
  close(saved);
  close(slave);
  close(master);
  EXPECT_EQ(rendered, Layout::helpMessage(50));
}

TEST(HelpGeneratorTest, ShowsThirteenOrMoreUsageEntriesAsOptions) {
  const std::string twelve = Twelve::helpMessage(80);
  EXPECT_EQ(twelve.substr(0, twelve.find('\n')),
            "USAGE: twelve [--a] [--b] [--c] [--d] [--e] [--f] [--g] [--h] "
            "[--i] [--j] [--k] [--l]");
  EXPECT_EQ(twelve.find("--m"), std::string::npos)
      << "a hidden flag shows nowhere";

  const std::string expected = R"(USAGE: flags <options>

OPTIONS:
  -a, --alpha
  -b, --beta
  --cache/--no-cache      Use the cache (default: true)
  --enable-color/--disable-color
                          (default: false)
  --fast/--slow
  --low                   Go low (default: low)
  --high                  Go high (default: low)
  -v, --verbose
  -abc
  -o, --output <output>
  -h, --help              Show help information.
)";
  EXPECT_EQ(Flags::helpMessage(80), expected);
}

TEST(HelpGeneratorTest, ListsPositionalArgumentsInTheirOwnSection) {
  const std::string expected =
      R"(USAGE: positionals <source> [<target>] [<extras> ...] [--force]

ARGUMENTS:
  <source>                Where from
  <target>
  <extras>

OPTIONS:
  --force
  -h, --help              Show help information.
)";
  EXPECT_EQ(Positionals::helpMessage(80), expected);
}

TEST(HelpGeneratorTest, ShowsHelpOfANestedCommandFromTheRoot) {
  const std::string expected = R"(OVERVIEW: Synchronise files.

USAGE: tool file-sync [--verbose] [--profile <profile>] [<paths> ...]

ARGUMENTS:
  <paths>                 Paths to sync

OPTIONS:
  --verbose               Say more
  --profile <profile>     The profile
  --version               Show the version.
  -h, --help              Show help information.
)";
  EXPECT_EQ(Tool::helpMessage(commandType<FileSync>(), 80), expected);
  EXPECT_EQ(Tool::helpMessage(commandType<Layout>(), 80), Tool::helpMessage(80))
      << "a type outside the tree gives the root's help";
}

TEST(HelpGeneratorTest, RendersElementsByTheirLabelLength) {
  using Element = HelpGenerator::Section::Element;
  EXPECT_EQ(Element({"x", "", ""}).rendered(80), "  x\n");
  EXPECT_EQ(Element({"x", "", "Talk."}).rendered(80), "  x\n        Talk.\n");
  // The label's width is dropped from the wrapped abstract, so a leading
  // line break goes with it and the text stays on the label's line.
  EXPECT_EQ(Element({"label", "\nNext line", ""}).rendered(80),
            "  label" + std::string(20, ' ') + "Next line\n")
      << "a leading line break is dropped with the label's width";
}

} // namespace
} // namespace argtest
