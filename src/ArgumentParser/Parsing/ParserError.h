#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_PARSERERROR_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_PARSERERROR_H

#include "ArgumentParser/Parsing/InputKey.h"
#include "ArgumentParser/Parsing/Name.h"
#include "ArgumentParser/Parsing/SplitArguments.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace argparse {

/// Why a command line could not be parsed. One kind per failure; the fields
/// that a kind does not use stay empty.
class ParserError : public std::exception {
public:
  enum class Kind {
    unknownOption,
    invalidOption,
    nonAlphanumericShortOption,
    missingValueForOption,
    unexpectedValueForOption,
    unexpectedExtraValues,
    duplicateExclusiveValues,
    noValue,
    unableToParseValue,
    userValidationError,
    noArguments,
    helpRequested,
    versionRequested,
    notImplemented,
    invalidState,
    missingSubcommand,
  };

  static ParserError unknownOption(SplitIndex origin, Name name);
  static ParserError invalidOption(std::string text);
  static ParserError nonAlphanumericShortOption(std::string character);
  static ParserError missingValueForOption(InputOrigin origin, Name name);
  static ParserError unexpectedValueForOption(SplitIndex origin, Name name,
                                              std::string value);
  static ParserError
  unexpectedExtraValues(std::vector<std::pair<InputOrigin, std::string>> extra);
  static ParserError
  duplicateExclusiveValues(InputOrigin previous, InputOrigin duplicate,
                           std::vector<std::string> originalInput);
  static ParserError noValue(InputKey key);
  static ParserError unableToParseValue(InputOrigin origin,
                                        std::optional<Name> name,
                                        std::string value, InputKey key,
                                        std::exception_ptr originalError);
  static ParserError userValidationError(std::exception_ptr failure);
  static ParserError noArguments(std::exception_ptr failure);
  static ParserError helpRequested() {
    return ParserError(Kind::helpRequested);
  }
  static ParserError versionRequested() {
    return ParserError(Kind::versionRequested);
  }
  static ParserError notImplemented() {
    return ParserError(Kind::notImplemented);
  }
  static ParserError invalidState() { return ParserError(Kind::invalidState); }
  static ParserError missingSubcommand() {
    return ParserError(Kind::missingSubcommand);
  }

  Kind getKind() const noexcept { return kind; }
  const char *what() const noexcept override;

  /// unknownOption, unexpectedValueForOption: the option's element.
  SplitIndex originElement;
  /// missingValueForOption, unableToParseValue: where the input came from;
  /// duplicateExclusiveValues: the duplicate.
  InputOrigin origin;
  /// duplicateExclusiveValues: the origin of the value set first.
  InputOrigin previous;
  /// The option concerned, where the kind names one.
  std::optional<Name> name;
  /// invalidOption, nonAlphanumericShortOption: the offending text;
  /// unexpectedValueForOption, unableToParseValue: the value.
  std::string text;
  /// unexpectedExtraValues: each leftover with its origin.
  std::vector<std::pair<InputOrigin, std::string>> extraValues;
  /// duplicateExclusiveValues: the raw command line.
  std::vector<std::string> originalInput;
  /// noValue, unableToParseValue: the declared key.
  InputKey key;
  /// userValidationError, noArguments: the wrapped failure;
  /// unableToParseValue: the transform's failure, if any.
  std::exception_ptr failure;

private:
  explicit ParserError(Kind kind) : kind(kind) {}
  Kind kind;
};

/// The failure that built-in help names leave when they are found unclaimed.
struct HelpRequested : std::exception {
  const char *what() const noexcept override { return "help requested"; }
};

} // namespace argparse

#endif
