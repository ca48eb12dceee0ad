#include "TextStyling/TextStyling.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using styling::BackgroundColor;
using styling::Color;
using styling::Modes;
using styling::OutputTarget;
using styling::Style;
using styling::TextStyling;

// Each test sets the process-wide switches it needs; they are put back after.
class TextStylingTest : public testing::Test {
protected:
  void TearDown() override {
    TextStyling::setOutputTarget(savedTarget);
    TextStyling::setEnabled(savedEnabled);
  }

  static void use(OutputTarget target) {
    TextStyling::setOutputTarget(target);
    TextStyling::setEnabled(true);
  }

  OutputTarget savedTarget = TextStyling::getOutputTarget();
  bool savedEnabled = TextStyling::isEnabled();
};

using Operation = std::string (*)(std::string_view);

struct StyleCase {
  const char *what;
  Operation operation;
  std::string_view input;
  std::string_view expected;
};

std::string defaultColor(std::string_view t) {
  return styling::applyingColor(t, Color::defaultColor);
}
std::string defaultBackground(std::string_view t) {
  return styling::applyingBackgroundColor(t, BackgroundColor::defaultColor);
}
std::string noCodes(std::string_view t) {
  return styling::applyingCodes(t, std::vector<styling::ModeCode>{});
}
std::string fourCodes(std::string_view t) {
  return styling::applyingCodes(
      t, {Color::red, BackgroundColor::green, Style::bold, Style::underline});
}
std::string withoutBold(std::string_view t) {
  return styling::removingStyle(t, Style::bold);
}

void expectAll(const std::vector<StyleCase> &cases) {
  for (const StyleCase &c : cases) {
    SCOPED_TRACE(std::string(c.what) + " on \"" + std::string(c.input) + "\"");
    EXPECT_EQ(c.operation(c.input), c.expected);
  }
}

TEST_F(TextStylingTest, ConsoleStylesNestIntoOneSequence) {
  use(OutputTarget::console);
  expectAll({
      {"red", styling::red, "x", "\x1b[31mx\x1b[0m"},
      {"bold", styling::bold, "\x1b[31mx\x1b[0m", "\x1b[31;1mx\x1b[0m"},
      {"blue", styling::blue, "\x1b[31;1mx\x1b[0m", "\x1b[34;1mx\x1b[0m"},
      {"bold", styling::bold, "\x1b[1mx\x1b[0m", "\x1b[1;1mx\x1b[0m"},
      {"default colour", defaultColor, "-", "\x1b[39m-\x1b[0m"},
      {"default background", defaultBackground, "-", "\x1b[49m-\x1b[0m"},
      {"red", styling::red, "", "\x1b[31m\x1b[0m"},
      {"onBlue", styling::onBlue, "\x1b[31mx\x1b[0m", "\x1b[31;44mx\x1b[0m"},
      {"red", styling::red, "\x1b[44mx\x1b[0m", "\x1b[31;44mx\x1b[0m"},
      {"underline", styling::underline, "\x1b[44;1mx\x1b[0m",
       "\x1b[44;1;4mx\x1b[0m"},
      {"lightCyan", styling::lightCyan, "é", "\x1b[96mé\x1b[0m"},
      {"swap", styling::swap, "x", "\x1b[7mx\x1b[0m"},
      {"onWhite", styling::onWhite, "x", "\x1b[47mx\x1b[0m"},
      {"no codes", noCodes, "\x1b[31mx\x1b[0m", "\x1b[31mx\x1b[0m"},
      {"four codes", fourCodes, "x", "\x1b[31;42;1;4mx\x1b[0m"},
      {"four codes", fourCodes, "\x1b[2mx\x1b[0m", "\x1b[31;42;2;1;4mx\x1b[0m"},
      {"red", styling::red, "\x1b[1mmm\x1b[0m", "\x1b[31;1mmm\x1b[0m"},
  });
}

