#ifndef KESTRUNECLI_ARGUMENTPARSER_DECLARATIONS_H
#define KESTRUNECLI_ARGUMENTPARSER_DECLARATIONS_H

// The rows of an argument table. Each function takes the field as a member
// pointer and its label, and returns a declaration that the table converts
// to a descriptor:
//
//   static argparse::Arguments<Upload> arguments() {
//     using namespace argparse;
//     return {
//         option(&Upload::installerPath, "installerPath")
//             .name(shortAndLong)
//             .help("Path to an installer"),
//         flag(&Upload::verbose, "verbose"),
//     };
//   }
//
// The field's type decides the shape: `T` is required unless a default is
// given, `std::optional<T>` is optional, `std::vector<T>` repeats; a `bool`
// flag is a switch, an `int` flag counts, an enumeration flag picks a case.

#include "ArgumentParser/ArgumentHelp.h"
#include "ArgumentParser/CommandType.h"
#include "ArgumentParser/ExpressibleByArgument.h"
#include "ArgumentParser/NameSpecification.h"
#include "ArgumentParser/Parsing/ArgumentDefinition.h"
#include "ArgumentParser/Parsing/ParserError.h"

#include <any>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
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
/// The negative form of a boolean flag.
enum class FlagInversion { prefixedNo, prefixedEnableDisable };
/// What a repeated flag of one key does.
enum class FlagExclusivity { exclusive, chooseFirst, chooseLast };

ParsingStrategy toParsingStrategy(SingleValueParsingStrategy strategy);
ParsingStrategy toParsingStrategy(ArrayParsingStrategy strategy);
ParsingStrategy toParsingStrategy(ArgumentArrayParsingStrategy strategy);

/// The shared step of boolean and enumerated flags: stores \p value by
/// \p exclusivity; \p hasUpdated tells whether a flag of this key was seen.
void updateFlag(const InputKey &key, const std::any &value,
                const std::function<bool(const std::any &)> &equalsValue,
                const InputOrigin &origin, ParsedValues &values,
                bool &hasUpdated, FlagExclusivity exclusivity);

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

// Options and positionals share everything but names and strategies.
template <typename T, typename V> struct ValueDeclaration {
  using Field = FieldShape<V>;
  using U = typename Field::Value;

  ValueDeclaration(V T::*member, std::string label)
      : member(member), label(std::move(label)) {}

  V T::*member;
  std::string label;
  ArgumentHelp help;
  ParsingStrategy strategy = ParsingStrategy::nextAsValue;
  std::optional<U> defaultValue;
  std::function<U(const std::string &)> transform;
  bool secret = false;

  ArgumentDefinition makeDefinition(const InputKey &key) const {
    ArgumentDefinition definition;
    definition.help.help = help;
    definition.help.keys = {key};
    definition.parsingStrategy = strategy;
    definition.isSecret = secret;
    const bool appending = Field::shape == Shape::array;
    definition.update = makeValueUpdate<U>(key, transform, appending);
    if constexpr (Field::shape == Shape::array) {
      definition.help.options = ArgumentDefinition::Help::isOptional |
                                ArgumentDefinition::Help::isRepeating;
      definition.initial = [key](const InputOrigin &origin,
                                 ParsedValues &values) {
        values.set(key, std::vector<U>{}, origin);
      };
    } else if constexpr (Field::shape == Shape::optional) {
      definition.help.options = ArgumentDefinition::Help::isOptional;
    } else if (defaultValue) {
      definition.help.options = ArgumentDefinition::Help::isOptional;
      definition.help.defaultValue =
          ExpressibleByArgument<U>::defaultValueDescription(*defaultValue);
      definition.initial = [key,
                            value = *defaultValue](const InputOrigin &origin,
                                                   ParsedValues &values) {
        values.set(key, value, origin);
      };
    }
    return definition;
  }

  void decode(T &object, ArgumentDecoder &decoder, const InputKey &key) const {
    const ParsedValues::Element *element = decoder.element(key);
    if constexpr (Field::shape == Shape::array) {
      object.*member =
          element ? valueAs<std::vector<U>>(element->value, key) : V{};
    } else if constexpr (Field::shape == Shape::optional) {
      if (element)
        object.*member = valueAs<U>(element->value, key);
      else
        object.*member = std::nullopt;
    } else {
      if (!element)
        throw ParserError::noValue(key);
      object.*member = valueAs<U>(element->value, key);
    }
  }
};

} // namespace detail

