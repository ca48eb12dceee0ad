#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSABLECOMMAND_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSABLECOMMAND_H

#include "ArgumentParser/CommandType.h"
#include "ArgumentParser/Declarations.h"
#include "ArgumentParser/Errors.h"
#include "ArgumentParser/Usage/StringExtensions.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace argparse {

using OptionalArguments = std::optional<std::vector<std::string>>;

/// Parses \p arguments (the process's arguments without the program name
/// when absent) against the tree of \p root and gives the chosen command.
/// Throws CommandError.
std::shared_ptr<ParsableCommandBase>
parseAsRoot(const CommandType &root, OptionalArguments arguments = {});

/// Parses, runs the chosen command, and turns any failure into its text and
/// exit code (the process ends then). Returns when run() returns.
void runMain(const CommandType &root, OptionalArguments arguments = {});
/// runMain() with the process's own arguments, \p argv as main() got it.
/// Between the parse and the run, the text of every secret value (see
/// OptionDeclaration::secret) is overwritten with "x" in \p argv itself,
/// which is what the process list shows; the command has its own copies.
void runMain(const CommandType &root, int argc, char **argv);

/// The help of \p command (the root when null or not in the tree), as if
/// reached from \p root, rendered to \p columns (the terminal's width when
/// absent).
std::string helpMessage(const CommandType &root, const CommandType *command,
                        std::optional<std::size_t> columns = {});

/// The message of \p error alone (help text, validation message or other).
std::string message(const CommandType &root, std::exception_ptr error);
/// The whole text that exit(withError:) prints for \p error.
std::string fullMessage(const CommandType &root, std::exception_ptr error);
/// The exit code for \p error: 0 for help, 64 for a bad command line, the
/// carried code for ExitCode, 1 otherwise.
ExitCode exitCode(const CommandType &root, std::exception_ptr error);
/// Prints the text of \p error to standard output (help) or standard error
/// (errors) and ends the process with its exit code; 0 without an error.
[[noreturn]] void exitWithError(const CommandType &root,
                                std::exception_ptr error);

/// The command a plain ParsableArguments type runs as: one option group
/// holding the type, named after it.
template <typename T> struct WrappedParsableCommand;

/// The type itself for a command, else its WrappedParsableCommand.
template <typename T>
using AsCommand = std::conditional_t<std::is_base_of_v<ParsableCommandBase, T>,
                                     T, WrappedParsableCommand<T>>;

/// Parses \p arguments into a value of \p T. Throws CommandError, or
/// ParserError::helpRequested when the help command was chosen.
template <typename T> T parse(OptionalArguments arguments = {});

/// parse(), with the process ended by exitWithError on failure.
template <typename T> T parseOrExit(OptionalArguments arguments = {}) {
  try {
    return parse<T>(std::move(arguments));
  } catch (...) {
    exitWithError(commandType<AsCommand<T>>(), std::current_exception());
  }
}

/// The face of a declared command: derive `struct Tool :
/// argparse::ParsableCommand<Tool>`, give it a static `typeName`, a static
/// `configuration()` and `arguments()`, and override run().
template <typename Self> class ParsableCommand : public ParsableCommandBase {
public:
  const CommandType &getCommandType() const override {
    return commandType<Self>();
  }

  /// The entry point: parses the process's arguments and runs the command.
  static void main(int argc, char **argv) {
    runMain(commandType<Self>(), argc, argv);
  }
  static void main(OptionalArguments arguments = {}) {
    runMain(commandType<Self>(), std::move(arguments));
  }
  static std::shared_ptr<ParsableCommandBase>
  parseAsRoot(OptionalArguments arguments = {}) {
    return argparse::parseAsRoot(commandType<Self>(), std::move(arguments));
  }
  static Self parse(OptionalArguments arguments = {}) {
    return argparse::parse<Self>(std::move(arguments));
  }
  static Self parseOrExit(OptionalArguments arguments = {}) {
    return argparse::parseOrExit<Self>(std::move(arguments));
  }
  static std::string helpMessage(std::optional<std::size_t> columns = {}) {
    return argparse::helpMessage(commandType<Self>(), nullptr, columns);
  }
  static std::string helpMessage(const CommandType &command,
                                 std::optional<std::size_t> columns = {}) {
    return argparse::helpMessage(commandType<Self>(), &command, columns);
  }
  static std::string message(std::exception_ptr error) {
    return argparse::message(commandType<Self>(), error);
  }
  static std::string fullMessage(std::exception_ptr error) {
    return argparse::fullMessage(commandType<Self>(), error);
  }
  static ExitCode exitCode(std::exception_ptr error) {
    return argparse::exitCode(commandType<Self>(), error);
  }
  [[noreturn]] static void exit(std::exception_ptr error = nullptr) {
    exitWithError(commandType<Self>(), error);
  }
};

template <typename T>
struct WrappedParsableCommand : ParsableCommand<WrappedParsableCommand<T>> {
  static constexpr std::string_view typeName = "_WrappedParsableCommand";
  T options;

  /// The wrapped type's name in snake case with "_", less "_options".
  static std::string derivedCommandName() {
    std::string name = convertedToSnakeCase(T::typeName, "_");
    const std::string suffix = "_options";
    if (name.size() >= suffix.size() &&
        name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
      name.erase(name.size() - suffix.size());
    return name;
  }
  static Arguments<WrappedParsableCommand> arguments() {
    return {optionGroup(&WrappedParsableCommand::options, "_options")};
  }
};

/// Whether \p command is the built-in help command.
bool isHelpCommand(const ParsableCommandBase &command);

template <typename T> T parse(OptionalArguments arguments) {
  std::shared_ptr<ParsableCommandBase> result =
      argparse::parseAsRoot(commandType<AsCommand<T>>(), std::move(arguments));
  if (isHelpCommand(*result))
    throw ParserError::helpRequested();
  if constexpr (std::is_base_of_v<ParsableCommandBase, T>) {
    if (auto *value = dynamic_cast<T *>(result.get()))
      return *value;
  } else {
    if (auto *wrapped = dynamic_cast<WrappedParsableCommand<T> *>(result.get()))
      return wrapped->options;
  }
  throw ParserError::invalidState();
}

} // namespace argparse

#endif
