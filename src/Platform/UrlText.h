#ifndef KESTRUNECLI_PLATFORM_URLTEXT_H
#define KESTRUNECLI_PLATFORM_URLTEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Percent-encodes every byte of \p text outside the query-allowed set:
/// ASCII letters, digits and ! $ & ' ( ) * + , - . / : ; = ? @ _ ~ stay.
/// Other characters become the escapes of their UTF-8 bytes (upper-case hex).
std::string percentEncodeQueryAllowed(std::string_view text);

/// Percent-encodes the four characters that would end a query value or give
/// it another meaning: "&" (%26), "=" (%3D), "#" (%23) and "+" (%2B).
/// Everything else stays as it is, "%" escapes already in \p text included.
std::string percentEncodeQueryValue(std::string_view text);

/// Decodes every %XX escape of \p text. Absent when an escape is incomplete or
/// not hexadecimal, or when the decoded bytes are not valid UTF-8.
std::optional<std::string> removingPercentEncoding(std::string_view text);

/// Standard Base64 (RFC 4648 alphabet, "=" padding, no line breaks).
std::string encodeBase64(std::string_view bytes);

/// The bytes of Base64 text as encodeBase64 writes it. Absent when the length
/// isn't a multiple of four, a character is outside the alphabet, or "="
/// stands anywhere but as the last one or two characters.
std::optional<std::string> decodeBase64(std::string_view text);

/// Whether \p text is well-formed UTF-8 (no overlongs, no surrogates).
bool isValidUtf8(std::string_view text);

/// \p text with its control characters shown as escapes, so that printing
/// it can't move the cursor, retitle or clear the window or write the
/// clipboard: the C0 controls but tab and line feed, DEL, and the C1
/// controls (U+0080 to U+009F) become "\x" and two lower-case hex digits of
/// the code point ("\x1b", "\x7f", "\x9b"). The text is read as UTF-8; a
/// byte from 0x80 to 0x9F that is no part of a valid sequence is escaped
/// too (a terminal set to 8 bits would take it for a C1 control), any other
/// byte stays as it is. Text without such characters comes back unchanged;
/// a backslash is not escaped, so the result can't always be read back.
std::string escapeControlCharacters(std::string_view text);

/// The last component of a file path: trailing slashes are ignored, so
/// "a/Foo.pkg/" gives "Foo.pkg"; a path of slashes only gives "/".
std::string lastPathComponent(std::string_view path);

} // namespace platform

#endif
