#ifndef KESTRUNECLI_ARGUMENTPARSER_USAGE_ERRORMESSAGEGENERATOR_H
#define KESTRUNECLI_ARGUMENTPARSER_USAGE_ERRORMESSAGEGENERATOR_H

#include "ArgumentParser/Parsing/ArgumentSet.h"
#include "ArgumentParser/Parsing/ParserError.h"

#include <optional>
#include <string>

namespace argparse {

/// Words a parse failure for the definitions of the command concerned.
class ErrorMessageGenerator {
public:
  ErrorMessageGenerator(const ArgumentSet &arguments, const ParserError &error)
      : arguments(arguments), error(error) {}

  /// The message; nothing for help and version requests and for an empty
  /// list of extra values.
  std::optional<std::string> makeErrorMessage() const;

private:
  std::string unknownOptionMessage() const;
  std::string duplicateExclusiveValuesMessage() const;
  std::string noValueMessage() const;
  std::string unableToParseValueMessage() const;

  const ArgumentSet &arguments;
  const ParserError &error;
};

} // namespace argparse

#endif
