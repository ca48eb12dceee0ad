#include "ArgumentParser/Parsing/ParserError.h"

namespace argparse {

ParserError ParserError::unknownOption(SplitIndex origin, Name name) {
  ParserError error(Kind::unknownOption);
  error.originElement = origin;
  error.name = std::move(name);
  return error;
}

ParserError ParserError::invalidOption(std::string text) {
  ParserError error(Kind::invalidOption);
  error.text = std::move(text);
  return error;
}

ParserError ParserError::nonAlphanumericShortOption(std::string character) {
  ParserError error(Kind::nonAlphanumericShortOption);
  error.text = std::move(character);
  return error;
}

ParserError ParserError::missingValueForOption(InputOrigin origin, Name name) {
  ParserError error(Kind::missingValueForOption);
  error.origin = std::move(origin);
  error.name = std::move(name);
  return error;
}

ParserError ParserError::unexpectedValueForOption(SplitIndex origin, Name name,
                                                  std::string value) {
  ParserError error(Kind::unexpectedValueForOption);
  error.originElement = origin;
  error.name = std::move(name);
  error.text = std::move(value);
  return error;
}

ParserError ParserError::unexpectedExtraValues(
    std::vector<std::pair<InputOrigin, std::string>> extra) {
  ParserError error(Kind::unexpectedExtraValues);
  error.extraValues = std::move(extra);
  return error;
}

ParserError
ParserError::duplicateExclusiveValues(InputOrigin previous,
                                      InputOrigin duplicate,
                                      std::vector<std::string> originalInput) {
  ParserError error(Kind::duplicateExclusiveValues);
  error.previous = std::move(previous);
  error.origin = std::move(duplicate);
  error.originalInput = std::move(originalInput);
  return error;
}

ParserError ParserError::noValue(InputKey key) {
  ParserError error(Kind::noValue);
  error.key = std::move(key);
  return error;
}

ParserError ParserError::unableToParseValue(InputOrigin origin,
                                            std::optional<Name> name,
                                            std::string value, InputKey key,
                                            std::exception_ptr originalError) {
  ParserError error(Kind::unableToParseValue);
  error.origin = std::move(origin);
  error.name = std::move(name);
  error.text = std::move(value);
  error.key = std::move(key);
  error.failure = std::move(originalError);
  return error;
}

ParserError ParserError::userValidationError(std::exception_ptr failure) {
  ParserError error(Kind::userValidationError);
  error.failure = std::move(failure);
  return error;
}

ParserError ParserError::noArguments(std::exception_ptr failure) {
  ParserError error(Kind::noArguments);
  error.failure = std::move(failure);
  return error;
}

const char *ParserError::what() const noexcept {
  return "command line could not be parsed";
}

} // namespace argparse
