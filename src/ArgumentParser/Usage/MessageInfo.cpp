#include "ArgumentParser/Usage/MessageInfo.h"

#include "ArgumentParser/Parsing/CommandParser.h"
#include "ArgumentParser/Usage/HelpGenerator.h"

namespace argparse {
namespace {

std::string versionOf(const std::vector<const CommandType *> &stack) {
  for (auto it = stack.rbegin(); it != stack.rend(); ++it)
    if (!(*it)->getConfiguration().version.empty())
      return (*it)->getConfiguration().version;
  return "Unspecified version";
}

std::string helpOf(const std::vector<const CommandType *> &stack) {
  return HelpGenerator(stack).rendered();
}

} // namespace

MessageInfo::MessageInfo(std::exception_ptr error, const CommandType &root) {
  std::vector<const CommandType *> stack{&root};
  std::optional<ParserError> parserError;
  bool fromCommand = false;
  try {
    std::rethrow_exception(error);
  } catch (const CommandError &commandError) {
    stack = commandError.getCommandStack();
    if (stack.empty())
      stack = {&root};
    parserError = commandError.getParserError();
    fromCommand = true;
  } catch (const ParserError &plainError) {
    parserError = plainError;
  } catch (...) {
    parserError = ParserError::userValidationError(error);
  }

  // A version request names its commands; only a CommandError carries them.
  if (fromCommand &&
      parserError->getKind() == ParserError::Kind::versionRequested) {
    kind = Kind::help;
    text = versionOf(stack);
    code = 0;
    return;
  }
  if (parserError->getKind() == ParserError::Kind::helpRequested) {
    kind = Kind::help;
    text = helpOf(stack);
    code = 0;
    return;
  }

  std::string commandNames;
  for (const CommandType *type : stack)
    commandNames += (commandNames.empty() ? "" : " ") + type->getCommandName();
  usage = "Usage: " + usageString(stack) + "\n  See '" + commandNames +
          " --help' for more information.";

  if (parserError->getKind() != ParserError::Kind::userValidationError) {
    kind = Kind::validation;
    code = ExitCode::validationFailure.rawValue;
    text = stack.back()
               ->makeArgumentSet()
               .errorDescription(std::make_exception_ptr(*parserError))
               .value_or("");
    if (parserError->getKind() == ParserError::Kind::noArguments)
      usage = "\n" + helpOf({&root});
    return;
  }
  classifyUserFailure(parserError->failure, stack, root);
}

void MessageInfo::classifyUserFailure(
    std::exception_ptr failure, const std::vector<const CommandType *> &stack,
    const CommandType &root) {
  try {
    std::rethrow_exception(failure);
  } catch (const ValidationError &validation) {
    kind = Kind::validation;
    text = validation.message;
    code = ExitCode::validationFailure.rawValue;
  } catch (const CleanExit &cleanExit) {
    kind = Kind::help;
    code = 0;
    if (!cleanExit.isHelpRequest()) {
      text = cleanExit.description();
      return;
    }
    std::vector<const CommandType *> helpStack = stack;
    if (const CommandType *command = cleanExit.getCommand()) {
      CommandParser parser(root);
      helpStack.clear();
      for (const Tree *node : parser.getCommandTree().pathTo(*command))
        helpStack.push_back(node->element);
      if (helpStack.empty())
        helpStack = {&root};
    }
    text = helpOf(helpStack);
  } catch (const ExitCode &exitCode) {
    kind = Kind::other;
    text.clear();
    code = exitCode.rawValue;
  } catch (...) {
    kind = Kind::other;
    text = describeFailure(std::current_exception());
    code = ExitCode::failure.rawValue;
  }
}

std::string MessageInfo::fullText() const {
  switch (kind) {
  case Kind::help:
    return text;
  case Kind::validation:
    return text.empty() ? usage : "Error: " + text + "\n" + usage;
  case Kind::other:
    return text.empty() ? "" : "Error: " + text;
  }
  return text;
}

ExitCode MessageInfo::exitCode() const { return ExitCode(code); }

} // namespace argparse
