#ifndef KESTRUNECLI_TEXTSTYLING_COLOR_H
#define KESTRUNECLI_TEXTSTYLING_COLOR_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace styling {

/// A foreground colour; the value of each case is its SGR code.
/// `defaultColor` is the terminal's own foreground colour (code 39).
enum class Color : std::uint8_t {
  black = 30,
  red = 31,
  green = 32,
  yellow = 33,
  blue = 34,
  magenta = 35,
  cyan = 36,
  white = 37,
  defaultColor = 39,
  lightBlack = 90,
  lightRed = 91,
  lightGreen = 92,
  lightYellow = 93,
  lightBlue = 94,
  lightMagenta = 95,
  lightCyan = 96,
  lightWhite = 97,
};

/// A background colour; the value of each case is its SGR code.
/// `defaultColor` is the terminal's own background colour (code 49).
enum class BackgroundColor : std::uint8_t {
  black = 40,
  red = 41,
  green = 42,
  yellow = 43,
  blue = 44,
  magenta = 45,
  cyan = 46,
  white = 47,
  defaultColor = 49,
};

/// A text style; the value of each case is its SGR code. `defaultStyle` (0)
/// is the reset code. There is no style with code 6.
enum class Style : std::uint8_t {
  defaultStyle = 0,
  bold = 1,
  dim = 2,
  italic = 3,
  underline = 4,
  blink = 5,
  swap = 7,
};

/// One SGR code taken from a Color, a BackgroundColor or a Style.
struct ModeCode {
  constexpr ModeCode(Color color) noexcept
      : value(static_cast<std::uint8_t>(color)) {}
  constexpr ModeCode(BackgroundColor color) noexcept
      : value(static_cast<std::uint8_t>(color)) {}
  constexpr ModeCode(Style style) noexcept
      : value(static_cast<std::uint8_t>(style)) {}

  std::uint8_t value;
};

/// The Color whose code is \p code, or std::nullopt when no colour has it.
[[nodiscard]] std::optional<Color> colorFromCode(int code) noexcept;

/// The BackgroundColor whose code is \p code, or std::nullopt.
[[nodiscard]] std::optional<BackgroundColor>
backgroundColorFromCode(int code) noexcept;

/// The Style whose code is \p code, or std::nullopt (6 among others).
[[nodiscard]] std::optional<Style> styleFromCode(int code) noexcept;

/// The XcodeColors form of \p color, such as "fg255,0,0"; empty for
/// `defaultColor`, which has no such form.
[[nodiscard]] std::string_view xcodeColorsDescription(Color color) noexcept;

/// The XcodeColors form of \p color, such as "bg255,0,0"; empty for
/// `defaultColor`.
[[nodiscard]] std::string_view
xcodeColorsDescription(BackgroundColor color) noexcept;

/// The Color described by \p description in the XcodeColors form, or
/// std::nullopt for the empty text and any text that describes none.
[[nodiscard]] std::optional<Color>
colorFromXcodeColorsDescription(std::string_view description) noexcept;

/// The BackgroundColor described by \p description, or std::nullopt.
[[nodiscard]] std::optional<BackgroundColor>
backgroundColorFromXcodeColorsDescription(
    std::string_view description) noexcept;

} // namespace styling

#endif
