#ifndef KESTRUNECLI_ARGUMENTPARSER_DECLARATIONBUILDER_H
#define KESTRUNECLI_ARGUMENTPARSER_DECLARATIONBUILDER_H

#include "ArgumentParser/ArgumentHelp.h"
#include "ArgumentParser/CommandType.h"
#include "ArgumentParser/Parsing/ParserError.h"

#include <any>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace argparse {
namespace detail {

enum class Shape { plain, optional, array };

template <typename V> struct FieldShape {
  using Value = V;
  static constexpr Shape shape = Shape::plain;
};
template <typename U> struct FieldShape<std::optional<U>> {
  using Value = U;
  static constexpr Shape shape = Shape::optional;
};
template <typename U> struct FieldShape<std::vector<U>> {
  using Value = U;
  static constexpr Shape shape = Shape::array;
};

template <typename U>
const U &valueAs(const std::any &value, const InputKey &key) {
  const U *stored = std::any_cast<U>(&value);
  if (!stored)
    throw InternalParseError(InternalParseError::Kind::wrongType, key);
  return *stored;
}

} // namespace detail

/// What every row of an argument table has: the field it fills (a member of
/// \p T of type \p V), its label, its help and its default, with the builders
/// that set them. Each builder returns a changed copy of the declaration
/// \p Derived, which makes its ArgumentSet with `makeSet(key)`.
template <typename Derived, typename T, typename V> class DeclarationBuilder {
public:
  using Field = detail::FieldShape<V>;
  using U = typename Field::Value;

  Derived help(ArgumentHelp help) const {
    return with([&](Derived &copy) { copy.helpText = std::move(help); });
  }

  /// The value when the command line gives none. An option or a positional
  /// argument has one only when its field is plain (neither optional nor an
  /// array); a boolean flag with an inversion and no default must be given
  /// in one of its forms.
  Derived defaultValue(U value) const {
    static_assert(Derived::takesDefault,
                  "only a plain option or argument has a default");
    return with([&](Derived &copy) { copy.initialValue = std::move(value); });
  }

  operator ArgumentDescriptor<T>() const {
    Derived declaration = self();
    return ArgumentDescriptor<T>{
        label,
        [declaration](const InputKey &key) { return declaration.makeSet(key); },
        [declaration](T &object, ArgumentDecoder &decoder,
                      const InputKey &key) {
          declaration.decode(object, decoder, key);
        }};
  }

protected:
  DeclarationBuilder(V T::*member, std::string label)
      : member(member), label(std::move(label)) {}

  const Derived &self() const { return static_cast<const Derived &>(*this); }

  /// A copy of the declaration with \p change applied to it.
  template <typename Change> Derived with(Change change) const {
    Derived copy = self();
    change(copy);
    return copy;
  }

  /// Sets the field of \p object from the value parsed under \p key: an
  /// array field takes the values (or none), an optional one the value or
  /// nothing, a plain one must have a value.
  void decode(T &object, ArgumentDecoder &decoder, const InputKey &key) const {
    const ParsedValues::Element *element = decoder.element(key);
    if constexpr (Field::shape == detail::Shape::array) {
      object.*member =
          element ? detail::valueAs<std::vector<U>>(element->value, key) : V{};
    } else if constexpr (Field::shape == detail::Shape::optional) {
      if (element)
        object.*member = detail::valueAs<U>(element->value, key);
      else
        object.*member = std::nullopt;
    } else {
      if (!element)
        throw ParserError::noValue(key);
      object.*member = detail::valueAs<U>(element->value, key);
    }
  }

  V T::*member;
  std::string label;
  ArgumentHelp helpText;
  std::optional<U> initialValue;
};

} // namespace argparse

#endif
