#include "Platform/AsciiText.h"

#include <cstddef>

namespace platform {

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size())
    return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    auto lower = [](char c) {
      return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    };
    if (lower(a[i]) != lower(b[i]))
      return false;
  }
  return true;
}

} // namespace platform
