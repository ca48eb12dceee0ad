#ifndef KESTRUNECLI_ARGUMENTPARSER_FLAGDECLARATION_H
#define KESTRUNECLI_ARGUMENTPARSER_FLAGDECLARATION_H

// The rows of an argument table that take no value: switches, counters and
// enumerated flags.

#include "ArgumentParser/DeclarationBuilder.h"
#include "ArgumentParser/ExpressibleByArgument.h"
#include "ArgumentParser/NameSpecification.h"
#include "ArgumentParser/Parsing/ArgumentDefinition.h"

#include <any>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace argparse {

/// The negative form of a boolean flag.
enum class FlagInversion { prefixedNo, prefixedEnableDisable };
/// What a repeated flag of one key does.
enum class FlagExclusivity { exclusive, chooseFirst, chooseLast };

/// The shared step of boolean and enumerated flags: stores \p value by
/// \p exclusivity; \p hasUpdated tells whether a flag of this key was seen.
void updateFlag(const InputKey &key, const std::any &value,
                const std::function<bool(const std::any &)> &equalsValue,
                const InputOrigin &origin, ParsedValues &values,
                bool &hasUpdated, FlagExclusivity exclusivity);

namespace detail {

/// The update of a flag that stores \p value under \p key by
/// \p exclusivity, sharing \p hasUpdated with the other flags of the key.
template <typename U>
ArgumentDefinition::NullaryUpdate flagUpdate(InputKey key, U value,
                                             std::shared_ptr<bool> hasUpdated,
                                             FlagExclusivity exclusivity) {
  return ArgumentDefinition::NullaryUpdate(
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
}

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
template <typename T, typename V>
class FlagDeclaration : public DeclarationBuilder<FlagDeclaration<T, V>, T, V> {
  using Builder = DeclarationBuilder<FlagDeclaration, T, V>;
  friend Builder;

public:
  using typename Builder::Field;
  using typename Builder::U;

  FlagDeclaration(V T::*member, std::string label)
      : Builder(member, std::move(label)) {}

  FlagDeclaration name(NameSpecification names) const {
    return this->with(
        [&](FlagDeclaration &copy) { copy.names = std::move(names); });
  }
  FlagDeclaration inversion(FlagInversion inversion) const {
    static_assert(std::is_same_v<V, bool>, "only a bool flag inverts");
    return this->with(
        [&](FlagDeclaration &copy) { copy.inverted = inversion; });
  }
  FlagDeclaration exclusivity(FlagExclusivity exclusivity) const {
    return this->with(
        [&](FlagDeclaration &copy) { copy.exclusive = exclusivity; });
  }

private:
  using Builder::helpText;
  using Builder::initialValue;

  /// Any flag may have a default: the value when none of its forms is given.
  static constexpr bool takesDefault = true;

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
      definition.update =
          detail::flagUpdate(key, value, hasUpdated, exclusivity);
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
      definition.update =
          detail::flagUpdate(key, value, hasUpdated, exclusivity);
      definitions.push_back(std::move(definition));
    }
    return ArgumentSet(std::move(definitions));
  }

  NameSpecification names;
  std::optional<FlagInversion> inverted;
  FlagExclusivity exclusive = FlagExclusivity::exclusive;
};

} // namespace argparse

#endif
