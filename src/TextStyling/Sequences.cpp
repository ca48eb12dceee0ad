#include "TextStyling/Sequences.h"

#include <optional>

namespace styling {
namespace {

// A piece of a sequence counts as a code only when it is a decimal number
// that fits a byte; anything else (empty, a sign, too large) is dropped.
std::optional<std::uint8_t> readCode(std::string_view piece) {
  if (piece.empty())
    return std::nullopt;
  unsigned value = 0;
  for (char c : piece) {
    if (c < '0' || c > '9')
      return std::nullopt;
    value = value * 10 + static_cast<unsigned>(c - '0');
    if (value > 255)
      return std::nullopt;
  }
  return static_cast<std::uint8_t>(value);
}

void appendStyle(Modes &modes, Style style) {
  if (!modes.styles)
    modes.styles.emplace();
  modes.styles->push_back(style);
}

} // namespace

std::optional<ExtractedCodes<std::uint8_t>>
ConsoleModesExtractor::extract(std::string_view text) {
  const std::size_t codesStart = ControlCode::CSI.size();
  if (text.size() < codesStart + consoleReset.size() ||
      !text.starts_with(ControlCode::CSI) || !text.ends_with(consoleReset))
    return std::nullopt;
  const std::size_t resetStart = text.size() - consoleReset.size();
  const std::size_t codesEnd = text.find('m', codesStart);
  if (codesEnd >= resetStart)
    return std::nullopt;
  ExtractedCodes<std::uint8_t> result;
  std::string_view codes = text.substr(codesStart, codesEnd - codesStart);
  std::size_t pieceStart = 0;
  while (true) {
    const std::size_t pieceEnd = codes.find(';', pieceStart);
    if (auto code = readCode(codes.substr(pieceStart, pieceEnd - pieceStart)))
      result.codes.push_back(*code);
    if (pieceEnd == std::string_view::npos)
      break;
    pieceStart = pieceEnd + 1;
  }
  result.text = text.substr(codesEnd + 1, resetStart - codesEnd - 1);
  return result;
}

Modes ConsoleCodesParser::parse(std::span<const std::uint8_t> modeCodes) {
  Modes modes;
  for (std::uint8_t code : modeCodes) {
    if (auto style = styleFromCode(code))
      appendStyle(modes, *style);
    else if (auto color = colorFromCode(code))
      modes.color = color;
    else if (auto background = backgroundColorFromCode(code))
      modes.backgroundColor = background;
  }
  return modes;
}

std::string ConsoleStringGenerator::generate(const Modes &modes) {
  std::vector<int> codes;
  if (modes.color)
    codes.push_back(static_cast<int>(*modes.color));
  if (modes.backgroundColor)
    codes.push_back(static_cast<int>(*modes.backgroundColor));
  if (modes.styles)
    for (Style style : *modes.styles)
      codes.push_back(static_cast<int>(style));
  if (codes.empty())
    return modes.text;
  std::string result(ControlCode::CSI);
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (i > 0)
      result += ';';
    result += std::to_string(codes[i]);
  }
  result += 'm';
  result += modes.text;
  result += consoleReset;
  return result;
}

std::optional<ExtractedCodes<std::string>>
XcodeColorsModesExtractor::extract(std::string_view text) {
  if (text.size() < ControlCode::CSI.size() + xcodeColorsReset.size() ||
      !text.starts_with(ControlCode::CSI) || !text.ends_with(xcodeColorsReset))
    return std::nullopt;
  const std::size_t resetStart = text.size() - xcodeColorsReset.size();
  ExtractedCodes<std::string> result;
  std::size_t position = 0;
  while (position < resetStart && text[position] == '\x1b') {
    const std::size_t codeStart = position + ControlCode::CSI.size();
    const std::size_t codeEnd = text.find(';', codeStart);
    if (codeEnd >= resetStart)
      return std::nullopt;
    result.codes.emplace_back(text.substr(codeStart, codeEnd - codeStart));
    position = codeEnd + 1;
  }
  result.text = text.substr(position, resetStart - position);
  return result;
}

Modes XcodeColorsCodesParser::parse(std::span<const std::string> modeCodes) {
  Modes modes;
  for (const std::string &code : modeCodes) {
    if (auto color = colorFromXcodeColorsDescription(code))
      modes.color = color;
    else if (auto background = backgroundColorFromXcodeColorsDescription(code))
      modes.backgroundColor = background;
  }
  return modes;
}

std::string XcodeColorsStringGenerator::generate(const Modes &modes) {
  std::string result;
  if (modes.color && *modes.color != Color::defaultColor) {
    result += ControlCode::CSI;
    result += xcodeColorsDescription(*modes.color);
    result += ';';
  }
  if (modes.backgroundColor &&
      *modes.backgroundColor != BackgroundColor::defaultColor) {
    result += ControlCode::CSI;
    result += xcodeColorsDescription(*modes.backgroundColor);
    result += ';';
  }
  if (result.empty())
    return modes.text;
  result += modes.text;
  result += xcodeColorsReset;
  return result;
}

} // namespace styling
