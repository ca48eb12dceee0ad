// The argument-parsing engine on the command trees of fuzz/CommandTrees.h:
// what the kestrunecli commands never declare (typed values, defaults, arrays,
// flags of every kind, positionals, subcommand trees, validation) and help
// wrapping.
#include "ArgumentParser/ArgumentParser.h"
#include "ArgumentParser/Usage/HelpGenerator.h"
#include "CommandTrees.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace argtest {
namespace {

// The outcome of the command line \p line (arguments split at blanks) under
// \p Root with help \p columns wide: what the chosen command saw, or the exit
// code and the whole text of the failure.
template <typename Root, std::size_t columns = 80>
std::string outcomeOf(const std::string &line) {
  std::vector<std::string> arguments;
  std::istringstream words(line);
  for (std::string word; words >> word;)
    arguments.push_back(word);
  HelpGenerator::screenWidthOverride = columns;
  try {
    Root::parseAsRoot(arguments)->run();
    return "ran " + said;
  } catch (...) {
    const std::exception_ptr error = std::current_exception();
    return std::to_string(Root::exitCode(error).rawValue) + " " +
           Root::fullMessage(error);
  }
}

// A root's outcome of a command line, and the usage its errors end with.
struct Command {
  std::string (*outcome)(const std::string &);
  std::string usage;
};
const Command values{
    &outcomeOf<Values>,
    "\nUsage: values [--count <count>] [--port <port>] "
    "[--numbers <numbers> ...] [--scan <scan>] [--any <any>] "
    "[--each <each> ...] [--up-to <up-to> ...] [--rest <rest> ...] [--flag]\n"
    "  See 'values --help' for more information."};
const Command flags{
    &outcomeOf<Flags>,
    "\nUsage: flags <options>\n  See 'flags --help' for more information."};
const Command positionals{
    &outcomeOf<Positionals, 40>,
    "\nUsage: positionals <source> [<target>] [<extras> ...] [--force] "
    "[--bbbbbbbbbbbbbbbbbbbbbb] [--discuss] [--value <path>] [--words]\n"
    "  See 'positionals --help' for more information."};
const Command tool{
    &outcomeOf<Tool>,
    "\nUsage: tool [--verbose] [--profile <profile>] <subcommand>\n"
    "  See 'tool --help' for more information."};
const std::string toolHelp = R"(OVERVIEW: A tool for tests.

USAGE: tool [--verbose] [--profile <profile>] <subcommand>

OPTIONS:
  --verbose               Say more
  --profile <profile>     The profile
  --version               Show the version.
  -h, --help              Show help information.

SUBCOMMANDS:
  file-sync               Synchronise files.
  idle

  See 'tool help <subcommand>' for detailed help.)";
// At 40 columns.
const std::string positionalsHelp =
    R"(USAGE: positionals <source> [<target>] [<extras> ...] [--force] [--bbbbbbbbbbbbbbbbbbbbbb] [--discuss] [--value <path>] [--words]

ARGUMENTS:
  <source>                Where from
  <target>
  <extras>

OPTIONS:
  --force
  --bbbbbbbbbbbbbbbbbbbbbb
                          Goes below.
  --discuss               Short.
        A longer discussion that
        explains.
  --value <path>          Custom value
                          name.
  --words                 déjà vu 💡💡
                          three four
                          five six
  -h, --help              Show help
                          information.
)";

