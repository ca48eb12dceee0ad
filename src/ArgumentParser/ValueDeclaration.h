#ifndef KESTRUNECLI_ARGUMENTPARSER_VALUEDECLARATION_H
#define KESTRUNECLI_ARGUMENTPARSER_VALUEDECLARATION_H

// The rows of an argument table that take values: named options and
// positional arguments.

#include "ArgumentParser/DeclarationBuilder.h"
#include "ArgumentParser/ExpressibleByArgument.h"
#include "ArgumentParser/NameSpecification.h"
#include "ArgumentParser/Parsing/ArgumentDefinition.h"

#include <any>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace argparse {

/// How a single-valued option finds its value.
enum class SingleValueParsingStrategy { next, scanningForValue, unconditional };
/// How an array option finds its values.
enum class ArrayParsingStrategy {
  singleValue,
  unconditionalSingleValue,
  upToNextOption,
  remaining
};
/// How a repeating positional takes its values.
enum class ArgumentArrayParsingStrategy { remaining, unconditionalRemaining };

ParsingStrategy toParsingStrategy(SingleValueParsingStrategy strategy);
ParsingStrategy toParsingStrategy(ArrayParsingStrategy strategy);
ParsingStrategy toParsingStrategy(ArgumentArrayParsingStrategy strategy);

namespace detail {

// The unary update of a value definition: reads the text with the parser or
// the transform, then stores (or appends) the value.
template <typename U>
ArgumentDefinition::UnaryUpdate
makeValueUpdate(InputKey key, std::function<U(const std::string &)> transform,
                bool appending) {
  return [key, transform,
          appending](const InputOrigin &origin, const std::optional<Name> &name,
                     const std::string &text, ParsedValues &values) {
    std::optional<U> value;
    if (transform) {
      try {
        value = transform(text);
      } catch (...) {
        throw ParserError::unableToParseValue(origin, name, text, key,
                                              std::current_exception());
      }
    } else {
      value = ExpressibleByArgument<U>::fromArgument(text);
      if (!value)
        throw ParserError::unableToParseValue(origin, name, text, key, nullptr);
    }
    if (!appending) {
      values.set(key, std::move(*value), origin);
      return;
    }
    values.update(key, origin, std::vector<U>{}, [&](std::any &stored) {
      std::any_cast<std::vector<U> &>(stored).push_back(std::move(*value));
    });
  };
}

} // namespace detail

/// What options and positional arguments share beyond every row's fields:
/// how the value is found and read, and whether it is a secret.
template <typename Derived, typename T, typename V>
class ValueDeclaration : public DeclarationBuilder<Derived, T, V> {
  using Builder = DeclarationBuilder<Derived, T, V>;

public:
  using typename Builder::Field;
  using typename Builder::U;

  /// Reads the text with \p transform; what it throws is reported as an
  /// invalid value with the failure's description.
  Derived transform(std::function<U(const std::string &)> transform) const {
    return this->with(
        [&](Derived &copy) { copy.transformation = std::move(transform); });
  }

protected:
  using Builder::Builder;

  /// Only a plain field has a default.
  static constexpr bool takesDefault = Field::shape == detail::Shape::plain;

  /// The definition of the value under \p key, without its kind and names.
  ArgumentDefinition makeDefinition(const InputKey &key) const {
    ArgumentDefinition definition;
    definition.help.help = this->helpText;
    definition.help.keys = {key};
    definition.parsingStrategy = strategy;
    definition.isSecret = isSecret;
    const bool appending = Field::shape == detail::Shape::array;
    definition.update =
        detail::makeValueUpdate<U>(key, transformation, appending);
    if constexpr (Field::shape == detail::Shape::array) {
      definition.help.options = ArgumentDefinition::Help::isOptional |
                                ArgumentDefinition::Help::isRepeating;
      definition.initial = [key](const InputOrigin &origin,
                                 ParsedValues &values) {
        values.set(key, std::vector<U>{}, origin);
      };
    } else if constexpr (Field::shape == detail::Shape::optional) {
      definition.help.options = ArgumentDefinition::Help::isOptional;
    } else if (this->initialValue) {
      definition.help.options = ArgumentDefinition::Help::isOptional;
      definition.help.defaultValue =
          ExpressibleByArgument<U>::defaultValueDescription(
              *this->initialValue);
      definition.initial =
          [key, value = *this->initialValue](const InputOrigin &origin,
                                             ParsedValues &values) {
            values.set(key, value, origin);
          };
    }
    return definition;
  }

