#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_ARGUMENTDEFINITION_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_ARGUMENTDEFINITION_H

#include "ArgumentParser/ArgumentHelp.h"
#include "ArgumentParser/Parsing/InputKey.h"
#include "ArgumentParser/Parsing/Name.h"
#include "ArgumentParser/Parsing/ParsedValues.h"
#include "ArgumentParser/Parsing/SplitArguments.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace argparse {

/// How an option finds its value on the command line.
enum class ParsingStrategy {
  /// The attached value, or the very next element if it is a value.
  nextAsValue,
  /// The attached value, or the next value further on, skipping options.
  scanningForValue,
  /// The attached value, or the next input whatever it looks like.
  unconditional,
  /// Every value up to the next option.
  upToNextOption,
  /// Every later input, options and "--" included.
  allRemainingInput,
};

/// One parseable argument: an option or flag with names, or a positional.
struct ArgumentDefinition {
  /// How help shows the argument.
  struct Help {
    static constexpr unsigned isOptional = 1;
    static constexpr unsigned isRepeating = 2;

    unsigned options = 0;
    std::optional<ArgumentHelp> help;
    std::optional<std::string> discussion;
    /// The default as shown in help.
    std::optional<std::string> defaultValue;
    std::vector<InputKey> keys;
    /// One of several definitions of one key shown as one help entry.
    bool isComposite = false;

    bool has(unsigned option) const noexcept { return (options & option) != 0; }
    bool isHidden() const noexcept { return help && !help->shouldDisplay; }
  };

  /// Called for a name without a value (flags). May throw.
  using NullaryUpdate = std::function<void(
      const InputOrigin &, const std::optional<Name> &, ParsedValues &)>;
  /// Called with each value found. May throw.
  using UnaryUpdate =
      std::function<void(const InputOrigin &, const std::optional<Name> &,
                         const std::string &, ParsedValues &)>;
  /// Stores the starting value. May throw.
  using Initial = std::function<void(const InputOrigin &, ParsedValues &)>;

  enum class Kind { named, positional };

  Kind kind = Kind::named;
  /// The names of a named definition, as declared.
  std::vector<Name> names;
  Help help;
  ParsingStrategy parsingStrategy = ParsingStrategy::nextAsValue;
  /// Whether the values are secrets (see OptionDeclaration::secret).
  bool isSecret = false;
  std::variant<NullaryUpdate, UnaryUpdate> update;
  Initial initial;

  bool isPositional() const noexcept { return kind == Kind::positional; }
  bool isNullary() const noexcept {
    return std::holds_alternative<NullaryUpdate>(update);
  }
  /// The names in display order (see Name::displaysBefore).
  std::vector<Name> sortedNames() const;
  /// The placeholder of the value: the declared one, else the last display
  /// name without dashes, else the first key in snake case, else "value".
  std::string valueName() const;
  /// The label of the help entry; nothing when hidden.
  std::optional<std::string> synopsisForHelp() const;
  /// The plain form: "<value>" or the long name and its value.
  std::optional<std::string> unadornedSynopsis() const;
  /// The form in the usage line, with "[...]" for optional and " ..." for
  /// repeating arguments; nothing when hidden.
  std::optional<std::string> synopsis() const;
};

} // namespace argparse

#endif
