#include "ArgumentParser/Validation.h"

#include "ArgumentParser/TestCommands.h"

#include <gtest/gtest.h>

namespace argtest {
namespace {

/// Declarations with every fault the validators know.
struct Faulty : ParsableCommand<Faulty> {
  static constexpr std::string_view typeName = "Faulty";
  std::vector<std::string> all;
  std::string after;
  bool a = false, b = false;
  std::optional<std::string> again;
  static Arguments<Faulty> arguments() {
    return {
        argument(&Faulty::all, "all"),
        argument(&Faulty::after, "after"),
        flag(&Faulty::a, "a").name(shortAndLong),
        flag(&Faulty::b, "b").name({customLong("a")}),
        option(&Faulty::again, "a"),
    };
  }
};

struct FaultyRoot : ParsableCommand<FaultyRoot> {
  static constexpr std::string_view typeName = "FaultyRoot";
  static CommandConfiguration configuration() {
    return {.subcommands = {&commandType<Faulty>()}};
  }
};

TEST(ValidationTest, AcceptsTheTestTrees) {
  for (const CommandType *type :
       {&commandType<Tool>(), &commandType<Flags>(), &commandType<Values>(),
        &commandType<Positionals>(), &commandType<Strategies>()}) {
    SCOPED_TRACE(type->getTypeName());
    EXPECT_TRUE(ParsableArgumentsValidator::validate(*type).empty());
  }
}

TEST(ValidationTest, ReportsEveryFaultOfATree) {
  using Fault = ParsableArgumentsValidationError;
  const std::vector<Fault> expected = {
      {"Faulty", "positional 'after' follows the repeating positional 'all' "
                 "and can never get a value"},
      {"Faulty", "key 'a' is declared twice"},
      {"Faulty", "name '--a' is declared twice"},
      {"Faulty", "name '--a' is declared twice"},
  };
  EXPECT_EQ(ParsableArgumentsValidator::validate(commandType<FaultyRoot>()),
            expected);
}

} // namespace
} // namespace argtest
