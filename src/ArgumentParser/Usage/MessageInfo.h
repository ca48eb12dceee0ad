#ifndef KESTRUNECLI_ARGUMENTPARSER_USAGE_MESSAGEINFO_H
#define KESTRUNECLI_ARGUMENTPARSER_USAGE_MESSAGEINFO_H

#include "ArgumentParser/CommandType.h"
#include "ArgumentParser/Errors.h"

#include <exception>
#include <string>

namespace argparse {

/// What a failure that reaches the top of a command shows: help (standard
/// output, exit 0), a validation error with usage (standard error, exit 64)
/// or another failure (standard error, its own exit code).
class MessageInfo {
public:
  enum class Kind { help, validation, other };

  /// Classifies \p error for the tree of \p root.
  MessageInfo(std::exception_ptr error, const CommandType &root);

  Kind getKind() const noexcept { return kind; }
  /// The help text, the validation message or the other failure's message.
  const std::string &message() const noexcept { return text; }
  const std::string &getUsage() const noexcept { return usage; }
  /// What is printed: the help; "Error: {message}\n{usage}"; "Error: ...".
  std::string fullText() const;
  /// 0 for help, 64 for validation, the carried code for other failures.
  ExitCode exitCode() const;

private:
  void classifyUserFailure(std::exception_ptr failure,
                           const std::vector<const CommandType *> &stack,
                           const CommandType &root);

  Kind kind = Kind::other;
  std::string text;
  std::string usage;
  std::int32_t code = 1;
};

} // namespace argparse

#endif
