#include "ArgumentParser/Usage/StringExtensions.h"

#include "Platform/Graphemes.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace argparse {
namespace {

using Characters = std::vector<std::string_view>;

std::string join(const Characters &characters, std::size_t from,
                 std::size_t to) {
  std::string text;
  for (std::size_t i = from; i < to; ++i)
    text.append(characters[i]);
  return text;
}

std::string indentAndJoin(const std::vector<std::string> &lines,
                          std::size_t indent) {
  std::string result;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i > 0)
      result.push_back('\n');
    if (!lines[i].empty())
      result.append(indent, ' ');
    result.append(lines[i]);
  }
  return result;
}

// Adds the lines of characters [from, to), split at every line break.
void addLinesSplitAtBreaks(const Characters &characters, std::size_t from,
                           std::size_t to, std::vector<std::string> &lines) {
  std::size_t start = from;
  for (std::size_t i = from; i < to; ++i) {
    if (characters[i] == "\n") {
      lines.push_back(join(characters, start, i));
      start = i + 1;
    }
  }
  lines.push_back(join(characters, start, to));
}

} // namespace

std::string wrapped(std::string_view text, std::size_t columns,
                    std::size_t wrappingIndent) {
  Characters characters = platform::splitGraphemes(text);
  const std::size_t count = characters.size();
  std::vector<std::string> lines;
  // A width of zero is a width like any other (every word goes on a line
  // of its own); only an indent beyond the columns leaves nothing to wrap.
  if (columns < wrappingIndent) {
    addLinesSplitAtBreaks(characters, 0, count, lines);
    return indentAndJoin(lines, wrappingIndent);
  }
  const std::size_t wrapWidth = columns - wrappingIndent;

  std::size_t position = 0;
  while (true) {
    const std::size_t end = std::min(position + wrapWidth, count);
    std::size_t lastBreak = end;
    std::size_t lastBlank = end;
    for (std::size_t i = position; i < end; ++i) {
      if (characters[i] == "\n")
        lastBreak = i;
      else if (characters[i] == " ")
        lastBlank = i;
    }
    if (lastBreak != end) {
      addLinesSplitAtBreaks(characters, position, lastBreak, lines);
      position = lastBreak + 1;
      continue;
    }
    if (end == count) {
      lines.push_back(join(characters, position, count));
      break;
    }
    if (lastBlank != end) {
      lines.push_back(join(characters, position, lastBlank));
      position = lastBlank + 1;
      continue;
    }
    auto blank = std::find(characters.begin() + static_cast<long>(position),
                           characters.end(), std::string_view(" "));
    if (blank == characters.end()) {
      lines.push_back(join(characters, position, count));
      break;
    }
    std::size_t blankIndex =
        static_cast<std::size_t>(blank - characters.begin());
    lines.push_back(join(characters, position, blankIndex));
    position = blankIndex + 1;
  }
  return indentAndJoin(lines, wrappingIndent);
}

std::string convertedToSnakeCase(std::string_view text,
                                 std::string_view separator) {
  Characters characters = platform::splitGraphemes(text);
  std::string result;
  bool boundary = false;
  for (std::size_t i = 0; i < characters.size(); ++i) {
    std::string_view character = characters[i];
    if (platform::isUppercase(character)) {
      if (boundary && !result.empty())
        result.append(separator);
      boundary = i + 2 < characters.size() &&
                 platform::isUppercase(characters[i + 1]) &&
                 platform::isLowercase(characters[i + 2]);
    } else {
      boundary = character != separator;
    }
    result.append(platform::lowercased(character));
  }
  return result;
}

std::string addingPrefixWithAutodetectedStyle(std::string_view name,
                                              std::string_view prefix) {
  std::string result(prefix);
  if (name.find('_') != std::string_view::npos &&
      name.find('-') == std::string_view::npos)
    result.push_back('_');
  else
    result.push_back('-');
  result.append(name);
  return result;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
  Characters left = platform::splitGraphemes(a);
  Characters right = platform::splitGraphemes(b);
  if (left.empty())
    return right.size();
  if (right.empty())
    return left.size();
  std::vector<std::size_t> previous(right.size() + 1);
  std::vector<std::size_t> current(right.size() + 1);
  std::iota(previous.begin(), previous.end(), std::size_t{0});
  for (std::size_t i = 1; i <= left.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      std::size_t substitution =
          previous[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      current[j] =
          std::min({previous[j] + 1, current[j - 1] + 1, substitution});
    }
    std::swap(previous, current);
  }
  return previous[right.size()];
}

} // namespace argparse
