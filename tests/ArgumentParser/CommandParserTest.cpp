#include "ArgumentParser/Parsing/CommandParser.h"

#include "ArgumentParser/TestCommands.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace argtest {
namespace {

using Args = std::vector<std::string>;

// What the process would show and return for \p arguments under the root
// \p Root: parse, run, and the text and code of any failure.
struct Outcome {
  std::string text;
  argparse::MessageInfo::Kind kind;
  int code;
};

template <typename Root> Outcome outcomeOf(const Args &arguments) {
  HelpGenerator::screenWidthOverride = 80;
  try {
    std::shared_ptr<ParsableCommandBase> command = Root::parseAsRoot(arguments);
    command->run();
    return {"(ran " + command->getCommandType().getCommandName() + ")",
            argparse::MessageInfo::Kind::help, 0};
  } catch (...) {
    argparse::MessageInfo info(std::current_exception(), commandType<Root>());
    return {info.fullText(), info.getKind(), info.exitCode().rawValue};
  }
}

template <typename Root>
std::shared_ptr<ParsableCommandBase> chosen(const Args &arguments) {
  return Root::parseAsRoot(arguments);
}

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

const std::string fileSyncHelp = R"(OVERVIEW: Synchronise files.

USAGE: tool file-sync [--verbose] [--profile <profile>] [<paths> ...]

ARGUMENTS:
  <paths>                 Paths to sync

OPTIONS:
  --verbose               Say more
  --profile <profile>     The profile
  --version               Show the version.
  -h, --help              Show help information.
)";

const std::string idleHelp = R"(USAGE: tool idle

OPTIONS:
  --verbose               Say more
  --profile <profile>     The profile
  --version               Show the version.
  -h, --help              Show help information.
)";

TEST(CommandParserTest, NamesCommandsAfterTheirTypes) {
  EXPECT_EQ(commandType<FileSync>().getCommandName(), "file-sync");
  EXPECT_EQ(commandType<Tool>().getCommandName(), "tool");
  EXPECT_EQ(
      commandType<WrappedParsableCommand<ServerOptions>>().getCommandName(),
      "server");
  std::vector<std::string> helpNames;
  for (const Name &name : commandType<Idle>().getHelpNames())
    helpNames.push_back(name.synopsisString());
  EXPECT_EQ(helpNames, (std::vector<std::string>{"-h", "--help"}));
}

TEST(CommandParserTest, AddsHelpOnlyToARootWithSubcommands) {
  CommandParser withSubcommands(commandType<Tool>());
  const Tree &tree = withSubcommands.getCommandTree();
  ASSERT_EQ(tree.children.size(), 4u);
  EXPECT_EQ(tree.children.back()->element, &commandType<HelpCommand>());
  EXPECT_EQ(tree.children[0]->parent, &tree);
  EXPECT_TRUE(
      CommandParser(commandType<Idle>()).getCommandTree().children.empty());
}

TEST(CommandParserTest, PicksSubcommandsAndTheDefaultOne) {
  struct Case {
    Args arguments;
    const CommandType *expected;
  };
  const Case cases[] = {
      {{}, &commandType<FileSync>()},
      {{"a", "b"}, &commandType<FileSync>()},
      {{"file-sync"}, &commandType<FileSync>()},
      {{"secret"}, &commandType<Secret>()},
      {{"idle"}, &commandType<Idle>()},
      {{"--", "idle"}, &commandType<FileSync>()},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    EXPECT_EQ(&chosen<Tool>(c.arguments)->getCommandType(), c.expected);
  }
}

TEST(CommandParserTest, SharesAnOptionGroupGivenBeforeTheSubcommand) {
  auto sync = std::dynamic_pointer_cast<FileSync>(
      chosen<Tool>({"--verbose", "--profile", "p", "file-sync", "x", "y"}));
  ASSERT_TRUE(sync);
  EXPECT_TRUE(sync->global.verbose);
  EXPECT_EQ(sync->global.profile, "p");
  EXPECT_EQ(sync->paths, (std::vector<std::string>{"x", "y"}));

  auto fallback = std::dynamic_pointer_cast<FileSync>(
      chosen<Tool>({"x", "--verbose", "--", "-y"}));
  ASSERT_TRUE(fallback);
  EXPECT_TRUE(fallback->global.verbose);
  EXPECT_EQ(fallback->paths, (std::vector<std::string>{"x", "-y"}));
}

TEST(CommandParserTest, ShowsHelpVersionAndErrorsWithTheirExitCodes) {
  struct Case {
    Args arguments;
    std::string text;
    int code;
  };
  const std::string toolUsage =
      "Usage: tool [--verbose] [--profile <profile>] <subcommand>\n"
      "  See 'tool --help' for more information.";
  const std::string syncUsage =
      "Usage: tool file-sync [--verbose] [--profile <profile>] [<paths> "
      "...]\n  See 'tool file-sync --help' for more information.";
  const Case cases[] = {
      {{"--help"}, toolHelp, 0},
      {{"help"}, toolHelp, 0},
      {{"help", "nosuch"}, toolHelp, 0},
      {{"help", "file-sync"}, fileSyncHelp, 0},
      {{"file-sync", "-h"}, fileSyncHelp, 0},
      // Help is looked for before the default subcommand is taken.
      {{"x", "--help"}, toolHelp, 0},
      {{"idle"}, idleHelp, 0},
      {{"--version"}, "1.0.0", 0},
      {{"file-sync", "--version"}, "1.0.0", 0},
      // The built-in --version is no definition: no suggestion comes from it.
      {{"--versoin"},
       "Error: Unknown option '--versoin'. Did you mean '--verbose'?\n" +
           syncUsage,
       64},
      {{"--hel"}, "Error: Unknown option '--hel'\n" + syncUsage, 64},
      {{"--profil", "x"},
       "Error: Unknown option '--profil'. Did you mean '--profile'?\n" +
           syncUsage,
       64},
      {{"idle", "extra"},
       "Error: Unexpected argument 'extra'\nUsage: tool idle\n  See 'tool "
       "idle --help' for more information.",
       64},
      {{"----"}, "Error: Invalid option: ----\n" + toolUsage, 64},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    Outcome outcome = outcomeOf<Tool>(c.arguments);
    EXPECT_EQ(outcome.text, c.text);
    EXPECT_EQ(outcome.code, c.code);
  }
}

