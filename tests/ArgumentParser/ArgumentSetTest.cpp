#include "ArgumentParser/Parsing/ArgumentSet.h"

#include "ArgumentParser/TestCommands.h"
#include "ArgumentParser/Usage/MessageInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace argtest {
namespace {

using Args = std::vector<std::string>;

// The message a user would read for the failure of parsing \p arguments as
// \p T, without the usage.
template <typename T> std::string failureOf(const Args &arguments) {
  try {
    T::parse(arguments);
  } catch (...) {
    return T::message(std::current_exception());
  }
  return "(no failure)";
}

// \p arguments parsed as \p T; a failure is reported with its message.
template <typename T> T parsed(const Args &arguments) {
  try {
    return T::parse(arguments);
  } catch (...) {
    ADD_FAILURE() << T::message(std::current_exception());
    return T();
  }
}

TEST(ArgumentSetTest, NextTakesOnlyTheVeryNextValue) {
  EXPECT_EQ(*Strategies::parse(Args{"--next", "v"}).next, "v");
  EXPECT_EQ(*Strategies::parse(Args{"--next=v"}).next, "v");
  EXPECT_EQ(*Strategies::parse(Args{"--next=", "v"}).next, "v");
  EXPECT_EQ(*Strategies::parse(Args{"--next", "a", "--next", "b"}).next, "b");
  EXPECT_EQ(failureOf<Strategies>({"--next"}),
            "Missing value for '--next <next>'");
  EXPECT_EQ(failureOf<Strategies>({"--next", "--flag"}),
            "Missing value for '--next <next>'");
  EXPECT_EQ(failureOf<Strategies>({"--next", "--", "v"}),
            "Missing value for '--next <next>'");
}

TEST(ArgumentSetTest, ScanningSkipsOptionsToTheNextValue) {
  Strategies parsed = Strategies::parse(Args{"--scanning", "--flag", "v"});
  EXPECT_EQ(*parsed.scanning, "v");
  EXPECT_TRUE(parsed.flagged);
  EXPECT_EQ(failureOf<Strategies>({"--scanning", "--flag"}),
            "Missing value for '--scanning <scanning>'");
}

TEST(ArgumentSetTest, UnconditionalTakesTheNextInputWhateverItIs) {
  struct Case {
    Args input;
    std::string expected;
  };
  const Case cases[] = {
      {{"--unconditional", "--flag"}, "--flag"},
      {{"--unconditional", "--"}, "--"},
      {{"--unconditional", "-ab"}, "-ab"},
      {{"--unconditional", ""}, ""},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.expected);
    Strategies parsed = Strategies::parse(c.input);
    EXPECT_EQ(*parsed.unconditional, c.expected);
    EXPECT_FALSE(parsed.flagged);
  }
  EXPECT_EQ(failureOf<Strategies>({"--unconditional"}),
            "Missing value for '--unconditional <unconditional>'");
}

TEST(ArgumentSetTest, ArrayStrategiesCollectTheirValues) {
  struct Case {
    Args input;
    std::function<std::vector<std::string>(const Strategies &)> field;
    std::vector<std::string> expected;
  };
  const Case cases[] = {
      {{"--single", "a", "--single", "b"}, &Strategies::single, {"a", "b"}},
      {{}, &Strategies::single, {}},
      {{"--unconditional-single", "--flag"},
       &Strategies::unconditionalSingle,
       {"--flag"}},
      {{"--up-to", "a", "b", "--flag"}, &Strategies::upTo, {"a", "b"}},
      {{"--up-to=x", "y"}, &Strategies::upTo, {"x", "y"}},
      {{"--up-to"}, &Strategies::upTo, {}},
      // Each occurrence starts the list anew.
      {{"--up-to", "a", "--up-to", "b"}, &Strategies::upTo, {"b"}},
      {{"--rest", "a", "--flag", "--", "-x"},
       &Strategies::rest,
       {"a", "--flag", "--", "-x"}},
      {{"--rest=first", "second"}, &Strategies::rest, {"first", "second"}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.input));
    EXPECT_EQ(c.field(parsed<Strategies>(c.input)), c.expected);
  }
  EXPECT_FALSE(Strategies::parse(Args{"--rest", "a", "--flag"}).flagged);
  EXPECT_EQ(failureOf<Strategies>({"--up-to", "a", "b", "c", "--flag", "d"}),
            "Unexpected argument 'd'");
}

TEST(ArgumentSetTest, ReadsTypedValuesDefaultsAndTransforms) {
  Values defaults = Values::parse(Args{"--name", "n"});
  EXPECT_EQ(defaults.count, 3);
  EXPECT_EQ(defaults.ratio, 0.5);
  EXPECT_EQ(defaults.color, Color::red);
  EXPECT_FALSE(defaults.port.has_value());
  EXPECT_TRUE(defaults.numbers.empty());
  EXPECT_FALSE(defaults.even.has_value());

  Values given = Values::parse(
      Args{"-c", "7", "--ratio", "1e-1", "--color", "green", "--port", "+8080",
           "--numbers", "1", "--numbers=-2", "--name", "x", "--even", "ab"});
  EXPECT_EQ(given.count, 7);
  EXPECT_DOUBLE_EQ(given.ratio, 0.1);
  EXPECT_EQ(given.color, Color::green);
  EXPECT_EQ(given.port, 8080);
  EXPECT_EQ(given.numbers, (std::vector<int>{1, -2}));
  EXPECT_EQ(given.even, "ab");
}

