#include "ArgumentParser/Usage/ErrorMessageGenerator.h"

#include "ArgumentParser/TestCommands.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace argtest {
namespace {

/// A long name "--x" and nothing else.
struct OnlyLong : ParsableCommand<OnlyLong> {
  static constexpr std::string_view typeName = "OnlyLong";
  bool x = false;
  bool hidden = false;
  static Arguments<OnlyLong> arguments() {
    return {flag(&OnlyLong::x, "x"),
            flag(&OnlyLong::hidden, "hidden").help(ArgumentHelp::hidden())};
  }
};

template <typename T>
std::optional<std::string> messageFor(const ParserError &error) {
  ArgumentSet set = commandType<T>().makeArgumentSet();
  return ErrorMessageGenerator(set, error).makeErrorMessage();
}

struct MessageCase {
  const char *name;
  std::optional<std::string> actual;
  std::optional<std::string> expected;
};

TEST(ErrorMessageGeneratorTest, WordsEveryParserError) {
  const SplitIndex first{0, {}};
  const MessageCase cases[] = {
      {"short unknown option",
       messageFor<OnlyLong>(
           ParserError::unknownOption(first, Name::makeShort("x"))),
       "Unknown option '-x'"},
      {"single-dash long near a long name",
       messageFor<Flags>(ParserError::unknownOption(
           first, Name::makeLongWithSingleDash("alpha"))),
       "Unknown option '-alpha'. Did you mean '--alpha'?"},
      {"long name far from all",
       messageFor<Flags>(
           ParserError::unknownOption(first, Name::makeLong("zzzzzz"))),
       "Unknown option '--zzzzzz'"},
      {"invalid option", messageFor<Flags>(ParserError::invalidOption("---")),
       "Invalid option: ---"},
      {"non-alphanumeric short option",
       messageFor<Flags>(ParserError::nonAlphanumericShortOption("?")),
       "Invalid option: -?"},
      {"missing value of an unknown name",
       messageFor<Flags>(ParserError::missingValueForOption(
           {first}, Name::makeLong("nothing"))),
       "Missing value for '--nothing'"},
      {"missing value",
       messageFor<Flags>(
           ParserError::missingValueForOption({first}, Name::makeShort("o"))),
       "Missing value for '-o <output>'"},
      {"no extra values",
       messageFor<Flags>(ParserError::unexpectedExtraValues({})), std::nullopt},
      {"three extra values",
       messageFor<Flags>(ParserError::unexpectedExtraValues(
           {{{first}, "a"}, {{first}, "b"}, {{first}, "c"}})),
       "3 unexpected arguments: 'a', 'b', 'c'"},
      {"duplicate in a group",
       messageFor<Flags>(ParserError::duplicateExclusiveValues(
           {first}, {SplitIndex{1, 1}}, {"--fast", "-xs"})),
       "Value to be set with flag 's' in '-xs' had already been set with "
       "flag '--fast'"},
      {"no value of several definitions",
       messageFor<Flags>(ParserError::noValue({"speed"})),
       "Missing one of: '--fast', '--slow'"},
      {"no value of a hidden definition",
       messageFor<OnlyLong>(ParserError::noValue({"hidden"})),
       "Missing expected argument"},
      {"no value of an unknown key",
       messageFor<OnlyLong>(ParserError::noValue({"nothing"})),
       "Missing expected argument"},
      {"invalid positional value",
       messageFor<Positionals>(ParserError::unableToParseValue(
           {first}, std::nullopt, "v", {"source"}, nullptr)),
       "The value 'v' is invalid for '<source>'"},
      {"invalid value of an unknown key with a name",
       messageFor<Positionals>(ParserError::unableToParseValue(
           {first}, Name::makeLong("zz"), "v", {"nothing"}, nullptr)),
       "The value 'v' is invalid for '--zz'"},
      {"invalid value with neither",
       messageFor<Positionals>(ParserError::unableToParseValue(
           {first}, std::nullopt, "v", {"nothing"},
           std::make_exception_ptr(std::runtime_error("why")))),
       "The value 'v' is invalid.: why"},
      {"user validation",
       messageFor<Flags>(ParserError::userValidationError(
           std::make_exception_ptr(ValidationError("said so")))),
       "said so"},
      {"no arguments wraps the message",
       messageFor<Flags>(ParserError::noArguments(
           std::make_exception_ptr(ParserError::invalidOption("-=")))),
       "Invalid option: -="},
      {"not implemented", messageFor<Flags>(ParserError::notImplemented()),
       "Internal error. Parsing command-line arguments hit unimplemented "
       "code path."},
      {"invalid state", messageFor<Flags>(ParserError::invalidState()),
       "Internal error. Invalid state while parsing command-line arguments."},
      {"missing subcommand",
       messageFor<Flags>(ParserError::missingSubcommand()),
       "Missing required subcommand."},
      {"help", messageFor<Flags>(ParserError::helpRequested()), std::nullopt},
      {"version", messageFor<Flags>(ParserError::versionRequested()),
       std::nullopt},
  };
  for (const MessageCase &c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.actual, c.expected);
  }
}

/// A failure that describes itself, or declines to.
struct Described : std::runtime_error, LocalizedError {
  std::optional<std::string> description;
  explicit Described(std::optional<std::string> description)
      : std::runtime_error("textual"), description(std::move(description)) {}
  std::optional<std::string> localizedDescription() const override {
    return description;
  }
};

TEST(ErrorMessageGeneratorTest, PrefersALocalizedDescriptionWhenThereIsOne) {
  EXPECT_EQ(describeFailure(std::make_exception_ptr(Described("localized"))),
            "localized");
  EXPECT_EQ(describeFailure(std::make_exception_ptr(Described(""))), "");
  EXPECT_EQ(describeFailure(std::make_exception_ptr(Described(std::nullopt))),
            "textual");
  EXPECT_EQ(Flags::fullMessage(std::make_exception_ptr(Described("oops"))),
            "Error: oops");
  EXPECT_EQ(Flags::exitCode(std::make_exception_ptr(Described("oops"))),
            ExitCode::failure);
  EXPECT_EQ(Flags::fullMessage(std::make_exception_ptr(Described(""))), "");
}

} // namespace
} // namespace argtest
