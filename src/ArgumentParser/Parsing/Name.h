#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_NAME_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_NAME_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace argparse {

/// The name of an option as written on the command line.
class Name {
public:
  enum class Kind { Long, Short, LongWithSingleDash };

  /// "--{text}".
  static Name makeLong(std::string text) {
    return Name(Kind::Long, std::move(text));
  }
  /// "-{character}"; \p character is one user-perceived character.
  static Name makeShort(std::string character) {
    return Name(Kind::Short, std::move(character));
  }
  /// "-{text}".
  static Name makeLongWithSingleDash(std::string text) {
    return Name(Kind::LongWithSingleDash, std::move(text));
  }

  Kind getKind() const noexcept { return kind; }
  bool isShort() const noexcept { return kind == Kind::Short; }
  /// The name without its dashes.
  const std::string &getText() const noexcept { return text; }
  /// The name as written: "--name", "-n" or "-name".
  std::string synopsisString() const;

  friend bool operator==(const Name &, const Name &) = default;

  /// Display order: single-dash long names, then short, then long; by text
  /// within a kind.
  static bool displaysBefore(const Name &a, const Name &b);

private:
  Name(Kind kind, std::string text) : kind(kind), text(std::move(text)) {}
  Kind kind;
  std::string text;
};

/// \p names sorted for display (see Name::displaysBefore).
std::vector<Name> sortedForDisplay(std::vector<Name> names);

/// One option element of the command line: a name, possibly with a value
/// attached by "=".
class ParsedArgument {
public:
  explicit ParsedArgument(Name name, std::optional<std::string> value = {})
      : name(std::move(name)), value(std::move(value)) {}

  const Name &getName() const noexcept { return name; }
  const std::optional<std::string> &getValue() const noexcept { return value; }
  /// The synopsis of the name, followed by "=" and the value if there is one.
  std::string description() const;
  /// For a single-dash long name without a value: one short name per
  /// character, with its offset. Empty otherwise.
  std::vector<std::pair<int, ParsedArgument>> subarguments() const;

  friend bool operator==(const ParsedArgument &,
                         const ParsedArgument &) = default;

private:
  Name name;
  std::optional<std::string> value;
};

} // namespace argparse

#endif