TEST_F(TextStylingTest, ConsoleRestylingHandlesRunsAndForeignSequences) {
  use(OutputTarget::console);
  expectAll({
      // Two styled texts joined begin and end like one run: the inner
      // sequences stay in the text.
      {"bold", styling::bold, "\x1b[31ma\x1b[0m\x1b[34mb\x1b[0m",
       "\x1b[31;1ma\x1b[0m\x1b[34mb\x1b[0m"},
      // A tail behind the reset makes the whole text plain.
      {"bold", styling::bold, "\x1b[31mx\x1b[0m!",
       "\x1b[1m\x1b[31mx\x1b[0m!\x1b[0m"},
      {"bold", styling::bold, "\x1b[0;31mx\x1b[0m", "\x1b[31;0;1mx\x1b[0m"},
      {"bold", styling::bold, "\x1b[38;5;196mx\x1b[0m", "\x1b[5;1mx\x1b[0m"},
      {"bold", styling::bold, "\x1b[6;48;2mx\x1b[0m", "\x1b[2;1mx\x1b[0m"},
      {"red", styling::red, "\x1b[38mx\x1b[0m", "\x1b[31mx\x1b[0m"},
      {"bold", styling::bold, "\x1b[;31;;999;abc;+4;256;1mx\x1b[0m",
       "\x1b[31;1;1mx\x1b[0m"},
      {"bold", styling::bold, "\x1b[mx\x1b[0m", "\x1b[1mx\x1b[0m"},
      // A bare reset has no room for a sequence before it: plain text.
      {"red", styling::red, "\x1b[0m", "\x1b[31m\x1b[0m\x1b[0m"},
      {"red", styling::red, "\x1b[31\x1b[0m", "\x1b[31m\x1b[31\x1b[0m\x1b[0m"},
      // A text in the XcodeColors form keeps its colour in the new form.
      {"bold", styling::bold, "\x1b[fg0,0,255;x\x1b[;", "\x1b[34;1mx\x1b[0m"},
  });
}

TEST_F(TextStylingTest, ConsoleRemovalKeepsTheRest) {
  use(OutputTarget::console);
  expectAll({
      {"removingColor", styling::removingColor, "\x1b[31;1mx\x1b[0m",
       "\x1b[39;1mx\x1b[0m"},
      {"removingColor", styling::removingColor, "x", "x"},
      {"removingColor", styling::removingColor, "\x1b[1mx\x1b[0m",
       "\x1b[1mx\x1b[0m"},
      {"clearColor", styling::clearColor, "\x1b[31mx\x1b[0m",
       "\x1b[39mx\x1b[0m"},
      {"removingBackgroundColor", styling::removingBackgroundColor,
       "\x1b[41mx\x1b[0m", "\x1b[49mx\x1b[0m"},
      {"clearBackgroundColor", styling::clearBackgroundColor,
       "\x1b[31mx\x1b[0m", "\x1b[31mx\x1b[0m"},
      {"removingStyle bold", withoutBold, "\x1b[31;1;4;1mx\x1b[0m",
       "\x1b[31;4mx\x1b[0m"},
      {"removingStyle bold", withoutBold, "\x1b[31mx\x1b[0m",
       "\x1b[31mx\x1b[0m"},
      {"removingStyle bold", withoutBold, "\x1b[1mx\x1b[0m", "x"},
      {"removingStyle bold", withoutBold, "x", "x"},
      {"removingAllStyles", styling::removingAllStyles,
       "\x1b[31;41;1;4mx\x1b[0m", "\x1b[31;41mx\x1b[0m"},
      {"removingAllStyles", styling::removingAllStyles, "\x1b[1;0mx\x1b[0m",
       "x"},
      {"clearStyles", styling::clearStyles, "\x1b[41;4mx\x1b[0m",
       "\x1b[41mx\x1b[0m"},
      {"raw", styling::raw, "\x1b[31;1mx\x1b[0m", "x"},
      {"raw", styling::raw, "\x1b[31mx\x1b[0m!", "\x1b[31mx\x1b[0m!"},
  });
}

