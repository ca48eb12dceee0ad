#include "ArgumentParser/Validation.h"

#include <algorithm>

namespace argparse {

std::vector<ParsableArgumentsValidationError>
PositionalArgumentsValidator::validate(const CommandType &type) {
  std::vector<ParsableArgumentsValidationError> faults;
  ArgumentSet set = type.makeArgumentSet();
  const ArgumentDefinition *repeating = nullptr;
  for (const ArgumentDefinition *definition : set.definitions()) {
    if (!definition->isPositional())
      continue;
    if (repeating) {
      faults.push_back(
          {type.getTypeName(), "positional '" + definition->valueName() +
                                   "' follows the repeating positional '" +
                                   repeating->valueName() +
                                   "' and can never get a value"});
      continue;
    }
    if (definition->help.has(ArgumentDefinition::Help::isRepeating))
      repeating = definition;
  }
  return faults;
}

std::vector<ParsableArgumentsValidationError>
ParsableArgumentsCodingKeyValidator::validate(const CommandType &type) {
  std::vector<ParsableArgumentsValidationError> faults;
  ArgumentSet set = type.makeArgumentSet();
  std::vector<const ArgumentDefinition *> definitions = set.definitions();
  std::vector<std::string> closed;
  for (std::size_t i = 0; i < definitions.size(); ++i) {
    for (const InputKey &key : definitions[i]->help.keys) {
      const bool continues =
          i > 0 && definitions[i - 1]->help.keys == definitions[i]->help.keys;
      if (continues)
        continue;
      if (std::find(closed.begin(), closed.end(), key.rawValue) != closed.end())
        faults.push_back({type.getTypeName(),
                          "key '" + key.rawValue + "' is declared twice"});
      else
        closed.push_back(key.rawValue);
    }
  }
  return faults;
}

namespace {

void validateTree(const CommandType &type,
                  std::vector<const CommandType *> &seen,
                  std::vector<ParsableArgumentsValidationError> &faults) {
  if (std::find(seen.begin(), seen.end(), &type) != seen.end())
    return;
  seen.push_back(&type);
  for (auto &fault : PositionalArgumentsValidator::validate(type))
    faults.push_back(std::move(fault));
  for (auto &fault : ParsableArgumentsCodingKeyValidator::validate(type))
    faults.push_back(std::move(fault));

  ArgumentSet set = type.makeArgumentSet();
  std::vector<Name> names;
  for (const ArgumentDefinition *definition : set.definitions()) {
    for (const Name &name : definition->names) {
      if (std::find(names.begin(), names.end(), name) != names.end())
        faults.push_back({type.getTypeName(), "name '" + name.synopsisString() +
                                                  "' is declared twice"});
      else
        names.push_back(name);
    }
  }
  for (const CommandType *subcommand : type.getConfiguration().subcommands)
    validateTree(*subcommand, seen, faults);
}

} // namespace

std::vector<ParsableArgumentsValidationError>
ParsableArgumentsValidator::validate(const CommandType &root) {
  std::vector<ParsableArgumentsValidationError> faults;
  std::vector<const CommandType *> seen;
  validateTree(root, seen, faults);
  return faults;
}

} // namespace argparse