TEST(EngineTest, ParsesCommandLinesIntoValuesOrTheirFailure) {
  // An expected "!message" stands for the error and the command's usage.
  struct Row {
    const Command &command;
    std::string line, expected;
  };
  const Row rows[] = {
      {values, "", "ran 3 - [ ] - - [ ] [ ] [ ] 0 "},
      {values, "-c 7 --port 1 --port=+8080 --numbers 1 --numbers=-2",
       "ran 7 8080 [ 1 -2 ] - - [ ] [ ] [ ] 0 "},
      {values, "--scan --flag v", "ran 3 - [ ] 'v' - [ ] [ ] [ ] 1 "},
      {values, "--any --flag", "ran 3 - [ ] - '--flag' [ ] [ ] [ ] 0 "},
      {values, "--each --flag --each a --flag",
       "ran 3 - [ ] - - [ '--flag' 'a' ] [ ] [ ] 1 "},
      {values, "--up-to a b --flag", "ran 3 - [ ] - - [ ] [ 'a' 'b' ] [ ] 1 "},
      {values, "--up-to a --up-to=b c",
       "ran 3 - [ ] - - [ ] [ 'b' 'c' ] [ ] 0 "},
      {values, "--rest a --flag -- -x",
       "ran 3 - [ ] - - [ ] [ ] [ 'a' '--flag' '--' '-x' ] 0 "},
      {values, "--port 99999999999",
       "!The value '99999999999' is invalid for '--port <port>'"},
      {values, "--port --flag", "!Missing value for '--port <port>'"},
      {values, "--scan --flag", "!Missing value for '--scan <scan>'"},
      {values, "--up-to a --flag d", "!Unexpected argument 'd'"},
      {values, "--flag=x",
       "!The option '--flag' does not take any value, but 'x' was specified."},
      {flags, "", "ran 0 0 1 0 - 0 0 0 - "},
      {flags,
       "-ab --no-cache --enable-color --disable-color --fast -vvv "
       "--verbose -abc",
       "ran 1 1 0 0 0 0 4 1 - "},
      {flags, "--high --low --slow --slow -ao v", "ran 1 0 1 0 1 1 0 0 'v' "},
      {flags, "--cache --no-cache",
       "!Value to be set with flag '--no-cache' had already been set with "
       "flag '--cache'"},
      {flags, "-oa v", "!Missing value for '-o <output>'"},
      {flags, "---x", "!Invalid option: ---x"},
      {positionals, "a", "ran 'a' - [ ] 0 "},
      {positionals, "a --force b c -- -d --e",
       "ran 'a' 'b' [ 'c' '-d' '--e' ] 1 "},
      // A suggestion is made up to an edit distance of three characters.
      {positionals, "x --fo",
       "!Unknown option '--fo'. Did you mean '--force'?"},
      {positionals, "x --f", "!Unknown option '--f'"},
      {positionals, "x --f\u00e9\u00e9ce",
       "!Unknown option '--f\u00e9\u00e9ce'. Did you mean '--force'?"},
      {tool, "", "ran 0 - [ ] "},
      {tool, "a b", "ran 0 - [ 'a' 'b' ] "},
      {tool, "-- idle", "ran 0 - [ 'idle' ] "},
      {tool, "secret", "ran "},
      {tool, "--verbose --profile p file-sync x", "ran 1 'p' [ 'x' ] "},
      {tool, "x --verbose -- -y", "ran 1 - [ 'x' '-y' ] "},
      {tool, "--help", "0 " + toolHelp},
      {tool, "x --help", "0 " + toolHelp},
      {tool, "help file-sync", tool.outcome("file-sync --help")},
      {tool, "idle", tool.outcome("help idle")},
      {tool, "--version", "0 1.0.0"},
      {tool, "file-sync --version", "0 1.0.0"},
      // The built-in --version is no declaration and suggests nothing.
      {tool, "--versoin",
       "64 Error: Unknown option '--versoin'. Did you mean '--verbose'?\n"
       "Usage: tool file-sync [--verbose] [--profile <profile>] [<paths> "
       "...]\n  See 'tool file-sync --help' for more information."},
      {tool, "idle a b c",
       "64 Error: 3 unexpected arguments: 'a', 'b', 'c'\nUsage: tool idle\n"
       "  See 'tool idle --help' for more information."},
      {tool, "----", "!Invalid option: ----"},
      {positionals, "bad", "!source must not be bad"},
      {positionals, "bad --help", "0 " + positionalsHelp},
      {positionals, "",
       "64 Error: Missing expected argument '<source>'\n\n" + positionalsHelp},
      {positionals, "a --version", "!Unknown option '--version'"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.line);
    const std::string expected =
        row.expected.starts_with("!")
            ? "64 Error: " + row.expected.substr(1) + row.command.usage
            : row.expected;
    EXPECT_EQ(row.command.outcome(row.line), expected);
  }
}

/// Declarations with every fault the validators know.
struct Faulty : ParsableCommand<Faulty> {
  static constexpr std::string_view typeName = "Faulty";
  std::vector<std::string> all;
  std::string after;
  bool a = false, b = false;
  static Arguments<Faulty> arguments() {
    return {argument(&Faulty::all, "all"), argument(&Faulty::after, "after"),
            flag(&Faulty::a, "a").name(shortAndLong),
            flag(&Faulty::b, "b").name({customLong("a")})};
  }
};
struct FaultyRoot : ParsableCommand<FaultyRoot> {
  static constexpr std::string_view typeName = "FaultyRoot";
  static CommandConfiguration configuration() {
    return {.subcommands = {&commandType<Faulty>()}};
  }
};

TEST(EngineTest, ValidationFindsEveryFaultOfADeclarationTree) {
  using Fault = ParsableArgumentsValidationError;
  const std::vector<Fault> expected = {
      {"Faulty", "positional 'after' follows the repeating positional 'all' "
                 "and can never get a value"},
      {"Faulty", "name '--a' is declared twice"},
  };
  EXPECT_EQ(ParsableArgumentsValidator::validate(commandType<FaultyRoot>()),
            expected);
}

} // namespace
} // namespace argtest
