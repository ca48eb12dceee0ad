#ifndef KESTRUNECLI_ARGUMENTPARSER_COMMANDTYPE_H
#define KESTRUNECLI_ARGUMENTPARSER_COMMANDTYPE_H

#include "ArgumentParser/NameSpecification.h"
#include "ArgumentParser/Parsing/ArgumentDecoder.h"
#include "ArgumentParser/Parsing/ArgumentSet.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace argparse {

class CommandType;

/// A command's name, texts, subcommands and help names.
struct CommandConfiguration {
  /// The name on the command line; derived from the type name when absent.
  std::optional<std::string> commandName{};
  std::string abstract{};
  std::string discussion{};
  /// When not empty, "--version" prints it.
  std::string version{};
  /// Whether the command is listed among its parent's subcommands.
  bool shouldDisplay = true;
  std::vector<const CommandType *> subcommands{};
  /// The subcommand chosen when none is named.
  const CommandType *defaultSubcommand = nullptr;
  NameSpecification helpNames = {shortName, longName};
};

/// Anything that can be filled from a command line. A declaring type has a
/// default constructor, a static `typeName` and a static `arguments()` table.
class ParsableArguments {
public:
  virtual ~ParsableArguments() = default;
  /// Checks the parsed values together; throws ValidationError (or anything)
  /// to reject them. Does nothing by default.
  virtual void validate() {}
};

/// A parsable type that runs: the engine calls run() on the chosen command.
class ParsableCommandBase : public ParsableArguments {
public:
  /// The command's work. By default it throws CleanExit::helpRequest, so a
  /// command without work prints its help and exits 0.
  virtual void run();
  /// The run-time description of the command's type.
  virtual const CommandType &getCommandType() const = 0;
};

/// One row of a type's argument table: the field's label and how it becomes
/// definitions and a field value.
template <typename T> struct ArgumentDescriptor {
  std::string label;
  std::function<ArgumentSet(const InputKey &)> makeSet;
  std::function<void(T &, ArgumentDecoder &, const InputKey &)> decode;
};

/// The argument table of a type, in declaration order.
template <typename T> using Arguments = std::vector<ArgumentDescriptor<T>>;

/// The run-time description of a declared type: its names, configuration,
/// definitions and how to build a value from parsed values. One static
/// instance per type; identity is by address.
class CommandType {
public:
  using ConfigurationFunction = const CommandConfiguration &(*)();
  using ArgumentSetFunction = ArgumentSet (*)();
  using DecodeFunction =
      std::shared_ptr<ParsableArguments> (*)(ArgumentDecoder &);

  CommandType(std::string typeName, bool command,
              ConfigurationFunction configuration,
              ArgumentSetFunction argumentSet, DecodeFunction decode,
              std::optional<std::string> derivedCommandName = std::nullopt)
      : typeName(std::move(typeName)), command(command),
        configuration(configuration), argumentSet(argumentSet),
        decodeFunction(decode),
        derivedCommandName(std::move(derivedCommandName)) {}

  const std::string &getTypeName() const noexcept { return typeName; }
  bool isCommand() const noexcept { return command; }
  const CommandConfiguration &getConfiguration() const {
    return configuration();
  }
  /// A fresh set of the type's definitions.
  ArgumentSet makeArgumentSet() const { return argumentSet(); }
  /// A value of the type filled from \p decoder.
  std::shared_ptr<ParsableArguments> decode(ArgumentDecoder &decoder) const {
    return decodeFunction(decoder);
  }
  /// The configured command name, else the type name in snake case with "-".
  std::string getCommandName() const;
  /// The help names for the key "help", in descending order of their text.
  std::vector<Name> getHelpNames() const;

private:
  std::string typeName;
  bool command;
  ConfigurationFunction configuration;
  ArgumentSetFunction argumentSet;
  DecodeFunction decodeFunction;
  std::optional<std::string> derivedCommandName;
};

template <typename T> const CommandType &commandType();

namespace detail {

template <typename T> Arguments<T> makeArguments() {
  if constexpr (requires { T::arguments(); })
    return Arguments<T>(T::arguments());
  else
    return Arguments<T>();
}

template <typename T> const Arguments<T> &argumentsOf() {
  static const Arguments<T> table = makeArguments<T>();
  return table;
}

template <typename T> ArgumentSet argumentSetOf() {
  std::vector<ArgumentSet> sets;
  for (const ArgumentDescriptor<T> &descriptor : argumentsOf<T>())
    if (!descriptor.label.empty())
      sets.push_back(descriptor.makeSet(InputKey::fromLabel(descriptor.label)));
  return ArgumentSet::ofSets(std::move(sets));
}

template <typename T> std::shared_ptr<T> decodeValue(ArgumentDecoder &decoder) {
  auto value = std::make_shared<T>();
  for (const ArgumentDescriptor<T> &descriptor : argumentsOf<T>())
    if (!descriptor.label.empty())
      descriptor.decode(*value, decoder, InputKey::fromLabel(descriptor.label));
  return value;
}

template <typename T>
std::shared_ptr<ParsableArguments> decodeOf(ArgumentDecoder &decoder) {
  return decodeValue<T>(decoder);
}

template <typename T> CommandConfiguration makeConfiguration() {
  if constexpr (requires { T::configuration(); })
    return CommandConfiguration(T::configuration());
  else
    return CommandConfiguration();
}

template <typename T> const CommandConfiguration &configurationOf() {
  static const CommandConfiguration configuration = makeConfiguration<T>();
  return configuration;
}

template <typename T> std::optional<std::string> derivedCommandNameOf() {
  if constexpr (requires { T::derivedCommandName(); })
    return T::derivedCommandName();
  else
    return std::nullopt;
}

} // namespace detail

/// The run-time description of \p T.
template <typename T> const CommandType &commandType() {
  static_assert(std::is_base_of_v<ParsableArguments, T>,
                "a parsable type derives from ParsableArguments");
  static const CommandType type(
      std::string(T::typeName), std::is_base_of_v<ParsableCommandBase, T>,
      &detail::configurationOf<T>, &detail::argumentSetOf<T>,
      &detail::decodeOf<T>, detail::derivedCommandNameOf<T>());
  return type;
}

} // namespace argparse

#endif
