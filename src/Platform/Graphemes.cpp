#include "Platform/Graphemes.h"

#include <utf8proc.h>

namespace platform {
namespace {

// One decoding step: the code point at \p position and its length in bytes.
// An invalid byte decodes as -1 with length 1.
struct Step {
  utf8proc_int32_t codePoint;
  std::size_t length;
};

Step decodeAt(std::string_view text, std::size_t position) {
  utf8proc_int32_t codePoint = -1;
  auto remaining = static_cast<utf8proc_ssize_t>(text.size() - position);
  utf8proc_ssize_t length = utf8proc_iterate(
      reinterpret_cast<const utf8proc_uint8_t *>(text.data() + position),
      remaining, &codePoint);
  if (length <= 0)
    return {-1, 1};
  return {codePoint, static_cast<std::size_t>(length)};
}

// Calls \p onCharacter with the offset at which each user-perceived
// character of \p text begins, in order. An invalid byte stands alone and
// breaks any cluster around it.
template <typename OnCharacter>
void forEachCharacterStart(std::string_view text, OnCharacter onCharacter) {
  std::size_t position = 0;
  utf8proc_int32_t previous = -1;
  utf8proc_int32_t state = 0;
  while (position < text.size()) {
    Step step = decodeAt(text, position);
    if (previous < 0 || step.codePoint < 0) {
      state = 0;
      onCharacter(position);
    } else if (utf8proc_grapheme_break_stateful(previous, step.codePoint,
                                                &state)) {
      onCharacter(position);
    }
    previous = step.codePoint;
    position += step.length;
  }
}

} // namespace

std::vector<std::string_view> splitGraphemes(std::string_view text) {
  std::vector<std::string_view> characters;
  std::size_t start = 0;
  forEachCharacterStart(text, [&](std::size_t position) {
    if (position > start)
      characters.push_back(text.substr(start, position - start));
    start = position;
  });
  if (text.size() > start)
    characters.push_back(text.substr(start));
  return characters;
}

std::size_t countGraphemes(std::string_view text) {
  std::size_t count = 0;
  forEachCharacterStart(text, [&](std::size_t) { ++count; });
  return count;
}

bool isUppercase(std::string_view character) {
  if (character.empty())
    return false;
  Step step = decodeAt(character, 0);
  return step.codePoint >= 0 && utf8proc_isupper(step.codePoint);
}

bool isLowercase(std::string_view character) {
  if (character.empty())
    return false;
  Step step = decodeAt(character, 0);
  return step.codePoint >= 0 && utf8proc_islower(step.codePoint);
}

std::string lowercased(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  std::size_t position = 0;
  while (position < text.size()) {
    Step step = decodeAt(text, position);
    if (step.codePoint < 0) {
      result.push_back(text[position]);
    } else {
      utf8proc_uint8_t buffer[4];
      utf8proc_ssize_t written =
          utf8proc_encode_char(utf8proc_tolower(step.codePoint), buffer);
      result.append(reinterpret_cast<const char *>(buffer),
                    static_cast<std::size_t>(written));
    }
    position += step.length;
  }
  return result;
}

} // namespace platform
