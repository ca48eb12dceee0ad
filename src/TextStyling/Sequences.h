#ifndef KESTRUNECLI_TEXTSTYLING_SEQUENCES_H
#define KESTRUNECLI_TEXTSTYLING_SEQUENCES_H

#include "TextStyling/TextStyling.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace styling {

/// The control codes of styled text.
struct ControlCode {
  /// The control sequence introducer ESC '[' that begins every sequence.
  static constexpr std::string_view CSI = "\x1b[";
};
/// The end of a text styled for a terminal.
inline constexpr std::string_view consoleReset = "\x1b[0m";
/// The end of a text styled for an XcodeColors console.
inline constexpr std::string_view xcodeColorsReset = "\x1b[;";

/// The codes and the plain text of one styled run.
template <typename Code> struct ExtractedCodes {
  std::vector<Code> codes;
  std::string text;
};

/// Takes apart a text that begins with "ESC [" and ends with the terminal
/// reset: the codes up to the first "m" (pieces that are no number from 0
/// to 255 are dropped) and the text between that "m" and the reset.
/// std::nullopt when the text isn't in this form, or its sequence runs into
/// the reset (as in a bare reset).
struct ConsoleModesExtractor {
  [[nodiscard]] static std::optional<ExtractedCodes<std::uint8_t>>
  extract(std::string_view text);
};

/// Turns SGR codes into modes: styles in order, the last colour and the
/// last background; unknown codes are dropped. The result has no text.
struct ConsoleCodesParser {
  [[nodiscard]] static Modes parse(std::span<const std::uint8_t> modeCodes);
};

/// Writes modes as one SGR sequence around the text, then the reset: the
/// colour's code, the background's, then the styles'.
struct ConsoleStringGenerator {
  [[nodiscard]] static std::string generate(const Modes &modes);
};

/// Takes apart a text that begins with "ESC [" and ends with "ESC [ ;":
/// each leading ESC, one more character and a code up to ";" gives one
/// code; the text runs from behind them up to the reset. std::nullopt when
/// the text isn't in this form, or a code runs into the reset.
struct XcodeColorsModesExtractor {
  [[nodiscard]] static std::optional<ExtractedCodes<std::string>>
  extract(std::string_view text);
};

/// Turns XcodeColors codes into a colour and a background, the last of each
/// winning; other codes are dropped. Styles stay absent.
struct XcodeColorsCodesParser {
  [[nodiscard]] static Modes parse(std::span<const std::string> modeCodes);
};

/// Writes the colour and background of modes in the XcodeColors form; it
/// has no styles and no form for the default colours.
struct XcodeColorsStringGenerator {
  [[nodiscard]] static std::string generate(const Modes &modes);
};

} // namespace styling

#endif
