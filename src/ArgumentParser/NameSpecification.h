#ifndef KESTRUNECLI_ARGUMENTPARSER_NAMESPECIFICATION_H
#define KESTRUNECLI_ARGUMENTPARSER_NAMESPECIFICATION_H

#include "ArgumentParser/Parsing/InputKey.h"
#include "ArgumentParser/Parsing/Name.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace argparse {

/// One way of naming an argument. `long` and `short` are C++ keywords, so the
/// plain forms are spelled longName and shortName.
class NameElement {
public:
  enum class Kind { Long, CustomLong, Short, CustomShort };

  /// "--" and the key in snake case with "-".
  static NameElement longName() { return NameElement(Kind::Long); }
  /// "--{text}", or "-{text}" with \p withSingleDash.
  static NameElement customLong(std::string text, bool withSingleDash = false);
  /// "-" and the key's first character.
  static NameElement shortName() { return NameElement(Kind::Short); }
  /// "-{character}".
  static NameElement customShort(std::string character);

  /// The name this element gives for \p key. A short name of an empty key is
  /// a declaration fault and stops the program.
  Name makeName(const InputKey &key) const;

  friend bool operator==(const NameElement &, const NameElement &) = default;

private:
  explicit NameElement(Kind kind) : kind(kind) {}
  Kind kind;
  std::string text;
  bool withSingleDash = false;
};

/// The names of an argument, in declaration order.
class NameSpecification {
public:
  /// The long name alone: the default of options and flags.
  NameSpecification() : elements{NameElement::longName()} {}
  NameSpecification(std::initializer_list<NameElement> list);
  NameSpecification(NameElement element) : elements{element} {}

  /// Both the short and the long name.
  static NameSpecification shortAndLong() {
    return {NameElement::shortName(), NameElement::longName()};
  }
  /// No name at all.
  static NameSpecification none() {
    NameSpecification empty;
    empty.elements.clear();
    return empty;
  }

  const std::vector<NameElement> &getElements() const noexcept {
    return elements;
  }
  /// The names for \p key, one per element.
  std::vector<Name> makeNames(const InputKey &key) const;

private:
  std::vector<NameElement> elements;
};

/// Shorthands for declarations: `.name({longName, customShort("n")})`.
inline const NameElement longName = NameElement::longName();
inline const NameElement shortName = NameElement::shortName();
inline NameElement customLong(std::string text, bool withSingleDash = false) {
  return NameElement::customLong(std::move(text), withSingleDash);
}
inline NameElement customShort(std::string character) {
  return NameElement::customShort(std::move(character));
}
inline const NameSpecification shortAndLong = NameSpecification::shortAndLong();

} // namespace argparse

#endif
