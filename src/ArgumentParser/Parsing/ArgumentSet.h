#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_ARGUMENTSET_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_ARGUMENTSET_H

#include "ArgumentParser/Parsing/ArgumentDefinition.h"
#include "ArgumentParser/Parsing/ParsedValues.h"
#include "ArgumentParser/Parsing/ParserError.h"
#include "ArgumentParser/Parsing/SplitArguments.h"

#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace argparse {

/// What a lenient parse found: the values, and for leftover positional
/// values the error that a command without subcommands reports.
struct LenientParsedValues {
  ParsedValues values;
  std::optional<ParserError> partialError;

  bool isPartial() const noexcept { return partialError.has_value(); }
};

/// The definitions of a command or argument group, possibly nested. Iterated
/// depth first, in declaration order.
class ArgumentSet {
public:
  enum class Kind { additive, exclusive, alternatives };

  ArgumentSet() = default;
  explicit ArgumentSet(ArgumentDefinition definition);
  explicit ArgumentSet(std::vector<ArgumentDefinition> definitions,
                       Kind kind = Kind::additive);
  static ArgumentSet ofSets(std::vector<ArgumentSet> sets,
                            Kind kind = Kind::additive);

  Kind getKind() const noexcept { return kind; }
  /// Every definition, depth first.
  std::vector<const ArgumentDefinition *> definitions() const;
  bool isEmpty() const { return definitions().empty(); }

  /// Runs the definitions against \p all. Unknown options stay unreported;
  /// positional values that no definition takes make the result partial.
  /// Throws ParserError for every other failure, and whatever an update or
  /// initial callback throws.
  LenientParsedValues lenientParse(const SplitArguments &all) const;
  /// Calls every definition's initial callback with an empty origin.
  void setInitialValues(ParsedValues &values) const;
  /// Gives the whole-input values of \p input to the positional definitions
  /// in declaration order. Throws unexpectedExtraValues for leftovers.
  void parsePositionalValues(const SplitArguments &input,
                             ParsedValues &values) const;

  /// The usage-line form of every shown definition.
  std::vector<std::string> synopsis() const;
  /// The definitions of \p key, or of \p name.
  std::vector<const ArgumentDefinition *>
  definitionsFor(const InputKey &key) const;
  std::vector<const ArgumentDefinition *>
  definitionsFor(const Name &name) const;

  /// The message of \p error (a ParserError, or a CommandError's parser
  /// error) worded for this set's definitions; nothing for other failures.
  std::optional<std::string> errorDescription(std::exception_ptr error) const;

private:
  void collect(std::vector<const ArgumentDefinition *> &into) const;

  Kind kind = Kind::additive;
  std::vector<ArgumentDefinition> arguments;
  std::vector<ArgumentSet> sets;
};

} // namespace argparse

#endif
