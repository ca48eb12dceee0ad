#include "ArgumentParser/ParsableCommand.h"

#include "ArgumentParser/Parsing/CommandParser.h"
#include "ArgumentParser/Usage/HelpGenerator.h"
#include "ArgumentParser/Usage/MessageInfo.h"
#include "Platform/ProcessArguments.h"
#include "Platform/StandardOutput.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace argparse {

std::shared_ptr<ParsableCommandBase> parseAsRoot(const CommandType &root,
                                                 OptionalArguments arguments) {
  CommandParser parser(root);
  return parser.parse(arguments ? *arguments : platform::getProcessArguments());
}

void runMain(const CommandType &root, OptionalArguments arguments) {
  try {
    std::shared_ptr<ParsableCommandBase> command =
        parseAsRoot(root, std::move(arguments));
    command->run();
  } catch (...) {
    exitWithError(root, std::current_exception());
  }
}

void runMain(const CommandType &root, int argc, char **argv) {
  std::vector<std::string> arguments;
  for (int i = 1; i < argc; ++i)
    arguments.emplace_back(argv[i]);
  try {
    CommandParser parser(root);
    std::shared_ptr<ParsableCommandBase> command = parser.parse(arguments);
    // The parse copied every value, so the secrets can go from the argument
    // area at once, before the command prompts or sends anything. The length
    // of each input stays, and so does everything else on the command line.
    for (const ParsedValues::SecretText &text : parser.getSecretTexts()) {
      const std::size_t index = static_cast<std::size_t>(text.inputIndex);
      assert(index < arguments.size() &&
             text.length <= arguments[index].size() && "secret out of place");
      std::memset(argv[index + 1] + arguments[index].size() - text.length, 'x',
                  text.length);
    }
    command->run();
  } catch (...) {
    exitWithError(root, std::current_exception());
  }
}

std::string helpMessage(const CommandType &root, const CommandType *command,
                        std::optional<std::size_t> columns) {
  std::vector<const CommandType *> stack{&root};
  if (command) {
    CommandParser parser(root);
    std::vector<const Tree *> path = parser.getCommandTree().pathTo(*command);
    if (!path.empty()) {
      stack.clear();
      for (const Tree *node : path)
        stack.push_back(node->element);
    }
  }
  return HelpGenerator(stack).rendered(columns);
}

std::string message(const CommandType &root, std::exception_ptr error) {
  return MessageInfo(error, root).message();
}

std::string fullMessage(const CommandType &root, std::exception_ptr error) {
  return MessageInfo(error, root).fullText();
}

ExitCode exitCode(const CommandType &root, std::exception_ptr error) {
  return MessageInfo(error, root).exitCode();
}

void exitWithError(const CommandType &root, std::exception_ptr error) {
  if (!error)
    std::exit(ExitCode::success.rawValue);
  MessageInfo info(error, root);
  const std::string text = info.fullText();
  if (!text.empty()) {
    if (info.getKind() == MessageInfo::Kind::help) {
      platform::printLine(text);
    } else {
      // Parse errors go to standard error, byte for byte.
      std::fflush(stdout);
      std::string line = text + "\n";
      std::fwrite(line.data(), 1, line.size(), stderr);
      std::fflush(stderr);
    }
  }
  std::exit(info.exitCode().rawValue);
}

bool isHelpCommand(const ParsableCommandBase &command) {
  return &command.getCommandType() == &commandType<HelpCommand>();
}

} // namespace argparse
