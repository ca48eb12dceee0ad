#include "TextStyling/Color.h"

#include <array>
#include <utility>

namespace styling {
namespace {

constexpr std::array<std::pair<Color, std::string_view>, 17> colorTable{{
    {Color::black, "fg0,0,0"},
    {Color::red, "fg255,0,0"},
    {Color::green, "fg0,204,0"},
    {Color::yellow, "fg255,255,0"},
    {Color::blue, "fg0,0,255"},
    {Color::magenta, "fg255,0,255"},
    {Color::cyan, "fg0,255,255"},
    {Color::white, "fg204,204,204"},
    {Color::defaultColor, ""},
    {Color::lightBlack, "fg128,128,128"},
    {Color::lightRed, "fg255,102,102"},
    {Color::lightGreen, "fg102,255,102"},
    {Color::lightYellow, "fg255,255,102"},
    {Color::lightBlue, "fg102,102,255"},
    {Color::lightMagenta, "fg255,102,255"},
    {Color::lightCyan, "fg102,255,255"},
    {Color::lightWhite, "fg255,255,255"},
}};

constexpr std::array<std::pair<BackgroundColor, std::string_view>, 9>
    backgroundTable{{
        {BackgroundColor::black, "bg0,0,0"},
        {BackgroundColor::red, "bg255,0,0"},
        {BackgroundColor::green, "bg0,204,0"},
        {BackgroundColor::yellow, "bg255,255,0"},
        {BackgroundColor::blue, "bg0,0,255"},
        {BackgroundColor::magenta, "bg255,0,255"},
        {BackgroundColor::cyan, "bg0,255,255"},
        {BackgroundColor::white, "bg204,204,204"},
        {BackgroundColor::defaultColor, ""},
    }};

constexpr std::array<Style, 7> styleTable{
    Style::defaultStyle, Style::bold,  Style::dim, Style::italic,
    Style::underline,    Style::blink, Style::swap};

template <typename Table>
auto findByCode(const Table &table, int code)
    -> std::optional<typename Table::value_type::first_type> {
  for (const auto &[mode, description] : table)
    if (static_cast<int>(mode) == code)
      return mode;
  return std::nullopt;
}

template <typename Table>
auto findByDescription(const Table &table, std::string_view description)
    -> std::optional<typename Table::value_type::first_type> {
  // The default colours have no description: the empty text names nothing.
  if (description.empty())
    return std::nullopt;
  for (const auto &[mode, text] : table)
    if (text == description)
      return mode;
  return std::nullopt;
}

template <typename Table, typename Mode>
std::string_view describe(const Table &table, Mode mode) {
  for (const auto &[candidate, text] : table)
    if (candidate == mode)
      return text;
  return {};
}

} // namespace

std::optional<Color> colorFromCode(int code) noexcept {
  return findByCode(colorTable, code);
}

std::optional<BackgroundColor> backgroundColorFromCode(int code) noexcept {
  return findByCode(backgroundTable, code);
}

std::optional<Style> styleFromCode(int code) noexcept {
  for (Style style : styleTable)
    if (static_cast<int>(style) == code)
      return style;
  return std::nullopt;
}

std::string_view xcodeColorsDescription(Color color) noexcept {
  return describe(colorTable, color);
}

std::string_view xcodeColorsDescription(BackgroundColor color) noexcept {
  return describe(backgroundTable, color);
}

std::optional<Color>
colorFromXcodeColorsDescription(std::string_view description) noexcept {
  return findByDescription(colorTable, description);
}

std::optional<BackgroundColor> backgroundColorFromXcodeColorsDescription(
    std::string_view description) noexcept {
  return findByDescription(backgroundTable, description);
}

} // namespace styling
