#include "ArgumentParser/Usage/ErrorMessageGenerator.h"

#include "ArgumentParser/Errors.h"
#include "ArgumentParser/Usage/StringExtensions.h"
#include "Platform/Graphemes.h"

namespace argparse {

std::optional<std::string> ErrorMessageGenerator::makeErrorMessage() const {
  using Kind = ParserError::Kind;
  switch (error.getKind()) {
  case Kind::unknownOption:
    return unknownOptionMessage();
  case Kind::invalidOption:
    return "Invalid option: " + error.text;
  case Kind::nonAlphanumericShortOption:
    return "Invalid option: -" + error.text;
  case Kind::missingValueForOption: {
    const std::string name = error.name ? error.name->synopsisString() : "";
    std::vector<const ArgumentDefinition *> found =
        error.name ? arguments.definitionsFor(*error.name)
                   : std::vector<const ArgumentDefinition *>{};
    if (found.empty())
      return "Missing value for '" + name + "'";
    return "Missing value for '" + name + " <" + found.front()->valueName() +
           ">'";
  }
  case Kind::unexpectedValueForOption:
    return "The option '" +
           (error.name ? error.name->synopsisString() : std::string()) +
           "' does not take any value, but '" + error.text + "' was specified.";
  case Kind::unexpectedExtraValues: {
    const auto &extra = error.extraValues;
    if (extra.empty())
      return std::nullopt;
    if (extra.size() == 1)
      return "Unexpected argument '" + extra.front().second + "'";
    std::string text = std::to_string(extra.size()) + " unexpected arguments: ";
    for (std::size_t i = 0; i < extra.size(); ++i) {
      if (i > 0)
        text += ", ";
      text += "'" + extra[i].second + "'";
    }
    return text;
  }
  case Kind::duplicateExclusiveValues:
    return duplicateExclusiveValuesMessage();
  case Kind::noValue:
    return noValueMessage();
  case Kind::unableToParseValue:
    return unableToParseValueMessage();
  case Kind::userValidationError:
    return describeFailure(error.failure);
  case Kind::noArguments:
    try {
      if (error.failure)
        std::rethrow_exception(error.failure);
    } catch (const ParserError &inner) {
      return ErrorMessageGenerator(arguments, inner).makeErrorMessage();
    } catch (...) {
      return describeFailure(std::current_exception());
    }
    return std::nullopt;
  case Kind::notImplemented:
    return "Internal error. Parsing command-line arguments hit unimplemented "
           "code path.";
  case Kind::invalidState:
    return "Internal error. Invalid state while parsing command-line "
           "arguments.";
  case Kind::missingSubcommand:
    return "Missing required subcommand.";
  case Kind::helpRequested:
  case Kind::versionRequested:
    return std::nullopt;
  }
  return std::nullopt;
}

std::string ErrorMessageGenerator::unknownOptionMessage() const {
  const Name &name = *error.name;
  const std::string given = name.synopsisString();
  if (name.isShort())
    return "Unknown option '" + given + "'";

  std::optional<std::string> best;
  std::size_t bestDistance = 0;
  for (const ArgumentDefinition *definition : arguments.definitions()) {
    for (const Name &candidate : definition->names) {
      if (candidate.isShort())
        continue;
      const std::string text = candidate.synopsisString();
      const std::size_t distance = editDistance(text, given);
      if (distance >= 4)
        continue;
      if (!best || distance < bestDistance) {
        best = text;
        bestDistance = distance;
      }
    }
  }
  if (!best)
    return "Unknown option '" + given + "'";
  return "Unknown option '" + given + "'. Did you mean '" + *best + "'?";
}

std::string ErrorMessageGenerator::duplicateExclusiveValuesMessage() const {
  auto elementString = [&](const InputOrigin &origin) -> std::string {
    if (origin.isEmpty())
      return "position (none)";
    const SplitIndex &index = *origin.getElements().begin();
    const auto inputIndex = static_cast<std::size_t>(index.inputIndex);
    if (inputIndex >= error.originalInput.size())
      return "position " + std::to_string(index.inputIndex);
    const std::string &input = error.originalInput[inputIndex];
    if (index.isComplete())
      return "flag '" + input + "'";
    std::vector<std::string_view> characters = platform::splitGraphemes(input);
    const auto offset = static_cast<std::size_t>(*index.subIndex) + 1;
    std::string letter =
        offset < characters.size() ? std::string(characters[offset]) : "";
    return "flag '" + letter + "' in '" + input + "'";
  };
  return "Value to be set with " + elementString(error.origin) +
         " had already been set with " + elementString(error.previous);
}

std::string ErrorMessageGenerator::noValueMessage() const {
  std::vector<std::string> possibilities;
  for (const ArgumentDefinition *definition :
       arguments.definitionsFor(error.key)) {
    if (definition->help.isHidden())
      continue;
    ArgumentDefinition required = *definition;
    required.help.options &= ~ArgumentDefinition::Help::isOptional;
    if (std::optional<std::string> synopsis = required.synopsis())
      possibilities.push_back(*synopsis);
  }
  if (possibilities.empty())
    return "Missing expected argument";
  if (possibilities.size() == 1)
    return "Missing expected argument '" + possibilities.front() + "'";
  std::string text = "Missing one of: ";
  for (std::size_t i = 0; i < possibilities.size(); ++i) {
    if (i > 0)
      text += ", ";
    text += "'" + possibilities[i] + "'";
  }
  return text;
}

std::string ErrorMessageGenerator::unableToParseValueMessage() const {
  std::vector<const ArgumentDefinition *> found =
      arguments.definitionsFor(error.key);
  std::optional<std::string> valueName;
  if (!found.empty())
    valueName = found.front()->valueName();
  const std::string reason =
      error.failure ? ": " + describeFailure(error.failure) : "";
  const std::string &value = error.text;
  if (error.name && valueName)
    return "The value '" + value + "' is invalid for '" +
           error.name->synopsisString() + " <" + *valueName + ">'" + reason;
  if (valueName)
    return "The value '" + value + "' is invalid for '<" + *valueName + ">'" +
           reason;
  if (error.name)
    return "The value '" + value + "' is invalid for '" +
           error.name->synopsisString() + "'" + reason;
  return "The value '" + value + "' is invalid." + reason;
}

std::optional<std::string>
ArgumentSet::errorDescription(std::exception_ptr failure) const {
  try {
    if (failure)
      std::rethrow_exception(failure);
  } catch (const ParserError &error) {
    return ErrorMessageGenerator(*this, error).makeErrorMessage();
  } catch (const CommandError &error) {
    return ErrorMessageGenerator(*this, error.getParserError())
        .makeErrorMessage();
  } catch (...) {
    return std::nullopt;
  }
  return std::nullopt;
}

} // namespace argparse
