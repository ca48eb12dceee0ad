#include "TextStyling/Color.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace {

using styling::BackgroundColor;
using styling::Color;

TEST(ColorTest, OnlyTheDescriptionOfAColourReadsAsThatColour) {
  constexpr std::string_view strangers[] = {"", "FG255,0,0", "fg255,0,0 ",
                                            "bg255,102,102", "fg0,204,0;"};
  for (std::string_view text : strangers) {
    SCOPED_TRACE(text);
    EXPECT_EQ(styling::colorFromXcodeColorsDescription(text), std::nullopt);
    EXPECT_EQ(styling::backgroundColorFromXcodeColorsDescription(text),
              std::nullopt);
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