TEST(CommandParserTest, TurnsValidationAndRunFailuresIntoTheirOutcomes) {
  struct Case {
    Args arguments;
    std::string text;
    argparse::MessageInfo::Kind kind;
    int code;
  };
  using Kind = argparse::MessageInfo::Kind;
  const std::string usage =
      "Usage: checked --mode <mode>\n  See 'checked --help' for more "
      "information.";
  const std::string help = "USAGE: checked --mode <mode>\n\nOPTIONS:\n"
                           "  --mode <mode>\n"
                           "  -h, --help              Show help information.\n";
  const Case cases[] = {
      {{"--mode", "fine"}, "(ran checked)", Kind::help, 0},
      {{"--mode", "bad"},
       "Error: mode must not be bad\n" + usage,
       Kind::validation,
       64},
      {{"--mode", "empty"}, usage, Kind::validation, 64},
      {{"--mode", "exit"}, "", Kind::other, 3},
      {{"--mode", "clean"}, "all done", Kind::help, 0},
      {{"--mode", "other"}, "Error: boom", Kind::other, 1},
      {{"--mode", "bad", "--help"}, help, Kind::help, 0},
      {{"--help"}, help, Kind::help, 0},
      {{},
       "Error: Missing expected argument '--mode <mode>'\n\n" + help,
       Kind::validation,
       64},
      {{"--mode", "a", "--"}, "(ran checked)", Kind::help, 0},
      {{"--mode", "a", "--", "x"},
       "Error: Unexpected argument 'x'\n" + usage,
       Kind::validation,
       64},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.arguments));
    Outcome outcome = outcomeOf<Checked>(c.arguments);
    EXPECT_EQ(outcome.text, c.text);
    EXPECT_EQ(outcome.kind, c.kind);
    EXPECT_EQ(outcome.code, c.code);
  }
}

TEST(CommandParserTest, EmptyHelpNamesRemoveTheHelpFlag) {
  Outcome outcome = outcomeOf<NoHelp>({"--help"});
  EXPECT_EQ(outcome.text, "Error: Unknown option '--help'\n"
                          "Usage: no-help [--quiet]\n"
                          "  See 'no-help --help' for more information.");
  EXPECT_EQ(outcome.code, 64);
  EXPECT_EQ(NoHelp::helpMessage(80), "USAGE: no-help [--quiet]\n\nOPTIONS:\n"
                                     "  --quiet\n");
}

TEST(CommandParserTest, WithoutAVersionTheVersionFlagIsUnknown) {
  Outcome outcome = outcomeOf<Checked>({"--mode", "a", "--version"});
  EXPECT_EQ(outcome.text,
            "Error: Unknown option '--version'\nUsage: checked --mode "
            "<mode>\n  See 'checked --help' for more information.");
}

TEST(CommandParserTest, ParsesAPlainArgumentGroupThroughAWrapper) {
  EXPECT_EQ(argparse::parse<ServerOptions>(Args{"--port", "8080"}).port, 8080);
  EXPECT_EQ(argparse::parse<ServerOptions>(Args{}).port, 80);
  try {
    argparse::parse<ServerOptions>(Args{"--help"});
    ADD_FAILURE() << "help did not fail the parse";
  } catch (const ParserError &error) {
    EXPECT_EQ(error.getKind(), ParserError::Kind::helpRequested);
  }
  EXPECT_EQ(WrappedParsableCommand<ServerOptions>::fullMessage(
                std::make_exception_ptr(ParserError::helpRequested())),
            "USAGE: server [--port <port>]\n\nOPTIONS:\n"
            "  --port <port>           (default: 80)\n"
            "  -h, --help              Show help information.\n");
}

TEST(CommandParserTest, ExitsWithTheCodeAndStreamOfEachOutcome) {
  EXPECT_EXIT(Checked::exit(std::make_exception_ptr(ExitCode(3))),
              testing::ExitedWithCode(3), "^$");
  EXPECT_EXIT(Checked::exit(), testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(Checked::exit(std::make_exception_ptr(
                  ValidationError("mode must not be bad"))),
              testing::ExitedWithCode(64),
              "^Error: mode must not be bad\nUsage: checked --mode <mode>\n"
              "  See 'checked --help' for more information.\n$");
  EXPECT_EXIT(Checked::exit(std::make_exception_ptr(CleanExit::message("x"))),
              testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(Checked::main(Args{"--mode", "other"}),
              testing::ExitedWithCode(1), "^Error: boom\n$");
}

} // namespace
} // namespace argtest