TEST_F(TextStylingTest, UnknownTargetGivesPlainText) {
  use(OutputTarget::unknown);
  expectAll({
      {"red", styling::red, "x", "x"},
      {"red", styling::red, "\x1b[31mx\x1b[0m", "x"},
      {"default colour", defaultColor, "-", "-"},
      {"bold", styling::bold, "\x1b[1mx\x1b[0m", "x"},
      {"removingColor", styling::removingColor, "\x1b[31mx\x1b[0m", "x"},
      {"removingStyle bold", withoutBold, "\x1b[31;1mx\x1b[0m", "x"},
      {"removingAllStyles", styling::removingAllStyles, "\x1b[31;1mx\x1b[0m",
       "x"},
      {"no codes", noCodes, "\x1b[31mx\x1b[0m", "\x1b[31mx\x1b[0m"},
      {"raw", styling::raw, "\x1b[31;1mx\x1b[0m", "x"},
  });
}

TEST_F(TextStylingTest, XcodeColorsTargetWritesColoursOnly) {
  use(OutputTarget::xcodeColors);
  expectAll({
      {"red", styling::red, "x", "\x1b[fg255,0,0;x\x1b[;"},
      {"onBlue", styling::onBlue, "\x1b[fg255,0,0;x\x1b[;",
       "\x1b[fg255,0,0;\x1b[bg0,0,255;x\x1b[;"},
      {"blue", styling::blue, "\x1b[fg255,0,0;\x1b[bg0,0,255;x\x1b[;",
       "\x1b[fg0,0,255;\x1b[bg0,0,255;x\x1b[;"},
      {"default colour", defaultColor, "-", "-"},
      {"bold", styling::bold, "x", "x"},
      {"bold", styling::bold, "\x1b[fg255,0,0;x\x1b[;",
       "\x1b[fg255,0,0;x\x1b[;"},
      {"red", styling::red, "\x1b[1mx\x1b[0m", "\x1b[fg255,0,0;x\x1b[;"},
      {"removingColor", styling::removingColor, "\x1b[fg255,0,0;x\x1b[;", "x"},
      {"removingBackgroundColor", styling::removingBackgroundColor,
       "\x1b[fg255,0,0;\x1b[bg0,0,255;x\x1b[;", "\x1b[fg255,0,0;x\x1b[;"},
      {"red", styling::red, "", "\x1b[fg255,0,0;\x1b[;"},
      {"blue", styling::blue, "\x1b[fg255,0,0;\x1b[;", "\x1b[fg0,0,255;\x1b[;"},
      {"red", styling::red, "\x1b[zz;\x1b[bg0,0,255;x\x1b[;",
       "\x1b[fg255,0,0;\x1b[bg0,0,255;x\x1b[;"},
      {"raw", styling::raw, "\x1b[fg255,0,0;a;b\x1b[;", "a;b"},
  });
}

TEST_F(TextStylingTest, DisabledStylingLeavesTextAloneButStillReadsIt) {
  TextStyling::setOutputTarget(OutputTarget::console);
  TextStyling::setEnabled(false);
  expectAll({
      {"red", styling::red, "x", "x"},
      {"bold", styling::bold, "\x1b[31mx\x1b[0m", "\x1b[31mx\x1b[0m"},
      {"four codes", fourCodes, "x", "x"},
      {"removingColor", styling::removingColor, "\x1b[31mx\x1b[0m",
       "\x1b[31mx\x1b[0m"},
      {"removingStyle bold", withoutBold, "\x1b[1mx\x1b[0m", "\x1b[1mx\x1b[0m"},
      {"removingAllStyles", styling::removingAllStyles, "\x1b[1mx\x1b[0m",
       "\x1b[1mx\x1b[0m"},
      {"raw", styling::raw, "\x1b[31;1mx\x1b[0m", "x"},
  });
  EXPECT_EQ(TextStyling::extractModes("\x1b[31mx\x1b[0m").color, Color::red);
  EXPECT_EQ(
      TextStyling::generateString(Color::red, std::nullopt, std::nullopt, "x"),
      "x");
}

