#include "Platform/UrlText.h"

#include <cstdint>
#include <string>
#include <string_view>

#include <utf8proc.h>

namespace platform {
namespace {

bool isQueryAllowed(unsigned char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
      (c >= '0' && c <= '9'))
    return true;
  constexpr std::string_view extra = "!$&'()*+,-./:;=?@_~";
  return extra.find(static_cast<char>(c)) != std::string_view::npos;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'a' && c <= 'f')
    return c - 'a' + 10;
  if (c >= 'A' && c <= 'F')
    return c - 'A' + 10;
  return -1;
}

constexpr char base64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int base64Value(char c) {
  const char *found = std::char_traits<char>::find(base64Alphabet, 64, c);
  return found ? static_cast<int>(found - base64Alphabet) : -1;
}

} // namespace

std::string percentEncodeQueryAllowed(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (char ch : text) {
    auto c = static_cast<unsigned char>(ch);
    if (isQueryAllowed(c)) {
      encoded.push_back(ch);
      continue;
    }
    encoded.push_back('%');
    encoded.push_back(digits[c >> 4]);
    encoded.push_back(digits[c & 0xF]);
  }
  return encoded;
}

std::string percentEncodeQueryValue(std::string_view text) {
  std::string encoded;
  encoded.reserve(text.size());
  for (char c : text) {
    switch (c) {
    case '&':
      encoded += "%26";
      break;
    case '=':
      encoded += "%3D";
      break;
    case '#':
      encoded += "%23";
      break;
    case '+':
      encoded += "%2B";
      break;
    default:
      encoded.push_back(c);
    }
  }
  return encoded;
}

std::optional<std::string> removingPercentEncoding(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded.push_back(text[i]);
      continue;
    }
    if (i + 2 >= text.size())
      return std::nullopt;
    int high = hexValue(text[i + 1]);
    int low = hexValue(text[i + 2]);
    if (high < 0 || low < 0)
      return std::nullopt;
    decoded.push_back(static_cast<char>(high * 16 + low));
    i += 2;
  }
  if (!isValidUtf8(decoded))
    return std::nullopt;
  return decoded;
}

std::string encodeBase64(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    std::uint32_t n = (static_cast<unsigned char>(bytes[i]) << 16) |
                      (static_cast<unsigned char>(bytes[i + 1]) << 8) |
                      static_cast<unsigned char>(bytes[i + 2]);
    out.push_back(base64Alphabet[(n >> 18) & 63]);
    out.push_back(base64Alphabet[(n >> 12) & 63]);
    out.push_back(base64Alphabet[(n >> 6) & 63]);
    out.push_back(base64Alphabet[n & 63]);
  }
  std::size_t rest = bytes.size() - i;
  if (rest == 0)
    return out;
  std::uint32_t n = static_cast<unsigned char>(bytes[i]) << 16;
  if (rest == 2)
    n |= static_cast<unsigned char>(bytes[i + 1]) << 8;
  out.push_back(base64Alphabet[(n >> 18) & 63]);
  out.push_back(base64Alphabet[(n >> 12) & 63]);
  out.push_back(rest == 2 ? base64Alphabet[(n >> 6) & 63] : '=');
  out.push_back('=');
  return out;
}

std::optional<std::string> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0)
    return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    std::uint32_t word = 0;
    int padding = 0;
    for (std::size_t j = 0; j < 4; ++j) {
      char c = text[i + j];
      bool last = i + 4 == text.size();
      // "=" may only close the last quantum, as "xx==" or "xxx=".
      if (c == '=' && last && j >= 2 && (j == 3 || text[i + 3] == '=')) {
        ++padding;
        word <<= 6;
        continue;
      }
      int value = base64Value(c);
      if (value < 0 || padding > 0)
        return std::nullopt;
      word = word << 6 | static_cast<std::uint32_t>(value);
    }
    bytes.push_back(static_cast<char>(word >> 16 & 0xFF));
    if (padding < 2)
      bytes.push_back(static_cast<char>(word >> 8 & 0xFF));
    if (padding < 1)
      bytes.push_back(static_cast<char>(word & 0xFF));
  }
  return bytes;
}

namespace {

// The length of the UTF-8 sequence at \p position of \p text, with its
// code point in \p codePoint; 0 when no valid sequence starts there.
std::size_t nextSequence(std::string_view text, std::size_t position,
                         utf8proc_int32_t &codePoint) {
  const auto *bytes = reinterpret_cast<const utf8proc_uint8_t *>(text.data());
  utf8proc_ssize_t length = utf8proc_iterate(
      bytes + position, static_cast<utf8proc_ssize_t>(text.size() - position),
      &codePoint);
  return length > 0 ? static_cast<std::size_t>(length) : 0;
}

} // namespace

bool isValidUtf8(std::string_view text) {
  utf8proc_int32_t codePoint = -1;
  for (std::size_t position = 0, length = 0; position < text.size();
       position += length)
    if ((length = nextSequence(text, position, codePoint)) == 0)
      return false;
  return true;
}

std::string escapeControlCharacters(std::string_view text) {
  auto isControl = [](utf8proc_int32_t c) {
    return (c < 0x20 && c != '\t' && c != '\n') || (c >= 0x7F && c <= 0x9F);
  };
  std::string out;
  out.reserve(text.size());
  for (std::size_t position = 0, length = 0; position < text.size();
       position += length) {
    utf8proc_int32_t codePoint = -1;
    length = nextSequence(text, position, codePoint);
    // A byte that starts no valid sequence counts alone, as its own value.
    if (length == 0) {
      codePoint = static_cast<unsigned char>(text[position]);
      length = 1;
    }
    if (!isControl(codePoint)) {
      out.append(text.substr(position, length));
      continue;
    }
    constexpr char digits[] = "0123456789abcdef";
    out.append("\\x").push_back(digits[codePoint >> 4]);
    out.push_back(digits[codePoint & 0xF]);
  }
  return out;
}

std::string lastPathComponent(std::string_view path) {
  std::size_t end = path.find_last_not_of('/');
  if (end == std::string_view::npos)
    return path.empty() ? std::string() : std::string("/");
  std::string_view trimmed = path.substr(0, end + 1);
  std::size_t slash = trimmed.rfind('/');
  return std::string(
      slash == std::string_view::npos ? trimmed : trimmed.substr(slash + 1));
}

} // namespace platform