/// A named option with a value. See the table at the top of this header.
template <typename T, typename V> class OptionDeclaration {
public:
  using U = typename detail::FieldShape<V>::Value;

  OptionDeclaration(V T::*member, std::string label)
      : value(member, std::move(label)) {}

  /// The names (default: the long name).
  OptionDeclaration name(NameSpecification names) const {
    OptionDeclaration copy = *this;
    copy.names = std::move(names);
    return copy;
  }
  OptionDeclaration help(ArgumentHelp help) const {
    OptionDeclaration copy = *this;
    copy.value.help = std::move(help);
    return copy;
  }
  /// The default of a plain (non-optional, non-array) option.
  OptionDeclaration defaultValue(U value) const {
    static_assert(detail::FieldShape<V>::shape == detail::Shape::plain,
                  "only a plain option has a default");
    OptionDeclaration copy = *this;
    copy.value.defaultValue = std::move(value);
    return copy;
  }
  OptionDeclaration parsing(SingleValueParsingStrategy strategy) const {
    static_assert(detail::FieldShape<V>::shape != detail::Shape::array,
                  "an array option takes an ArrayParsingStrategy");
    OptionDeclaration copy = *this;
    copy.value.strategy = toParsingStrategy(strategy);
    return copy;
  }
  OptionDeclaration parsing(ArrayParsingStrategy strategy) const {
    static_assert(detail::FieldShape<V>::shape == detail::Shape::array,
                  "only an array option takes an ArrayParsingStrategy");
    OptionDeclaration copy = *this;
    copy.value.strategy = toParsingStrategy(strategy);
    return copy;
  }
  /// Reads the text with \p transform; what it throws is reported as an
  /// invalid value with the failure's description.
  OptionDeclaration
  transform(std::function<U(const std::string &)> transform) const {
    OptionDeclaration copy = *this;
    copy.value.transform = std::move(transform);
    return copy;
  }
  /// Marks the values as secrets (passwords, keys): once the command line
  /// is parsed, and before the command runs, main(argc, argv) overwrites
  /// their text in the process's arguments, where every local user could
  /// read it (ps, /proc/PID/cmdline). Help and parsing are unchanged.
  OptionDeclaration secret() const {
    OptionDeclaration copy = *this;
    copy.value.secret = true;
    return copy;
  }

  operator ArgumentDescriptor<T>() const {
    detail::ValueDeclaration<T, V> declaration = value;
    NameSpecification nameSpecification = names;
    return ArgumentDescriptor<T>{
        value.label,
        [declaration, nameSpecification](const InputKey &key) {
          ArgumentDefinition definition = declaration.makeDefinition(key);
          definition.kind = ArgumentDefinition::Kind::named;
          definition.names = nameSpecification.makeNames(key);
          return ArgumentSet(std::move(definition));
        },
        [declaration](T &object, ArgumentDecoder &decoder,
                      const InputKey &key) {
          declaration.decode(object, decoder, key);
        }};
  }

private:
  detail::ValueDeclaration<T, V> value;
  NameSpecification names;
};

