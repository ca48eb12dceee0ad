#ifndef KESTRUNECLI_ARGUMENTPARSER_VALIDATION_H
#define KESTRUNECLI_ARGUMENTPARSER_VALIDATION_H

#include "ArgumentParser/CommandType.h"

#include <string>
#include <vector>

namespace argparse {

// Checks of declarations. The parse itself trusts declarations and runs none
// of these; tests run them so that a fault in a table shows at once instead
// of as an argument that silently never matches.

/// One fault in the declarations of a type.
struct ParsableArgumentsValidationError {
  std::string typeName;
  std::string message;
  friend bool operator==(const ParsableArgumentsValidationError &,
                         const ParsableArgumentsValidationError &) = default;
};

/// A repeating positional takes every remaining value, so no positional may
/// follow it.
struct PositionalArgumentsValidator {
  static std::vector<ParsableArgumentsValidationError>
  validate(const CommandType &type);
};

/// Each key belongs to one declaration: definitions that share a key stand
/// together (the forms of one flag), never apart.
struct ParsableArgumentsCodingKeyValidator {
  static std::vector<ParsableArgumentsValidationError>
  validate(const CommandType &type);
};

/// Runs the checks above, and that no name is declared twice in one command,
/// over \p root and every command below it.
struct ParsableArgumentsValidator {
  static std::vector<ParsableArgumentsValidationError>
  validate(const CommandType &root);
};

} // namespace argparse

#endif
