#include "ArgumentParser/Parsing/ArgumentDefinition.h"

#include "ArgumentParser/Usage/StringExtensions.h"

namespace argparse {

std::vector<Name> ArgumentDefinition::sortedNames() const {
  return sortedForDisplay(names);
}

std::string ArgumentDefinition::valueName() const {
  if (help.help && help.help->valueName)
    return *help.help->valueName;
  if (!names.empty())
    return sortedNames().back().getText();
  if (!help.keys.empty())
    return convertedToSnakeCase(help.keys.front().rawValue, "-");
  return "value";
}

namespace {

// "<name>", appended piece by piece: GCC 12 misreads the concatenation of a
// literal and a temporary at -O2 as an overlapping copy.
std::string placeholder(const std::string &valueName) {
  std::string text;
  text.reserve(valueName.size() + 2);
  text.push_back('<');
  text.append(valueName);
  text.push_back('>');
  return text;
}

} // namespace

std::optional<std::string> ArgumentDefinition::synopsisForHelp() const {
  if (help.isHidden())
    return std::nullopt;
  if (isPositional())
    return placeholder(valueName());
  std::string label;
  for (const Name &name : sortedNames()) {
    if (!label.empty())
      label += ", ";
    label += name.synopsisString();
  }
  if (!isNullary()) {
    label += ' ';
    label += placeholder(valueName());
  }
  return label;
}

std::optional<std::string> ArgumentDefinition::unadornedSynopsis() const {
  if (isPositional())
    return placeholder(valueName());
  if (names.empty())
    return std::nullopt;
  std::string text = sortedNames().back().synopsisString();
  if (!isNullary()) {
    text += ' ';
    text += placeholder(valueName());
  }
  return text;
}

namespace {

std::optional<std::string> synopsisWith(const ArgumentDefinition &definition,
                                        unsigned options) {
  using Help = ArgumentDefinition::Help;
  if (options & Help::isOptional) {
    std::optional<std::string> inner =
        synopsisWith(definition, options & ~Help::isOptional);
    if (!inner)
      return std::nullopt;
    return "[" + *inner + "]";
  }
  if (options & Help::isRepeating) {
    std::optional<std::string> inner =
        synopsisWith(definition, options & ~Help::isRepeating);
    if (!inner)
      return std::nullopt;
    return *inner + " ...";
  }
  return definition.unadornedSynopsis();
}

} // namespace

std::optional<std::string> ArgumentDefinition::synopsis() const {
  if (help.isHidden())
    return std::nullopt;
  return synopsisWith(*this, help.options);
}

} // namespace argparse
