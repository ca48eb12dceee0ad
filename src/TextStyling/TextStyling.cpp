#include "TextStyling/TextStyling.h"

#include "TextStyling/Sequences.h"

#include <algorithm>
#include <atomic>

namespace styling {
namespace {

// Both switches are process-wide and may be read by any thread; atomics
// keep that free of data races at no cost worth counting. The target is
// worked out from the environment once, at its first use.
std::atomic<OutputTarget> &outputTargetCell() {
  static std::atomic<OutputTarget> cell{currentOutputTarget()};
  return cell;
}

std::atomic<bool> enabledCell{true};

std::string applyingOne(std::string_view text, ModeCode code) {
  return applyingCodes(text, {code});
}

} // namespace

OutputTarget TextStyling::getOutputTarget() noexcept {
  return outputTargetCell().load(std::memory_order_relaxed);
}

void TextStyling::setOutputTarget(OutputTarget target) noexcept {
  outputTargetCell().store(target, std::memory_order_relaxed);
}

bool TextStyling::isEnabled() noexcept {
  return enabledCell.load(std::memory_order_relaxed);
}

void TextStyling::setEnabled(bool enabled) noexcept {
  enabledCell.store(enabled, std::memory_order_relaxed);
}

Modes TextStyling::extractModes(std::string_view text) {
  if (auto console = ConsoleModesExtractor::extract(text)) {
    Modes modes = ConsoleCodesParser::parse(console->codes);
    modes.text = std::move(console->text);
    return modes;
  }
  if (auto xcodeColors = XcodeColorsModesExtractor::extract(text)) {
    Modes modes = XcodeColorsCodesParser::parse(xcodeColors->codes);
    modes.text = std::move(xcodeColors->text);
    return modes;
  }
  Modes plain;
  plain.text = text;
  return plain;
}

std::string TextStyling::generateString(
    std::optional<Color> color, std::optional<BackgroundColor> backgroundColor,
    const std::optional<std::vector<Style>> &styles, std::string_view text) {
  if (!isEnabled())
    return std::string(text);
  const Modes modes{color, backgroundColor, styles, std::string(text)};
  switch (getOutputTarget()) {
  case OutputTarget::unknown:
    return modes.text;
  case OutputTarget::console:
    return ConsoleStringGenerator::generate(modes);
  case OutputTarget::xcodeColors:
    return XcodeColorsStringGenerator::generate(modes);
  }
  return modes.text;
}

std::string applyingCodes(std::string_view text,
                          std::initializer_list<ModeCode> codes) {
  return applyingCodes(text, std::vector<ModeCode>(codes));
}

std::string applyingCodes(std::string_view text,
                          const std::vector<ModeCode> &codes) {
  if (!TextStyling::isEnabled())
    return std::string(text);
  Modes current = TextStyling::extractModes(text);
  std::vector<std::uint8_t> values;
  values.reserve(codes.size());
  for (ModeCode code : codes)
    values.push_back(code.value);
  const Modes input = ConsoleCodesParser::parse(values);

  std::optional<Color> color = input.color ? input.color : current.color;
  std::optional<BackgroundColor> backgroundColor =
      input.backgroundColor ? input.backgroundColor : current.backgroundColor;
  std::vector<Style> styles = current.styles.value_or(std::vector<Style>{});
  if (input.styles)
    styles.insert(styles.end(), input.styles->begin(), input.styles->end());
  std::optional<std::vector<Style>> mergedStyles;
  if (!styles.empty())
    mergedStyles = std::move(styles);

  if (codes.size() == 0)
    return std::string(text);
  return TextStyling::generateString(color, backgroundColor, mergedStyles,
                                     current.text);
}

std::string applyingColor(std::string_view text, Color color) {
  return applyingOne(text, color);
}
std::string applyingBackgroundColor(std::string_view text,
                                    BackgroundColor color) {
  return applyingOne(text, color);
}
std::string applyingStyle(std::string_view text, Style style) {
  return applyingOne(text, style);
}

std::string black(std::string_view t) { return applyingOne(t, Color::black); }
std::string red(std::string_view t) { return applyingOne(t, Color::red); }
std::string green(std::string_view t) { return applyingOne(t, Color::green); }
std::string yellow(std::string_view t) { return applyingOne(t, Color::yellow); }
std::string blue(std::string_view t) { return applyingOne(t, Color::blue); }
std::string magenta(std::string_view t) {
  return applyingOne(t, Color::magenta);
}
std::string cyan(std::string_view t) { return applyingOne(t, Color::cyan); }
std::string white(std::string_view t) { return applyingOne(t, Color::white); }
std::string lightBlack(std::string_view t) {
  return applyingOne(t, Color::lightBlack);
}
std::string lightRed(std::string_view t) {
  return applyingOne(t, Color::lightRed);
}
std::string lightGreen(std::string_view t) {
  return applyingOne(t, Color::lightGreen);
}
std::string lightYellow(std::string_view t) {
  return applyingOne(t, Color::lightYellow);
}
std::string lightBlue(std::string_view t) {
  return applyingOne(t, Color::lightBlue);
}
std::string lightMagenta(std::string_view t) {
  return applyingOne(t, Color::lightMagenta);
}
std::string lightCyan(std::string_view t) {
  return applyingOne(t, Color::lightCyan);
}
std::string lightWhite(std::string_view t) {
  return applyingOne(t, Color::lightWhite);
}

std::string onBlack(std::string_view t) {
  return applyingOne(t, BackgroundColor::black);
}
std::string onRed(std::string_view t) {
  return applyingOne(t, BackgroundColor::red);
}
std::string onGreen(std::string_view t) {
  return applyingOne(t, BackgroundColor::green);
}
std::string onYellow(std::string_view t) {
  return applyingOne(t, BackgroundColor::yellow);
}
std::string onBlue(std::string_view t) {
  return applyingOne(t, BackgroundColor::blue);
}
std::string onMagenta(std::string_view t) {
  return applyingOne(t, BackgroundColor::magenta);
}
std::string onCyan(std::string_view t) {
  return applyingOne(t, BackgroundColor::cyan);
}
std::string onWhite(std::string_view t) {
  return applyingOne(t, BackgroundColor::white);
}

std::string bold(std::string_view t) { return applyingOne(t, Style::bold); }
std::string dim(std::string_view t) { return applyingOne(t, Style::dim); }
std::string italic(std::string_view t) { return applyingOne(t, Style::italic); }
std::string underline(std::string_view t) {
  return applyingOne(t, Style::underline);
}
std::string blink(std::string_view t) { return applyingOne(t, Style::blink); }
std::string swap(std::string_view t) { return applyingOne(t, Style::swap); }

std::string removingColor(std::string_view text) {
  if (!TextStyling::extractModes(text).color)
    return std::string(text);
  return applyingOne(text, Color::defaultColor);
}

std::string removingBackgroundColor(std::string_view text) {
  if (!TextStyling::extractModes(text).backgroundColor)
    return std::string(text);
  return applyingOne(text, BackgroundColor::defaultColor);
}

std::string removingStyle(std::string_view text, Style style) {
  if (!TextStyling::isEnabled())
    return std::string(text);
  Modes modes = TextStyling::extractModes(text);
  if (!modes.styles)
    return std::string(text);
  std::erase(*modes.styles, style);
  return TextStyling::generateString(modes.color, modes.backgroundColor,
                                     modes.styles, modes.text);
}

std::string removingAllStyles(std::string_view text) {
  if (!TextStyling::isEnabled())
    return std::string(text);
  const Modes modes = TextStyling::extractModes(text);
  return TextStyling::generateString(modes.color, modes.backgroundColor,
                                     std::nullopt, modes.text);
}

std::string clearColor(std::string_view text) { return removingColor(text); }
std::string clearBackgroundColor(std::string_view text) {
  return removingBackgroundColor(text);
}
std::string clearStyles(std::string_view text) {
  return removingAllStyles(text);
}

std::string raw(std::string_view text) {
  return TextStyling::extractModes(text).text;
}

} // namespace styling
