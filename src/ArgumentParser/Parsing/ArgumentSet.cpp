#include "ArgumentParser/Parsing/ArgumentSet.h"

#include <algorithm>

namespace argparse {

ArgumentSet::ArgumentSet(ArgumentDefinition definition) {
  arguments.push_back(std::move(definition));
}

ArgumentSet::ArgumentSet(std::vector<ArgumentDefinition> definitions, Kind kind)
    : kind(kind), arguments(std::move(definitions)) {}

ArgumentSet ArgumentSet::ofSets(std::vector<ArgumentSet> sets, Kind kind) {
  ArgumentSet set;
  set.kind = kind;
  set.sets = std::move(sets);
  return set;
}

void ArgumentSet::collect(std::vector<const ArgumentDefinition *> &into) const {
  for (const ArgumentDefinition &definition : arguments)
    into.push_back(&definition);
  for (const ArgumentSet &set : sets)
    set.collect(into);
}

std::vector<const ArgumentDefinition *> ArgumentSet::definitions() const {
  std::vector<const ArgumentDefinition *> all;
  collect(all);
  return all;
}

void ArgumentSet::setInitialValues(ParsedValues &values) const {
  for (const ArgumentDefinition *definition : definitions())
    if (definition->initial)
      definition->initial(InputOrigin{}, values);
}

namespace {

using Definitions = std::vector<const ArgumentDefinition *>;

const ArgumentDefinition *findNamed(const Definitions &all, const Name &name) {
  for (const ArgumentDefinition *definition : all) {
    if (definition->isPositional())
      continue;
    if (std::find(definition->names.begin(), definition->names.end(), name) !=
        definition->names.end())
      return definition;
  }
  return nullptr;
}

// The value step of an option that takes values: finds them by the
// definition's strategy and hands each to the update.
void parseValues(const ArgumentDefinition &definition, SplitIndex origin,
                 const ParsedArgument &parsed, SplitArguments &inputArguments,
                 ParsedValues &result, InputOrigin &usedOrigins) {
  const auto &update =
      std::get<ArgumentDefinition::UnaryUpdate>(definition.update);
  const Name &name = parsed.getName();
  usedOrigins.insert(origin);

  // Hands \p text, taken from the input of \p from, to the update, and notes
  // where a secret's text stands.
  auto take = [&](const InputOrigin &origins, SplitIndex from,
                  const std::string &text) {
    if (definition.isSecret)
      result.addSecretText({from.inputIndex, text.size()});
    update(origins, name, text, result);
  };
  auto takeAttached = [&] {
    if (parsed.getValue())
      take(InputOrigin{origin}, origin, *parsed.getValue());
  };

  auto single = [&](auto popValue) {
    if (parsed.getValue()) {
      takeAttached();
      return;
    }
    auto found = popValue();
    if (!found)
      throw ParserError::missingValueForOption(InputOrigin{origin}, name);
    usedOrigins.insert(found->first);
    take(InputOrigin{origin, found->first}, found->first, found->second);
  };

  switch (definition.parsingStrategy) {
  case ParsingStrategy::nextAsValue:
    single([&] { return inputArguments.popNextElementIfValue(origin); });
    return;
  case ParsingStrategy::scanningForValue:
    single([&] { return inputArguments.popNextValue(origin); });
    return;
  case ParsingStrategy::unconditional:
    single([&] { return inputArguments.popNextElementAsValue(origin); });
    return;
  case ParsingStrategy::upToNextOption: {
    if (definition.initial)
      definition.initial(InputOrigin{origin}, result);
    takeAttached();
    while (true) {
      std::optional<SplitArguments::Entry> next = inputArguments.peekNext();
      if (!next || !next->second.isValue())
        break;
      inputArguments.popNext();
      usedOrigins.insert(next->first);
      take(InputOrigin{origin, next->first}, next->first,
           next->second.getValue());
    }
    return;
  }
  case ParsingStrategy::allRemainingInput: {
    if (definition.initial)
      definition.initial(InputOrigin{origin}, result);
    takeAttached();
    while (auto next = inputArguments.popNextElementAsValue(origin)) {
      usedOrigins.insert(next->first);
      take(InputOrigin{origin, next->first}, next->first, next->second);
    }
    return;
  }
  }
}

} // namespace

LenientParsedValues ArgumentSet::lenientParse(const SplitArguments &all) const {
  const Definitions all_definitions = definitions();
  ParsedValues result(all.getOriginalInput());
  InputOrigin allUsedOrigins;
  setInitialValues(result);

  SplitArguments inputArguments = all;
  while (std::optional<SplitArguments::Entry> next = inputArguments.popNext()) {
    const auto &[origin, element] = *next;
    if (!element.isOption())
      continue;
    const ParsedArgument &parsed = element.getOption();
    const ArgumentDefinition *definition =
        findNamed(all_definitions, parsed.getName());
    if (!definition)
      continue;

    InputOrigin usedOrigins;
    if (definition->isNullary()) {
      if (parsed.getValue())
        throw ParserError::unexpectedValueForOption(origin, parsed.getName(),
                                                    *parsed.getValue());
      std::get<ArgumentDefinition::NullaryUpdate>(definition->update)(
          InputOrigin{origin}, parsed.getName(), result);
      usedOrigins.insert(origin);
    } else {
      parseValues(*definition, origin, parsed, inputArguments, result,
                  usedOrigins);
    }
    inputArguments.removeAll(usedOrigins);
    allUsedOrigins.formUnion(usedOrigins);
  }

  SplitArguments unusedInput = all;
  unusedInput.removeAll(allUsedOrigins);
  try {
    parsePositionalValues(unusedInput, result);
  } catch (const ParserError &error) {
    if (error.getKind() != ParserError::Kind::unexpectedExtraValues)
      throw;
    return LenientParsedValues{std::move(result), error};
  }
  return LenientParsedValues{std::move(result), std::nullopt};
}

void ArgumentSet::parsePositionalValues(const SplitArguments &input,
                                        ParsedValues &values) const {
  std::vector<const SplitArguments::Entry *> entries;
  for (const SplitArguments::Entry &entry : input.getElements())
    if (entry.first.isComplete())
      entries.push_back(&entry);

  std::size_t next = 0;
  auto skipNonValues = [&] {
    while (next < entries.size() && !entries[next]->second.isValue())
      ++next;
  };

  bool stopped = false;
  for (const ArgumentDefinition *definition : definitions()) {
    if (stopped)
      break;
    if (!definition->isPositional())
      continue;
    const auto *update =
        std::get_if<ArgumentDefinition::UnaryUpdate>(&definition->update);
    if (!update)
      continue;
    const bool allowOptionsAsInput =
        definition->parsingStrategy == ParsingStrategy::allRemainingInput;
    do {
      if (!allowOptionsAsInput)
        skipNonValues();
      if (next >= entries.size()) {
        stopped = true;
        break;
      }
      const SplitIndex index = entries[next]->first;
      ++next;
      const std::string &text =
          input.getOriginalInput()[static_cast<std::size_t>(index.inputIndex)];
      (*update)(InputOrigin{index}, std::nullopt, text, values);
    } while (definition->help.has(ArgumentDefinition::Help::isRepeating));
  }

  skipNonValues();
  if (next < entries.size()) {
    std::vector<std::pair<InputOrigin, std::string>> extra;
    for (; next < entries.size(); ++next) {
      const SplitIndex index = entries[next]->first;
      extra.emplace_back(
          InputOrigin{index},
          input.getOriginalInput()[static_cast<std::size_t>(index.inputIndex)]);
    }
    throw ParserError::unexpectedExtraValues(std::move(extra));
  }
}

std::vector<std::string> ArgumentSet::synopsis() const {
  std::vector<std::string> entries;
  for (const ArgumentDefinition *definition : definitions())
    if (std::optional<std::string> text = definition->synopsis())
      entries.push_back(std::move(*text));
  return entries;
}

std::vector<const ArgumentDefinition *>
ArgumentSet::definitionsFor(const InputKey &key) const {
  std::vector<const ArgumentDefinition *> found;
  for (const ArgumentDefinition *definition : definitions())
    if (std::find(definition->help.keys.begin(), definition->help.keys.end(),
                  key) != definition->help.keys.end())
      found.push_back(definition);
  return found;
}

std::vector<const ArgumentDefinition *>
ArgumentSet::definitionsFor(const Name &name) const {
  std::vector<const ArgumentDefinition *> found;
  for (const ArgumentDefinition *definition : definitions())
    if (std::find(definition->names.begin(), definition->names.end(), name) !=
        definition->names.end())
      found.push_back(definition);
  return found;
}

} // namespace argparse