TEST_F(TextStylingTest, ExtractsModesFromEitherForm) {
  using Styles = std::vector<Style>;
  struct ExtractCase {
    std::string_view input;
    Modes expected;
  };
  const ExtractCase cases[] = {
      {"\x1b[31;44;1;4mhello\x1b[0m",
       {Color::red, BackgroundColor::blue,
        Styles{Style::bold, Style::underline}, "hello"}},
      {"\x1b[0mx\x1b[0m", {{}, {}, Styles{Style::defaultStyle}, "x"}},
      {"\x1b[31;32;41;40mx\x1b[0m",
       {Color::green, BackgroundColor::black, {}, "x"}},
      {"\x1b[mx\x1b[0m", {{}, {}, {}, "x"}},
      {"\x1b[31m\x1b[0m", {Color::red, {}, {}, ""}},
      {"plain", {{}, {}, {}, "plain"}},
      {"", {{}, {}, {}, ""}},
      {"\x1b", {{}, {}, {}, "\x1b"}},
      {"\x1b[", {{}, {}, {}, "\x1b["}},
      {"\x1b[0m", {{}, {}, {}, "\x1b[0m"}},
      {"\x1b[31mx\x1b[0m!", {{}, {}, {}, "\x1b[31mx\x1b[0m!"}},
      {"x\x1b[31mx\x1b[0m", {{}, {}, {}, "x\x1b[31mx\x1b[0m"}},
      {"\x1b[fg255,0,0;\x1b[bg0,0,255;\x1b[fg0,204,0;x\x1b[;",
       {Color::green, BackgroundColor::blue, {}, "x"}},
      {"\x1b[fg255,0,0;\x1b[;", {Color::red, {}, {}, ""}},
      {"\x1b[;x\x1b[;", {{}, {}, {}, "x"}},
      {"\x1b[;", {{}, {}, {}, "\x1b[;"}},
      {"\x1b[fg255,0,0x\x1b[;", {{}, {}, {}, "\x1b[fg255,0,0x\x1b[;"}},
      {"\x1b[fg255,0,0;x", {{}, {}, {}, "\x1b[fg255,0,0;x"}},
  };
  for (bool enabled : {true, false}) {
    TextStyling::setEnabled(enabled);
    for (const ExtractCase &c : cases) {
      SCOPED_TRACE(std::string(c.input) + (enabled ? " (on)" : " (off)"));
      EXPECT_EQ(TextStyling::extractModes(c.input), c.expected);
    }
  }
}

// Every short text over the alphabet of sequences: taking it apart and
// styling it never reads out of bounds, and on a terminal styling keeps the
// text that was there.
TEST_F(TextStylingTest, AnyShortTextSurvivesStylingOnATerminal) {
  use(OutputTarget::console);
  const std::string_view alphabet = "\x1b[m;03x";
  std::string text;
  std::vector<std::size_t> digits;
  for (std::size_t length = 0; length <= 5; ++length) {
    digits.assign(length, 0);
    while (true) {
      text.clear();
      for (std::size_t d : digits)
        text += alphabet[d];
      const std::string plain = TextStyling::extractModes(text).text;
      ASSERT_EQ(styling::raw(styling::red(text)), plain) << text;
      ASSERT_EQ(styling::raw(styling::removingAllStyles(text)), plain) << text;
      std::size_t i = 0;
      while (i < length && ++digits[i] == alphabet.size())
        digits[i++] = 0;
      if (i == length)
        break;
    }
  }
}

} // namespace
