#include "Platform/Graphemes.h"

#include <utf8proc.h>

namespace platform {

std::size_t countGraphemes(std::string_view text) {
  std::size_t count = 0;
  utf8proc_int32_t state = 0;
  utf8proc_int32_t previous = -1;
  const auto *bytes = reinterpret_cast<const utf8proc_uint8_t *>(text.data());
  std::size_t position = 0;
  while (position < text.size()) {
    utf8proc_int32_t codePoint = -1;
    utf8proc_ssize_t length = utf8proc_iterate(
        bytes + position, static_cast<utf8proc_ssize_t>(text.size() - position),
        &codePoint);
    if (length <= 0) {
      // An invalid byte stands alone and breaks any cluster around it.
      ++count;
      ++position;
      previous = -1;
      state = 0;
      continue;
    }
    if (previous < 0 ||
        utf8proc_grapheme_break_stateful(previous, codePoint, &state))
      ++count;
    previous = codePoint;
    position += static_cast<std::size_t>(length);
  }
  return count;
}

} // namespace platform
