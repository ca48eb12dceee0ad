#include "Platform/UrlText.h"

#include <cstdint>
#include <string_view>

namespace platform {
namespace {

bool isQueryAllowed(unsigned char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
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
  constexpr char alphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    std::uint32_t n = (static_cast<unsigned char>(bytes[i]) << 16) |
                      (static_cast<unsigned char>(bytes[i + 1]) << 8) |
                      static_cast<unsigned char>(bytes[i + 2]);
    out.push_back(alphabet[(n >> 18) & 63]);
    out.push_back(alphabet[(n >> 12) & 63]);
    out.push_back(alphabet[(n >> 6) & 63]);
    out.push_back(alphabet[n & 63]);
  }
  std::size_t rest = bytes.size() - i;
  if (rest == 0)
    return out;
  std::uint32_t n = static_cast<unsigned char>(bytes[i]) << 16;
  if (rest == 2)
    n |= static_cast<unsigned char>(bytes[i + 1]) << 8;
  out.push_back(alphabet[(n >> 18) & 63]);
  out.push_back(alphabet[(n >> 12) & 63]);
  out.push_back(rest == 2 ? alphabet[(n >> 6) & 63] : '=');
  out.push_back('=');
  return out;
}

bool isValidUtf8(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    auto c = static_cast<unsigned char>(text[i]);
    if (c < 0x80) {
      ++i;
      continue;
    }
    std::size_t length;
    std::uint32_t codePoint;
    if ((c & 0xE0) == 0xC0) {
      length = 2;
      codePoint = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
      length = 3;
      codePoint = c & 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
      length = 4;
      codePoint = c & 0x07;
    } else {
      return false;
    }
    if (i + length > text.size())
      return false;
    for (std::size_t k = 1; k < length; ++k) {
      auto next = static_cast<unsigned char>(text[i + k]);
      if ((next & 0xC0) != 0x80)
        return false;
      codePoint = (codePoint << 6) | (next & 0x3F);
    }
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (codePoint < smallest[length] || codePoint > 0x10FFFF ||
        (codePoint >= 0xD800 && codePoint <= 0xDFFF))
      return false;
    i += length;
  }
  return true;
}

std::string lastPathComponent(std::string_view path) {
  std::size_t end = path.find_last_not_of('/');
  if (end == std::string_view::npos)
    return path.empty() ? std::string() : std::string("/");
  std::string_view trimmed = path.substr(0, end + 1);
  std::size_t slash = trimmed.rfind('/');
  return std::string(slash == std::string_view::npos ? trimmed
                                                     : trimmed.substr(slash + 1));
}

} // namespace platform