/// A positional argument. See the table at the top of this header.
template <typename T, typename V> class ArgumentDeclaration {
public:
  using U = typename detail::FieldShape<V>::Value;

  ArgumentDeclaration(V T::*member, std::string label)
      : value(member, std::move(label)) {}

  ArgumentDeclaration help(ArgumentHelp help) const {
    ArgumentDeclaration copy = *this;
    copy.value.help = std::move(help);
    return copy;
  }
  ArgumentDeclaration defaultValue(U value) const {
    static_assert(detail::FieldShape<V>::shape == detail::Shape::plain,
                  "only a plain argument has a default");
    ArgumentDeclaration copy = *this;
    copy.value.defaultValue = std::move(value);
    return copy;
  }
  ArgumentDeclaration parsing(ArgumentArrayParsingStrategy strategy) const {
    static_assert(detail::FieldShape<V>::shape == detail::Shape::array,
                  "only a repeating argument takes a parsing strategy");
    ArgumentDeclaration copy = *this;
    copy.value.strategy = toParsingStrategy(strategy);
    return copy;
  }
  ArgumentDeclaration
  transform(std::function<U(const std::string &)> transform) const {
    ArgumentDeclaration copy = *this;
    copy.value.transform = std::move(transform);
    return copy;
  }

  operator ArgumentDescriptor<T>() const {
    detail::ValueDeclaration<T, V> declaration = value;
    return ArgumentDescriptor<T>{
        value.label,
        [declaration](const InputKey &key) {
          ArgumentDefinition definition = declaration.makeDefinition(key);
          definition.kind = ArgumentDefinition::Kind::positional;
          return ArgumentSet(std::move(definition));
        },
        [declaration](T &object, ArgumentDecoder &decoder,
                      const InputKey &key) {
          declaration.decode(object, decoder, key);
        }};
  }

private:
  detail::ValueDeclaration<T, V> value;
};

namespace detail {

std::vector<Name> prefixedNames(const std::vector<Name> &names,
                                const std::string &prefix);

template <typename E> NameSpecification flagCaseNames(const FlagCase<E> &c) {
  if constexpr (requires { EnumerableFlag<E>::name(c.value); })
    return EnumerableFlag<E>::name(c.value);
  else
    return NameSpecification{};
}

} // namespace detail