TEST(ArgumentSetTest, ReportsValuesThatDoNotParse) {
  struct Case {
    Args input;
    std::string message;
  };
  const Case cases[] = {
      {{"--name", "n", "-c", "x"}, "The value 'x' is invalid for '-c <count>'"},
      {{"--name", "n", "--count", "1.5"},
       "The value '1.5' is invalid for '--count <count>'"},
      {{"--name", "n", "--port", "99999999999"},
       "The value '99999999999' is invalid for '--port <port>'"},
      {{"--name", "n", "--color", "blue"},
       "The value 'blue' is invalid for '--color <color>'"},
      {{"--name", "n", "--ratio", "half"},
       "The value 'half' is invalid for '--ratio <ratio>'"},
      {{"--name", "n", "--even", "abc"},
       "The value 'abc' is invalid for '--even <even>': odd length"},
      {{}, "Missing expected argument '--name <name>'"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.message);
    EXPECT_EQ(failureOf<Values>(c.input), c.message);
  }
}

TEST(ArgumentSetTest, ParsesEveryKindOfFlag) {
  Flags none = Flags::parse(Args{});
  EXPECT_FALSE(none.alpha);
  EXPECT_TRUE(none.cache);
  EXPECT_FALSE(none.speed.has_value());
  EXPECT_EQ(none.level, Level::low);
  EXPECT_EQ(none.verbose, 0);

  Flags all = Flags::parse(Args{"-ab", "--no-cache", "--enable-color",
                                "--disable-color", "--fast", "-vvv",
                                "--verbose", "-abc"});
  EXPECT_TRUE(all.alpha);
  EXPECT_TRUE(all.beta);
  EXPECT_FALSE(all.cache);
  EXPECT_FALSE(all.color) << "chooseLast keeps the last form";
  EXPECT_EQ(all.speed, Speed::fast);
  EXPECT_EQ(all.verbose, 4) << "-vvv is one group of three, plus --verbose";
  EXPECT_TRUE(all.first) << "the whole -abc wins over its letters";

  EXPECT_EQ(Flags::parse(Args{"--high", "--low"}).level, Level::high)
      << "chooseFirst keeps the first case";
  EXPECT_EQ(Flags::parse(Args{"--slow", "--slow"}).speed, Speed::slow)
      << "an exclusive flag may repeat its own case";
  EXPECT_EQ(*Flags::parse(Args{"-ao", "v"}).output, "v");
}

TEST(ArgumentSetTest, ReportsFlagMisuse) {
  struct Case {
    Args input;
    std::string message;
  };
  const Case cases[] = {
      {{"--alpha=x"},
       "The option '--alpha' does not take any value, but 'x' was specified."},
      {{"--cache", "--no-cache"},
       "Value to be set with flag '--no-cache' had already been set with "
       "flag '--cache'"},
      {{"--fast", "-ab", "--slow"},
       "Value to be set with flag '--slow' had already been set with flag "
       "'--fast'"},
      {{"-oa", "v"}, "Missing value for '-o <output>'"},
      {{"--alpha", "--alpha", "--beta"}, "(no failure)"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.message);
    EXPECT_EQ(failureOf<Flags>(c.input), c.message);
  }
}

TEST(ArgumentSetTest, GivesPositionalsInDeclarationOrder) {
  Positionals one = Positionals::parse(Args{"a"});
  EXPECT_EQ(one.source, "a");
  EXPECT_FALSE(one.target.has_value());
  EXPECT_TRUE(one.extras.empty());

  Positionals many =
      Positionals::parse(Args{"a", "--force", "b", "c", "--", "-d", "--e"});
  EXPECT_EQ(many.source, "a");
  EXPECT_EQ(many.target, "b");
  EXPECT_EQ(many.extras, (std::vector<std::string>{"c", "-d", "--e"}));
  EXPECT_TRUE(many.force);

  EXPECT_EQ(failureOf<Positionals>({}), "Missing expected argument '<source>'");
  EXPECT_EQ(failureOf<Positionals>({"x", "--nope", "y"}),
            "Unknown option '--nope'. Did you mean '--force'?");
}

TEST(ArgumentSetTest, UnconditionalRemainingTakesOptionsAsWords) {
  Passthrough parsed = Passthrough::parse(Args{"a", "--b", "-cd", "--", "e"});
  EXPECT_EQ(parsed.words,
            (std::vector<std::string>{"a", "--b", "-cd", "--", "e"}));
}

TEST(ArgumentSetTest, LenientParseLeavesUnknownOptionsAndReportsExtraValues) {
  argparse::ArgumentSet set = commandType<Flags>().makeArgumentSet();
  argparse::LenientParsedValues result =
      set.lenientParse(argparse::SplitArguments({"x", "--nope", "--alpha"}));
  ASSERT_TRUE(result.isPartial());
  EXPECT_EQ(result.partialError->getKind(),
            argparse::ParserError::Kind::unexpectedExtraValues);
  ASSERT_EQ(result.partialError->extraValues.size(), 2u);
  EXPECT_EQ(result.partialError->extraValues[0].second, "x");
  EXPECT_EQ(result.partialError->extraValues[1].second, "--nope");
  ASSERT_NE(result.values.element({"alpha"}), nullptr);
  EXPECT_TRUE(std::any_cast<bool>(result.values.element({"alpha"})->value));
}

} // namespace
} // namespace argtest
