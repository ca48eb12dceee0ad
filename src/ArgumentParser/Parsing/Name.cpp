#include "ArgumentParser/Parsing/Name.h"

#include "Platform/Graphemes.h"

#include <algorithm>

namespace argparse {

std::string Name::synopsisString() const {
  switch (kind) {
  case Kind::Long:
    return "--" + text;
  case Kind::Short:
  case Kind::LongWithSingleDash:
    return "-" + text;
  }
  return text;
}

bool Name::displaysBefore(const Name &a, const Name &b) {
  auto rank = [](Kind kind) {
    switch (kind) {
    case Kind::LongWithSingleDash:
      return 0;
    case Kind::Short:
      return 1;
    case Kind::Long:
      return 2;
    }
    return 3;
  };
  if (rank(a.kind) != rank(b.kind))
    return rank(a.kind) < rank(b.kind);
  return a.text < b.text;
}

std::vector<Name> sortedForDisplay(std::vector<Name> names) {
  std::stable_sort(names.begin(), names.end(), Name::displaysBefore);
  return names;
}

std::string ParsedArgument::description() const {
  std::string text = name.synopsisString();
  if (value)
    text += "=" + *value;
  return text;
}

std::vector<std::pair<int, ParsedArgument>>
ParsedArgument::subarguments() const {
  std::vector<std::pair<int, ParsedArgument>> result;
  if (value || name.getKind() != Name::Kind::LongWithSingleDash)
    return result;
  int offset = 0;
  for (std::string_view character : platform::splitGraphemes(name.getText()))
    result.emplace_back(
        offset++, ParsedArgument(Name::makeShort(std::string(character))));
  return result;
}

} // namespace argparse