/// A flag: a boolean switch (optionally with an inverted form), a counter
/// (int field), or an enumerated flag (a field of an enumeration with
/// EnumerableFlag cases, or std::optional of one).
template <typename T, typename V> class FlagDeclaration {
public:
  using Field = detail::FieldShape<V>;
  using U = typename Field::Value;

  FlagDeclaration(V T::*member, std::string label)
      : member(member), label(std::move(label)) {}

  FlagDeclaration name(NameSpecification names) const {
    FlagDeclaration copy = *this;
    copy.names = std::move(names);
    return copy;
  }
  FlagDeclaration help(ArgumentHelp help) const {
    FlagDeclaration copy = *this;
    copy.helpText = std::move(help);
    return copy;
  }
  /// The value when no flag is given. A boolean flag with an inversion and
  /// no default must be given in one of its forms.
  FlagDeclaration defaultValue(U value) const {
    FlagDeclaration copy = *this;
    copy.initialValue = std::move(value);
    return copy;
  }
  FlagDeclaration inversion(FlagInversion inversion) const {
    static_assert(std::is_same_v<V, bool>, "only a bool flag inverts");
    FlagDeclaration copy = *this;
    copy.inverted = inversion;
    return copy;
  }
  FlagDeclaration exclusivity(FlagExclusivity exclusivity) const {
    FlagDeclaration copy = *this;
    copy.exclusive = exclusivity;
    return copy;
  }

  operator ArgumentDescriptor<T>() const {
    FlagDeclaration declaration = *this;
    return ArgumentDescriptor<T>{
        label,
        [declaration](const InputKey &key) { return declaration.makeSet(key); },
        [declaration](T &object, ArgumentDecoder &decoder,
                      const InputKey &key) {
          declaration.decode(object, decoder, key);
        }};
  }

private:
  ArgumentSet makeSet(const InputKey &key) const {
    if constexpr (std::is_same_v<V, bool>)
      return inverted ? makeInvertedSet(key) : makePlainSet(key);
    else if constexpr (std::is_same_v<V, int>)
      return makeCounterSet(key);
    else
      return makeEnumeratedSet(key);
  }

  ArgumentDefinition baseDefinition(const InputKey &key) const {
    ArgumentDefinition definition;
    definition.kind = ArgumentDefinition::Kind::named;
    definition.help.help = helpText;
    definition.help.keys = {key};
    return definition;
  }

  ArgumentSet makePlainSet(const InputKey &key) const {
    ArgumentDefinition definition = baseDefinition(key);
    definition.names = names.makeNames(key);
    definition.help.options = ArgumentDefinition::Help::isOptional;
    bool initial = initialValue.value_or(false);
    definition.initial = [key, initial](const InputOrigin &origin,
                                        ParsedValues &values) {
      values.set(key, initial, origin);
    };
    definition.update = ArgumentDefinition::NullaryUpdate(
        [key](const InputOrigin &origin, const std::optional<Name> &,
              ParsedValues &values) { values.set(key, true, origin); });
    return ArgumentSet(std::move(definition));
  }

  ArgumentSet makeInvertedSet(const InputKey &key) const {
    std::vector<Name> declared = names.makeNames(key);
    std::vector<Name> positive =
        *inverted == FlagInversion::prefixedNo
            ? declared
            : detail::prefixedNames(declared, "enable");
    std::vector<Name> negative = detail::prefixedNames(
        declared, *inverted == FlagInversion::prefixedNo ? "no" : "disable");
    auto hasUpdated = std::make_shared<bool>(false);
    FlagExclusivity exclusivity = exclusive;
    std::vector<ArgumentDefinition> definitions;
    for (bool value : {true, false}) {
      ArgumentDefinition definition = baseDefinition(key);
      definition.names = value ? positive : negative;
      definition.help.isComposite = true;
      if (initialValue) {
        definition.help.options = ArgumentDefinition::Help::isOptional;
        definition.help.defaultValue = *initialValue ? "true" : "false";
        definition.initial = [key, initial =
                                       *initialValue](const InputOrigin &origin,
                                                      ParsedValues &values) {
          values.set(key, initial, origin);
        };
      }
      definition.update = ArgumentDefinition::NullaryUpdate(
          [key, value, hasUpdated, exclusivity](const InputOrigin &origin,
                                                const std::optional<Name> &,
                                                ParsedValues &values) {
            updateFlag(
                key, value,
                [value](const std::any &stored) {
                  const bool *b = std::any_cast<bool>(&stored);
                  return b && *b == value;
                },
                origin, values, *hasUpdated, exclusivity);
          });
      definitions.push_back(std::move(definition));
    }
    return ArgumentSet(std::move(definitions));
  }

  ArgumentSet makeCounterSet(const InputKey &key) const {
    ArgumentDefinition definition = baseDefinition(key);
    definition.names = names.makeNames(key);
    definition.help.options = ArgumentDefinition::Help::isOptional |
                              ArgumentDefinition::Help::isRepeating;
    int initial = initialValue.value_or(0);
    definition.initial = [key, initial](const InputOrigin &origin,
                                        ParsedValues &values) {
      values.set(key, initial, origin);
    };
    definition.update = ArgumentDefinition::NullaryUpdate(
        [key](const InputOrigin &origin, const std::optional<Name> &,
              ParsedValues &values) {
          values.update(key, origin, 0, [](std::any &stored) {
            int &count = std::any_cast<int &>(stored);
            if (count < std::numeric_limits<int>::max())
              ++count;
          });
        });
    return ArgumentSet(std::move(definition));
  }

  ArgumentSet makeEnumeratedSet(const InputKey &key) const {
    using Cases = EnumerableFlag<U>;
    std::vector<FlagCase<U>> cases = Cases::allCases();
    bool anyCaseHelp = false;
    for (const FlagCase<U> &c : cases)
      anyCaseHelp = anyCaseHelp || c.help.has_value();
    const bool optional =
        initialValue.has_value() || Field::shape == detail::Shape::optional;
    std::optional<std::string> defaultText;
    if (initialValue)
      for (const FlagCase<U> &c : cases)
        if (c.value == *initialValue)
          defaultText = c.caseName;
    auto hasUpdated = std::make_shared<bool>(false);
    FlagExclusivity exclusivity = exclusive;
    std::optional<U> initial = initialValue;
    std::vector<ArgumentDefinition> definitions;
    for (const FlagCase<U> &c : cases) {
      ArgumentDefinition definition = baseDefinition(key);
      definition.names =
          detail::flagCaseNames(c).makeNames(InputKey{c.caseName});
      if (c.help)
        definition.help.help = c.help;
      definition.help.isComposite = !anyCaseHelp;
      definition.help.defaultValue = defaultText;
      if (optional)
        definition.help.options = ArgumentDefinition::Help::isOptional;
      if (initial)
        definition.initial = [key, initial](const InputOrigin &origin,
                                            ParsedValues &values) {
          values.set(key, *initial, origin);
        };
      U value = c.value;
      definition.update = ArgumentDefinition::NullaryUpdate(
          [key, value, hasUpdated, exclusivity](const InputOrigin &origin,
                                                const std::optional<Name> &,
                                                ParsedValues &values) {
            updateFlag(
                key, value,
                [value](const std::any &stored) {
                  const U *v = std::any_cast<U>(&stored);
                  return v && *v == value;
                },
                origin, values, *hasUpdated, exclusivity);
          });
      definitions.push_back(std::move(definition));
    }
    return ArgumentSet(std::move(definitions));
  }

  void decode(T &object, ArgumentDecoder &decoder, const InputKey &key) const {
    const ParsedValues::Element *element = decoder.element(key);
    if constexpr (Field::shape == detail::Shape::optional) {
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
  NameSpecification names;
  ArgumentHelp helpText;
  std::optional<U> initialValue;
  std::optional<FlagInversion> inverted;
  FlagExclusivity exclusive = FlagExclusivity::exclusive;
};

/// Another parsable type whose arguments are spliced in at this place.
template <typename T, typename G> class OptionGroupDeclaration {
public:
  OptionGroupDeclaration(G T::*member, std::string label)
      : member(member), label(std::move(label)) {}

  operator ArgumentDescriptor<T>() const {
    G T::*field = member;
    return ArgumentDescriptor<T>{
        label, [](const InputKey &) { return detail::argumentSetOf<G>(); },
        [field](T &object, ArgumentDecoder &decoder, const InputKey &) {
          // A group of the same type decoded by a parent level is reused, so
          // that values given before the subcommand reach it.
          for (const DecodedArguments &previous :
               decoder.getPreviouslyDecoded()) {
            if (previous.type == &commandType<G>()) {
              object.*field = *std::static_pointer_cast<G>(previous.value);
              return;
            }
          }
          std::shared_ptr<G> value = detail::decodeValue<G>(decoder);
          object.*field = *value;
          decoder.getPreviouslyDecoded().push_back(
              DecodedArguments{&commandType<G>(), value});
        }};
  }

private:
  G T::*member;
  std::string label;
};

template <typename T, typename V>
OptionDeclaration<T, V> option(V T::*member, std::string label) {
  return OptionDeclaration<T, V>(member, std::move(label));
}

template <typename T, typename V>
FlagDeclaration<T, V> flag(V T::*member, std::string label) {
  return FlagDeclaration<T, V>(member, std::move(label));
}

template <typename T, typename V>
ArgumentDeclaration<T, V> argument(V T::*member, std::string label) {
  return ArgumentDeclaration<T, V>(member, std::move(label));
}

template <typename T, typename G>
OptionGroupDeclaration<T, G> optionGroup(G T::*member, std::string label) {
  return OptionGroupDeclaration<T, G>(member, std::move(label));
}

} // namespace argparse

#endif
