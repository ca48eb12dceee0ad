#include "ArgumentParser/Parsing/SplitArguments.h"

#include "ArgumentParser/Parsing/ParserError.h"
#include "Platform/Graphemes.h"

#include <algorithm>
#include <unordered_set>

namespace argparse {

InputOrigin InputOrigin::inserting(SplitIndex index) const {
  InputOrigin copy = *this;
  copy.elements.insert(index);
  return copy;
}

void InputOrigin::formUnion(const InputOrigin &other) {
  elements.insert(other.elements.begin(), other.elements.end());
}

namespace {

// The name a single-dash remainder without "=" stands for: one character is a
// short name, more are a long name written with one dash.
Name singleDashName(std::string_view text) {
  if (platform::countGraphemes(text) == 1)
    return Name::makeShort(std::string(text));
  return Name::makeLongWithSingleDash(std::string(text));
}

// Byte offset of the first "=" character, or npos. "=" is only ever a
// character of its own when no combining mark follows it.
std::size_t findEquals(const std::vector<std::string_view> &characters) {
  std::size_t offset = 0;
  for (std::string_view character : characters) {
    if (character == "=")
      return offset;
    offset += character.size();
  }
  return std::string_view::npos;
}

} // namespace

SplitArguments::SplitArguments(std::vector<std::string> arguments)
    : originalInput(std::move(arguments)) {
  for (std::size_t i = 0; i < originalInput.size(); ++i) {
    const int position = static_cast<int>(i);
    const std::string &argument = originalInput[i];
    std::vector<std::string_view> characters =
        platform::splitGraphemes(argument);
    std::size_t dashes = 0;
    while (dashes < characters.size() && characters[dashes] == "-")
      ++dashes;

    if (dashes == characters.size()) {
      if (dashes == 2) {
        append({position, {}}, Element::terminator());
        for (std::size_t rest = i + 1; rest < originalInput.size(); ++rest)
          append({static_cast<int>(rest), {}},
                 Element::value(originalInput[rest]));
        return;
      }
      if (dashes >= 3)
        throw ParserError::invalidOption(argument);
      append({position, {}}, Element::value(argument));
      continue;
    }

    switch (dashes) {
    case 0:
      append({position, {}}, Element::value(argument));
      break;
    case 1:
      appendOption(position, std::string_view(argument).substr(dashes), true);
      break;
    case 2:
      appendOption(position, argument, false);
      break;
    default:
      throw ParserError::invalidOption(argument);
    }
  }
}

void SplitArguments::appendOption(int position, std::string_view remainder,
                                  bool singleDash) {
  std::vector<std::string_view> characters =
      platform::splitGraphemes(remainder);
  std::size_t equals = findEquals(characters);

  if (!singleDash) {
    std::string_view head = remainder.substr(0, equals);
    std::string_view value = equals == std::string_view::npos
                                 ? std::string_view()
                                 : remainder.substr(equals + 1);
    Name name = Name::makeLong(std::string(head.substr(2)));
    if (value.empty())
      append({position, {}}, Element::option(ParsedArgument(std::move(name))));
    else
      append({position, {}}, Element::option(ParsedArgument(
                                 std::move(name), std::string(value))));
    return;
  }

  if (equals == std::string_view::npos) {
    ParsedArgument parsed(singleDashName(remainder));
    std::vector<std::pair<int, ParsedArgument>> letters = parsed.subarguments();
    append({position, {}}, Element::option(std::move(parsed)));
    if (letters.size() >= 2)
      for (auto &[offset, letter] : letters)
        append({position, offset}, Element::option(std::move(letter)));
    return;
  }
  if (equals == 0)
    throw ParserError::invalidOption(
        singleDashName(remainder).synopsisString());
  std::string_view head = remainder.substr(0, equals);
  std::string value(remainder.substr(equals + 1));
  append({position, {}},
         Element::option(ParsedArgument(singleDashName(head), value)));
}

void SplitArguments::append(SplitIndex index, Element element) {
  elements.emplace_back(index, std::move(element));
}

std::optional<SplitArguments::Entry> SplitArguments::popNext() {
  if (elements.empty())
    return std::nullopt;
  Entry entry = std::move(elements.front());
  elements.pop_front();
  return entry;
}

std::optional<SplitArguments::Entry> SplitArguments::peekNext() const {
  if (elements.empty())
    return std::nullopt;
  return elements.front();
}

namespace {

// Elements are kept in index order, so "the first element later than" is a
// binary search.
template <typename Container>
auto firstAfter(Container &elements, SplitIndex after) {
  return std::upper_bound(elements.begin(), elements.end(), after,
                          [](const SplitIndex &index, const auto &entry) {
                            return index < entry.first;
                          });
}

} // namespace

std::optional<std::pair<SplitIndex, std::string>>
SplitArguments::popNextElementIfValue(SplitIndex after) {
  auto it = firstAfter(elements, after);
  if (it == elements.end() || !it->second.isValue())
    return std::nullopt;
  std::pair<SplitIndex, std::string> result(it->first, it->second.getValue());
  elements.erase(it);
  return result;
}

std::optional<std::pair<SplitIndex, std::string>>
SplitArguments::popNextValue(SplitIndex after) {
  for (auto it = firstAfter(elements, after); it != elements.end(); ++it) {
    if (!it->second.isValue())
      continue;
    std::pair<SplitIndex, std::string> result(it->first, it->second.getValue());
    elements.erase(it);
    return result;
  }
  return std::nullopt;
}

std::optional<std::pair<SplitIndex, std::string>>
SplitArguments::popNextElementAsValue(SplitIndex after) {
  auto it =
      std::find_if(elements.begin(), elements.end(), [&](const Entry &entry) {
        return entry.first.inputIndex > after.inputIndex;
      });
  if (it == elements.end())
    return std::nullopt;
  SplitIndex whole{it->first.inputIndex, {}};
  remove(whole);
  return std::pair<SplitIndex, std::string>(
      whole, originalInput[static_cast<std::size_t>(whole.inputIndex)]);
}

std::optional<std::pair<SplitIndex, std::string>>
SplitArguments::popNextValue() {
  auto it =
      std::find_if(elements.begin(), elements.end(),
                   [](const Entry &entry) { return entry.second.isValue(); });
  if (it == elements.end())
    return std::nullopt;
  std::pair<SplitIndex, std::string> result(it->first, it->second.getValue());
  elements.erase(it);
  return result;
}

void SplitArguments::remove(SplitIndex index) { removeOne(index); }

void SplitArguments::removeOne(SplitIndex index) {
  auto firstOfInput = [&] {
    return std::lower_bound(elements.begin(), elements.end(),
                            SplitIndex{index.inputIndex, {}},
                            [](const Entry &entry, const SplitIndex &key) {
                              return entry.first < key;
                            });
  };
  if (index.isComplete()) {
    auto first = firstOfInput();
    auto last = first;
    while (last != elements.end() && last->first.inputIndex == index.inputIndex)
      ++last;
    elements.erase(first, last);
    return;
  }
  // The letter itself, and the whole form, which can no longer match once one
  // of its letters is used.
  auto letter = std::lower_bound(elements.begin(), elements.end(), index,
                                 [](const Entry &entry, const SplitIndex &key) {
                                   return entry.first < key;
                                 });
  if (letter != elements.end() && letter->first == index)
    elements.erase(letter);
  auto whole = firstOfInput();
  if (whole != elements.end() &&
      whole->first == SplitIndex{index.inputIndex, {}})
    elements.erase(whole);
}

void SplitArguments::removeAll(const InputOrigin &origin) {
  if (origin.isEmpty() || elements.empty())
    return;
  // A few indexes, the common case of one parse round, are found by binary
  // search; a large origin is applied in one pass over the elements.
  if (origin.getElements().size() <= 8) {
    for (const SplitIndex &index : origin.getElements())
      removeOne(index);
    return;
  }
  // A whole index takes its input with every letter; a letter takes itself
  // and the whole form of its input, which can no longer match once one of
  // its letters is used.
  std::unordered_set<int> wholeInputs;
  std::unordered_set<int> inputsWithUsedLetter;
  for (const SplitIndex &index : origin.getElements()) {
    if (index.isComplete())
      wholeInputs.insert(index.inputIndex);
    else
      inputsWithUsedLetter.insert(index.inputIndex);
  }
  const std::set<SplitIndex> &exact = origin.getElements();
  std::erase_if(elements, [&](const Entry &entry) {
    const SplitIndex &index = entry.first;
    if (wholeInputs.count(index.inputIndex))
      return true;
    if (index.isComplete())
      return inputsWithUsedLetter.count(index.inputIndex) > 0;
    return exact.count(index) > 0;
  });
}

std::optional<std::string>
SplitArguments::originalInputAt(SplitIndex index) const {
  if (!index.isComplete() || index.inputIndex < 0 ||
      static_cast<std::size_t>(index.inputIndex) >= originalInput.size())
    return std::nullopt;
  return originalInput[static_cast<std::size_t>(index.inputIndex)];
}

bool SplitArguments::contains(const Name &name) const {
  return std::any_of(elements.begin(), elements.end(), [&](const Entry &e) {
    return e.second.isOption() && e.second.getOption().getName() == name;
  });
}

bool SplitArguments::containsAnyOf(const std::vector<Name> &names) const {
  return std::any_of(names.begin(), names.end(),
                     [&](const Name &name) { return contains(name); });
}

bool SplitArguments::containsNonTerminatorArguments() const {
  if (elements.empty())
    return false;
  return !(elements.size() == 1 && elements.front().second.isTerminator());
}

std::vector<std::pair<InputOrigin, std::string>>
SplitArguments::coalescedExtraElements() const {
  std::unordered_set<int> wholeInputs;
  for (const Entry &entry : elements)
    if (entry.first.isComplete())
      wholeInputs.insert(entry.first.inputIndex);
  std::vector<std::pair<InputOrigin, std::string>> result;
  for (const Entry &entry : elements) {
    const SplitIndex &index = entry.first;
    if (index.isComplete()) {
      result.emplace_back(
          InputOrigin{index},
          originalInput[static_cast<std::size_t>(index.inputIndex)]);
    } else if (!wholeInputs.count(index.inputIndex) &&
               entry.second.isOption()) {
      result.emplace_back(InputOrigin{index},
                          entry.second.getOption().description());
    }
  }
  return result;
}

} // namespace argparse
