#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_SPLITARGUMENTS_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_SPLITARGUMENTS_H

#include "ArgumentParser/Parsing/Name.h"

#include <compare>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace argparse {

/// Where an element of the split command line came from: the position of its
/// input string, and for a letter of a group such as "-abc" its offset.
struct SplitIndex {
  int inputIndex = 0;
  /// Absent for the whole input ("complete"); the letter's offset otherwise.
  std::optional<int> subIndex;

  bool isComplete() const noexcept { return !subIndex; }
  /// Ordered by input, then the whole input before its letters, then by
  /// offset.
  friend auto operator<=>(const SplitIndex &, const SplitIndex &) = default;
};

/// The set of split indexes a value came from.
class InputOrigin {
public:
  InputOrigin() = default;
  InputOrigin(std::initializer_list<SplitIndex> indexes) : elements(indexes) {}

  /// A copy with \p index added.
  InputOrigin inserting(SplitIndex index) const;
  void insert(SplitIndex index) { elements.insert(index); }
  void formUnion(const InputOrigin &other);
  bool isEmpty() const noexcept { return elements.empty(); }
  /// The elements in index order.
  const std::set<SplitIndex> &getElements() const noexcept { return elements; }

  friend bool operator==(const InputOrigin &, const InputOrigin &) = default;

private:
  std::set<SplitIndex> elements;
};

/// The command line classified once, without knowledge of the declared
/// options: options, values and the "--" terminator, each with its origin.
class SplitArguments {
public:
  struct Terminator {
    friend bool operator==(Terminator, Terminator) { return true; }
  };

  /// One classified element: an option, a value or the terminator.
  class Element {
  public:
    static Element option(ParsedArgument argument) {
      return Element(std::move(argument));
    }
    static Element value(std::string text) { return Element(std::move(text)); }
    static Element terminator() { return Element(Terminator{}); }

    bool isOption() const noexcept {
      return std::holds_alternative<ParsedArgument>(content);
    }
    bool isValue() const noexcept {
      return std::holds_alternative<std::string>(content);
    }
    bool isTerminator() const noexcept {
      return std::holds_alternative<Terminator>(content);
    }
    /// The option; only for isOption().
    const ParsedArgument &getOption() const {
      return std::get<ParsedArgument>(content);
    }
    /// The value's text; only for isValue().
    const std::string &getValue() const {
      return std::get<std::string>(content);
    }

    friend bool operator==(const Element &, const Element &) = default;

  private:
    explicit Element(std::variant<ParsedArgument, std::string, Terminator> c)
        : content(std::move(c)) {}
    std::variant<ParsedArgument, std::string, Terminator> content;
  };

  using Entry = std::pair<SplitIndex, Element>;

  /// Classifies \p arguments (the command line without the program name).
  /// Throws ParserError::invalidOption for a string of three or more leading
  /// dashes, or an empty name before "=" in a single-dash option.
  explicit SplitArguments(std::vector<std::string> arguments);

  const std::deque<Entry> &getElements() const noexcept { return elements; }
  const std::vector<std::string> &getOriginalInput() const noexcept {
    return originalInput;
  }
  bool isEmpty() const noexcept { return elements.empty(); }

  /// Removes and returns the first element.
  std::optional<Entry> popNext();
  /// The first element, not removed.
  std::optional<Entry> peekNext() const;
  /// The first element after \p origin if it is a value (removed); nothing
  /// when an option or terminator comes first or nothing is left.
  std::optional<std::pair<SplitIndex, std::string>>
  popNextElementIfValue(SplitIndex after);
  /// The first value after \p origin, skipping options and terminators.
  std::optional<std::pair<SplitIndex, std::string>>
  popNextValue(SplitIndex after);
  /// The raw input string of the next input after \p origin's input, whatever
  /// it looks like; every element of that input is removed.
  std::optional<std::pair<SplitIndex, std::string>>
  popNextElementAsValue(SplitIndex after);
  /// The first value from the front, skipping options and terminators.
  std::optional<std::pair<SplitIndex, std::string>> popNextValue();

  /// Removes the element at \p index: a whole input with all its letters, or
  /// one letter together with the whole form of its input.
  void remove(SplitIndex index);
  /// remove() for every index of \p origin.
  void removeAll(const InputOrigin &origin);

  /// The raw input string of a whole-input index; nothing for a letter.
  std::optional<std::string> originalInputAt(SplitIndex index) const;

  /// Whether an option element has \p name (with or without a value).
  bool contains(const Name &name) const;
  bool containsAnyOf(const std::vector<Name> &names) const;
  /// False when nothing is left or only one terminator.
  bool containsNonTerminatorArguments() const;
  /// The leftovers for reporting: whole inputs as their raw strings, and
  /// letters whose whole input is gone as their option text.
  std::vector<std::pair<InputOrigin, std::string>>
  coalescedExtraElements() const;

private:
  void append(SplitIndex index, Element element);
  void removeOne(SplitIndex index);
  void appendOption(int position, std::string_view remainder, bool singleDash);

  std::deque<Entry> elements;
  std::vector<std::string> originalInput;
};

} // namespace argparse

#endif
