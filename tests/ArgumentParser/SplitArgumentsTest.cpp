#include "ArgumentParser/Parsing/SplitArguments.h"

#include "ArgumentParser/Parsing/ParserError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace argparse {
namespace {

// Each element of a split as text: "v:x" a value, "t" the terminator,
// "o:--name" or "o:--name=value" an option, with "@2" or "@2.1" the index.
std::vector<std::string> describe(const SplitArguments &split) {
  std::vector<std::string> out;
  for (const auto &[index, element] : split.getElements()) {
    std::string text;
    if (element.isValue())
      text = "v:" + element.getValue();
    else if (element.isTerminator())
      text = "t";
    else
      text = "o:" + element.getOption().description();
    text += "@" + std::to_string(index.inputIndex);
    if (index.subIndex)
      text += "." + std::to_string(*index.subIndex);
    out.push_back(text);
  }
  return out;
}

struct SplitCase {
  std::vector<std::string> input;
  std::vector<std::string> expected;
};

TEST(SplitArgumentsTest, ClassifiesEveryKindOfInput) {
  const SplitCase cases[] = {
      {{""}, {"v:@0"}},
      {{"-"}, {"v:-@0"}},
      {{"x"}, {"v:x@0"}},
      {{"--", "--", "-x", "y"}, {"t@0", "v:--@1", "v:-x@2", "v:y@3"}},
      {{"--name"}, {"o:--name@0"}},
      {{"--name="}, {"o:--name@0"}},
      {{"--name=v"}, {"o:--name=v@0"}},
      {{"--=x"}, {"o:--=x@0"}},
      {{"--a=b=c"}, {"o:--a=b=c@0"}},
      {{"-a"}, {"o:-a@0"}},
      {{"-a=b=c"}, {"o:-a=b=c@0"}},
      {{"-n="}, {"o:-n=@0"}},
      {{"-ab"}, {"o:-ab@0", "o:-a@0.0", "o:-b@0.1"}},
      {{"-abc=v"}, {"o:-abc=v@0"}},
      {{"-é"}, {"o:-é@0"}},
      {{"-éa"}, {"o:-éa@0", "o:-é@0.0", "o:-a@0.1"}},
      {{"x", "-ab", "--c"},
       {"v:x@0", "o:-ab@1", "o:-a@1.0", "o:-b@1.1", "o:--c@2"}},
  };
  for (const SplitCase &c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.input));
    EXPECT_EQ(describe(SplitArguments(c.input)), c.expected);
  }
}

TEST(SplitArgumentsTest, KeepsAnEmptyValueAfterSingleDashEquals) {
  SplitArguments split({"-n="});
  const ParsedArgument &option = split.getElements().front().second.getOption();
  EXPECT_EQ(option.getName(), Name::makeShort("n"));
  ASSERT_TRUE(option.getValue().has_value());
  EXPECT_EQ(*option.getValue(), "");
}

TEST(SplitArgumentsTest, RejectsThreeDashesAndEmptyNamesBeforeEquals) {
  struct Case {
    std::vector<std::string> input;
    std::string text;
  };
  const Case cases[] = {
      {{"---"}, "---"}, {{"---x"}, "---x"}, {{"ok", "----"}, "----"},
      {{"-=x"}, "-=x"}, {{"-="}, "-="},     {{"-==x"}, "-==x"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.text);
    try {
      SplitArguments split(c.input);
      ADD_FAILURE() << "no failure";
    } catch (const ParserError &error) {
      EXPECT_EQ(error.getKind(), ParserError::Kind::invalidOption);
      EXPECT_EQ(error.text, c.text);
    }
  }
}

TEST(SplitArgumentsTest, StrictPopStopsAtAnOptionAndScanningSkipsIt) {
  SplitArguments strict({"--opt", "--other", "v"});
  EXPECT_FALSE(strict.popNextElementIfValue({0, {}}).has_value());
  EXPECT_EQ(strict.getElements().size(), 3u);

  SplitArguments scanning({"--opt", "--other", "v"});
  auto value = scanning.popNextValue({0, {}});
  ASSERT_TRUE(value.has_value());
  EXPECT_EQ(value->second, "v");
  EXPECT_EQ(describe(scanning),
            (std::vector<std::string>{"o:--opt@0", "o:--other@1"}));
}

TEST(SplitArgumentsTest, UnconditionalPopTakesTheNextInputAsText) {
  SplitArguments split({"--opt", "-ab", "x"});
  auto value = split.popNextElementAsValue({0, {}});
  ASSERT_TRUE(value.has_value());
  EXPECT_EQ(value->second, "-ab");
  EXPECT_EQ(value->first, (SplitIndex{1, {}}));
  EXPECT_EQ(describe(split), (std::vector<std::string>{"o:--opt@0", "v:x@2"}));

  // A later letter of the same input does not count as the next input.
  SplitArguments group({"-ab", "--", "y"});
  auto next = group.popNextElementAsValue({0, 0});
  ASSERT_TRUE(next.has_value());
  EXPECT_EQ(next->second, "--");
}

TEST(SplitArgumentsTest, RemovingALetterRemovesTheWholeFormToo) {
  SplitArguments split({"-abc", "x"});
  split.remove({0, 1});
  EXPECT_EQ(describe(split),
            (std::vector<std::string>{"o:-a@0.0", "o:-c@0.2", "v:x@1"}));
  split.remove({0, {}});
  EXPECT_EQ(describe(split), (std::vector<std::string>{"v:x@1"}));
}

TEST(SplitArgumentsTest, ReportsLeftoversAsRawInputOrLetters) {
  SplitArguments split({"-abc", "x", "-de"});
  split.remove({2, 0});
  std::vector<std::string> texts;
  for (const auto &[origin, text] : split.coalescedExtraElements())
    texts.push_back(text);
  EXPECT_EQ(texts, (std::vector<std::string>{"-abc", "x", "-e"}));
}

TEST(SplitArgumentsTest, ALoneTerminatorIsNoLeftover) {
  EXPECT_FALSE(SplitArguments({"--"}).containsNonTerminatorArguments());
  EXPECT_FALSE(SplitArguments({}).containsNonTerminatorArguments());
  EXPECT_TRUE(SplitArguments({"--", "x"}).containsNonTerminatorArguments());
}

TEST(SplitArgumentsTest, OrdersWholeInputsBeforeTheirLetters) {
  EXPECT_LT((SplitIndex{1, {}}), (SplitIndex{1, 0}));
  EXPECT_LT((SplitIndex{1, 0}), (SplitIndex{1, 1}));
  EXPECT_LT((SplitIndex{1, 5}), (SplitIndex{2, {}}));
}

} // namespace
} // namespace argparse
