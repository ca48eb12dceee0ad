#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_GRAPHEMES_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_GRAPHEMES_H

#include <string>
#include <string_view>
#include <vector>

namespace argparse {

/// Splits \p text into user-perceived characters (extended grapheme
/// clusters). A byte that is not part of valid UTF-8 is a character of its
/// own, so every input splits and the pieces joined give \p text back.
std::vector<std::string_view> splitGraphemes(std::string_view text);

/// Number of user-perceived characters of \p text.
std::size_t countGraphemes(std::string_view text);

/// Whether the first code point of \p character is an upper-case letter.
bool isUppercase(std::string_view character);

/// Whether the first code point of \p character is a lower-case letter.
bool isLowercase(std::string_view character);

/// \p text with every code point mapped to lower case; invalid bytes stay.
std::string lowercased(std::string_view text);

} // namespace argparse

#endif
