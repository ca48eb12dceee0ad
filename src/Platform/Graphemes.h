#ifndef KESTRUNECLI_PLATFORM_GRAPHEMES_H
#define KESTRUNECLI_PLATFORM_GRAPHEMES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Splits the UTF-8 text \p text into user-perceived characters (extended
/// grapheme clusters). A byte that isn't part of valid UTF-8 is a character
/// of its own, so every input splits and the pieces joined give \p text back.
[[nodiscard]] std::vector<std::string_view> splitGraphemes(std::string_view text);

/// The number of user-perceived characters of \p text, as splitGraphemes
/// counts them.
[[nodiscard]] std::size_t countGraphemes(std::string_view text);

/// Whether the first code point of \p character is an upper-case letter.
[[nodiscard]] bool isUppercase(std::string_view character);

/// Whether the first code point of \p character is a lower-case letter.
[[nodiscard]] bool isLowercase(std::string_view character);

/// \p text with every code point mapped to lower case; invalid bytes stay.
[[nodiscard]] std::string lowercased(std::string_view text);

} // namespace platform

#endif
