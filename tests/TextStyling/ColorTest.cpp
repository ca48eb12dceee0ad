#include "TextStyling/Color.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace {

using styling::BackgroundColor;
using styling::Color;
using styling::Style;

TEST(ColorTest, CodesNameTheirCasesAndNothingElse) {
  struct CodeCase {
    int code;
    std::optional<Color> color;
    std::optional<BackgroundColor> background;
    std::optional<Style> style;
  };
  const CodeCase cases[] = {
      {0, std::nullopt, std::nullopt, Style::defaultStyle},
      {5, std::nullopt, std::nullopt, Style::blink},
      {6, std::nullopt, std::nullopt, std::nullopt},
      {7, std::nullopt, std::nullopt, Style::swap},
      {30, Color::black, std::nullopt, std::nullopt},
      {38, std::nullopt, std::nullopt, std::nullopt},
      {39, Color::defaultColor, std::nullopt, std::nullopt},
      {40, std::nullopt, BackgroundColor::black, std::nullopt},
      {48, std::nullopt, std::nullopt, std::nullopt},
      {49, std::nullopt, BackgroundColor::defaultColor, std::nullopt},
      {89, std::nullopt, std::nullopt, std::nullopt},
      {97, Color::lightWhite, std::nullopt, std::nullopt},
      {100, std::nullopt, std::nullopt, std::nullopt},
      {-1, std::nullopt, std::nullopt, std::nullopt},
      {256 + 31, std::nullopt, std::nullopt, std::nullopt}};
  for (const CodeCase &c : cases) {
    SCOPED_TRACE(c.code);
    EXPECT_EQ(styling::colorFromCode(c.code), c.color);
    EXPECT_EQ(styling::backgroundColorFromCode(c.code), c.background);
    EXPECT_EQ(styling::styleFromCode(c.code), c.style);
  }
}

TEST(ColorTest, XcodeColorsDescriptionsReadBackAsTheirColour) {
  struct DescriptionCase {
    std::string_view description;
    std::optional<Color> color;
    std::optional<BackgroundColor> background;
  };
  const DescriptionCase cases[] = {
      {"fg0,204,0", Color::green, std::nullopt},
      {"fg128,128,128", Color::lightBlack, std::nullopt},
      {"fg255,255,255", Color::lightWhite, std::nullopt},
      {"bg0,204,0", std::nullopt, BackgroundColor::green},
      {"bg204,204,204", std::nullopt, BackgroundColor::white},
      {"", std::nullopt, std::nullopt},
      {"FG255,0,0", std::nullopt, std::nullopt},
      {"fg255,0,0 ", std::nullopt, std::nullopt},
      {"bg255,102,102", std::nullopt, std::nullopt}};
  for (const DescriptionCase &c : cases) {
    SCOPED_TRACE(c.description);
    EXPECT_EQ(styling::colorFromXcodeColorsDescription(c.description), c.color);
    EXPECT_EQ(styling::backgroundColorFromXcodeColorsDescription(c.description),
              c.background);
  }
}

TEST(ColorTest, EveryColourButTheDefaultRoundTripsThroughItsDescription) {
  for (int code = 0; code < 256; ++code) {
    if (auto color = styling::colorFromCode(code)) {
      SCOPED_TRACE(code);
      std::string_view description = styling::xcodeColorsDescription(*color);
      EXPECT_EQ(description.empty(), *color == Color::defaultColor);
      if (!description.empty()) {
        EXPECT_EQ(styling::colorFromXcodeColorsDescription(description), color);
      }
    }
    if (auto background = styling::backgroundColorFromCode(code)) {
      SCOPED_TRACE(code);
      std::string_view description =
          styling::xcodeColorsDescription(*background);
      EXPECT_EQ(description.empty(),
                *background == BackgroundColor::defaultColor);
      if (!description.empty()) {
        EXPECT_EQ(
            styling::backgroundColorFromXcodeColorsDescription(description),
            background);
      }
    }
  }
}

} // namespace
