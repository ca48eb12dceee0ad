#ifndef KESTRUNECLI_ARGUMENTPARSER_ERRORS_H
#define KESTRUNECLI_ARGUMENTPARSER_ERRORS_H

#include "ArgumentParser/Parsing/ParserError.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace argparse {

class CommandType;

/// A failure that can describe itself for users. A description that is
/// absent (std::nullopt) is distinct from an empty one.
class LocalizedError {
public:
  virtual ~LocalizedError() = default;
  virtual std::optional<std::string> localizedDescription() const = 0;
};

/// Thrown by a command to end the process with a given code and no message.
struct ExitCode : std::exception {
  std::int32_t rawValue;

  explicit ExitCode(std::int32_t rawValue) : rawValue(rawValue) {}
  static const ExitCode success;
  static const ExitCode failure;
  static const ExitCode validationFailure;

  bool isSuccess() const noexcept { return rawValue == 0; }
  const char *what() const noexcept override { return "exit code"; }
  friend bool operator==(const ExitCode &a, const ExitCode &b) noexcept {
    return a.rawValue == b.rawValue;
  }
};

/// Thrown by validate() or run() for a user error: the message and the usage
/// go to standard error, exit code 64.
struct ValidationError : std::exception {
  std::string message;

  explicit ValidationError(std::string message) : message(std::move(message)) {}
  const std::string &description() const noexcept { return message; }
  const char *what() const noexcept override { return message.c_str(); }
};

/// Thrown to end the process successfully: with a command's help, or with a
/// message, on standard output.
class CleanExit : public std::exception {
public:
  /// The help of \p command (the current command when null).
  static CleanExit helpRequest(const CommandType *command = nullptr) {
    return CleanExit(command, std::nullopt);
  }
  static CleanExit message(std::string text) {
    return CleanExit(nullptr, std::move(text));
  }

  bool isHelpRequest() const noexcept { return !text.has_value(); }
  const CommandType *getCommand() const noexcept { return command; }
  /// The message, or for a help request a short description of it.
  std::string description() const;
  const char *what() const noexcept override { return "clean exit"; }

private:
  CleanExit(const CommandType *command, std::optional<std::string> text)
      : command(command), text(std::move(text)) {}
  const CommandType *command;
  std::optional<std::string> text;
};

/// A parse failure together with the commands from the root to the one
/// being parsed.
class CommandError : public std::exception {
public:
  CommandError(std::vector<const CommandType *> commandStack,
               ParserError parserError)
      : commandStack(std::move(commandStack)),
        parserError(std::move(parserError)) {}

  const std::vector<const CommandType *> &getCommandStack() const noexcept {
    return commandStack;
  }
  const ParserError &getParserError() const noexcept { return parserError; }
  const char *what() const noexcept override { return parserError.what(); }

private:
  std::vector<const CommandType *> commandStack;
  ParserError parserError;
};

/// The text of an arbitrary failure: its localized description when it has
/// one, else its textual description.
std::string describeFailure(std::exception_ptr failure);

} // namespace argparse

#endif