  ParsingStrategy strategy = ParsingStrategy::nextAsValue;
  std::function<U(const std::string &)> transformation;
  bool isSecret = false;
};

/// A named option with a value. See the table in Declarations.h.
template <typename T, typename V>
class OptionDeclaration
    : public ValueDeclaration<OptionDeclaration<T, V>, T, V> {
  using Value = ValueDeclaration<OptionDeclaration, T, V>;
  friend DeclarationBuilder<OptionDeclaration, T, V>;

public:
  using typename Value::Field;
  using typename Value::U;

  OptionDeclaration(V T::*member, std::string label)
      : Value(member, std::move(label)) {}

  /// The names (default: the long name).
  OptionDeclaration name(NameSpecification names) const {
    return this->with(
        [&](OptionDeclaration &copy) { copy.names = std::move(names); });
  }
  OptionDeclaration parsing(SingleValueParsingStrategy strategy) const {
    static_assert(Field::shape != detail::Shape::array,
                  "an array option takes an ArrayParsingStrategy");
    return this->with([&](OptionDeclaration &copy) {
      copy.strategy = toParsingStrategy(strategy);
    });
  }
  OptionDeclaration parsing(ArrayParsingStrategy strategy) const {
    static_assert(Field::shape == detail::Shape::array,
                  "only an array option takes an ArrayParsingStrategy");
    return this->with([&](OptionDeclaration &copy) {
      copy.strategy = toParsingStrategy(strategy);
    });
  }
  /// Marks the values as secrets (passwords, keys): once the command line
  /// is parsed, and before the command runs, main(argc, argv) overwrites
  /// their text in the process's arguments, where every local user could
  /// read it (ps, /proc/PID/cmdline). Help and parsing are unchanged.
  OptionDeclaration secret() const {
    return this->with([](OptionDeclaration &copy) { copy.isSecret = true; });
  }

private:
  ArgumentSet makeSet(const InputKey &key) const {
    ArgumentDefinition definition = this->makeDefinition(key);
    definition.kind = ArgumentDefinition::Kind::named;
    definition.names = names.makeNames(key);
    return ArgumentSet(std::move(definition));
  }

  NameSpecification names;
};

/// A positional argument. See the table in Declarations.h.
template <typename T, typename V>
class ArgumentDeclaration
    : public ValueDeclaration<ArgumentDeclaration<T, V>, T, V> {
  using Value = ValueDeclaration<ArgumentDeclaration, T, V>;
  friend DeclarationBuilder<ArgumentDeclaration, T, V>;

public:
  using typename Value::Field;

  ArgumentDeclaration(V T::*member, std::string label)
      : Value(member, std::move(label)) {}

  ArgumentDeclaration parsing(ArgumentArrayParsingStrategy strategy) const {
    static_assert(Field::shape == detail::Shape::array,
                  "only a repeating argument takes a parsing strategy");
    return this->with([&](ArgumentDeclaration &copy) {
      copy.strategy = toParsingStrategy(strategy);
    });
  }

private:
  ArgumentSet makeSet(const InputKey &key) const {
    ArgumentDefinition definition = this->makeDefinition(key);
    definition.kind = ArgumentDefinition::Kind::positional;
    return ArgumentSet(std::move(definition));
  }
};

} // namespace argparse

#endif
