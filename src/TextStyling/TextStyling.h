#ifndef KESTRUNECLI_TEXTSTYLING_TEXTSTYLING_H
#define KESTRUNECLI_TEXTSTYLING_TEXTSTYLING_H

#include "TextStyling/Color.h"
#include "TextStyling/OutputTarget.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace styling {

/// What a text says about its styling. An absent field means the text says
/// nothing on that point; `text` is the text without its sequences.
struct Modes {
  std::optional<Color> color;
  std::optional<BackgroundColor> backgroundColor;
  std::optional<std::vector<Style>> styles;
  std::string text;

  bool operator==(const Modes &) const = default;
};

/// The process-wide switches of styling, and taking styled text apart and
/// putting it together again.
class TextStyling {
public:
  TextStyling() = delete;

  /// The target styled text is written for. Worked out from the environment
  /// once, at the first call of either accessor, unless set before.
  [[nodiscard]] static OutputTarget getOutputTarget() noexcept;
  static void setOutputTarget(OutputTarget target) noexcept;

  /// Whether styling is on; true until set otherwise. Off, every styling
  /// operation gives its text back unchanged.
  [[nodiscard]] static bool isEnabled() noexcept;
  static void setEnabled(bool enabled) noexcept;

  /// Takes a text apart into its modes and its plain text. Only a text that
  /// begins with a sequence and ends with its reset is styled; any other text
  /// is plain, with every mode absent. Ignores the switches above.
  [[nodiscard]] static Modes extractModes(std::string_view text);

  /// Wraps \p text in the sequence of the given modes for the present
  /// target; gives \p text back when styling is off or the target unknown.
  [[nodiscard]] static std::string
  generateString(std::optional<Color> color,
                 std::optional<BackgroundColor> backgroundColor,
                 const std::optional<std::vector<Style>> &styles,
                 std::string_view text);
};

/// \p text with the given codes merged into its styling: a new colour or
/// background replaces the old one, new styles follow the old ones. One
/// sequence wraps the result. No codes, or styling off: \p text unchanged.
[[nodiscard]] std::string applyingCodes(std::string_view text,
                                        std::initializer_list<ModeCode> codes);
[[nodiscard]] std::string applyingCodes(std::string_view text,
                                        const std::vector<ModeCode> &codes);

[[nodiscard]] std::string applyingColor(std::string_view text, Color color);
[[nodiscard]] std::string applyingBackgroundColor(std::string_view text,
                                                  BackgroundColor color);
[[nodiscard]] std::string applyingStyle(std::string_view text, Style style);

/// \p text in a foreground colour.
[[nodiscard]] std::string black(std::string_view text);
[[nodiscard]] std::string red(std::string_view text);
[[nodiscard]] std::string green(std::string_view text);
[[nodiscard]] std::string yellow(std::string_view text);
[[nodiscard]] std::string blue(std::string_view text);
[[nodiscard]] std::string magenta(std::string_view text);
[[nodiscard]] std::string cyan(std::string_view text);
[[nodiscard]] std::string white(std::string_view text);
[[nodiscard]] std::string lightBlack(std::string_view text);
[[nodiscard]] std::string lightRed(std::string_view text);
[[nodiscard]] std::string lightGreen(std::string_view text);
[[nodiscard]] std::string lightYellow(std::string_view text);
[[nodiscard]] std::string lightBlue(std::string_view text);
[[nodiscard]] std::string lightMagenta(std::string_view text);
[[nodiscard]] std::string lightCyan(std::string_view text);
[[nodiscard]] std::string lightWhite(std::string_view text);

/// \p text on a background colour.
[[nodiscard]] std::string onBlack(std::string_view text);
[[nodiscard]] std::string onRed(std::string_view text);
[[nodiscard]] std::string onGreen(std::string_view text);
[[nodiscard]] std::string onYellow(std::string_view text);
[[nodiscard]] std::string onBlue(std::string_view text);
[[nodiscard]] std::string onMagenta(std::string_view text);
[[nodiscard]] std::string onCyan(std::string_view text);
[[nodiscard]] std::string onWhite(std::string_view text);

/// \p text in a style.
[[nodiscard]] std::string bold(std::string_view text);
[[nodiscard]] std::string dim(std::string_view text);
[[nodiscard]] std::string italic(std::string_view text);
[[nodiscard]] std::string underline(std::string_view text);
[[nodiscard]] std::string blink(std::string_view text);
[[nodiscard]] std::string swap(std::string_view text);

/// \p text with its colour set back to the default (the sequence stays and
/// carries code 39); unchanged when it has no colour.
[[nodiscard]] std::string removingColor(std::string_view text);
/// \p text with its background set back to the default (code 49);
/// unchanged when it has no background colour.
[[nodiscard]] std::string removingBackgroundColor(std::string_view text);
/// \p text without any occurrence of \p style; unchanged when styling is
/// off or the text has no styles.
[[nodiscard]] std::string removingStyle(std::string_view text, Style style);
/// \p text with its colours only; unchanged when styling is off.
[[nodiscard]] std::string removingAllStyles(std::string_view text);

/// The same as removingColor, removingBackgroundColor, removingAllStyles.
[[nodiscard]] std::string clearColor(std::string_view text);
[[nodiscard]] std::string clearBackgroundColor(std::string_view text);
[[nodiscard]] std::string clearStyles(std::string_view text);

/// The plain text of \p text, without its sequence.
[[nodiscard]] std::string raw(std::string_view text);

} // namespace styling

#endif
