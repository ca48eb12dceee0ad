#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_COMMANDPARSER_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_COMMANDPARSER_H

#include "ArgumentParser/ParsableCommand.h"
#include "ArgumentParser/Parsing/ParsedValues.h"

#include <memory>
#include <string>
#include <vector>

namespace argparse {

/// The built-in `help` subcommand of a root with subcommands: its run
/// always fails with the help of the commands it names.
struct HelpCommand : ParsableCommand<HelpCommand> {
  static constexpr std::string_view typeName = "HelpCommand";
  static CommandConfiguration configuration();
  static Arguments<HelpCommand> arguments();

  std::vector<std::string> subcommands;
  /// The commands whose help is asked for, root first. Not parsed.
  std::vector<const CommandType *> commandStack;

  HelpCommand() = default;
  explicit HelpCommand(std::vector<const CommandType *> commandStack)
      : commandStack(std::move(commandStack)) {}
  void run() override;
};

/// A node of the command tree. Identity is by address.
struct Tree {
  const CommandType *element = nullptr;
  Tree *parent = nullptr;
  std::vector<std::unique_ptr<Tree>> children;

  /// The tree of \p type and its configured subcommands, recursively.
  static std::unique_ptr<Tree> root(const CommandType &type);
  /// The path from this node down to the node of \p type; empty if none.
  std::vector<const Tree *> pathTo(const CommandType &type) const;
};

/// Walks the command tree along a command line.
class CommandParser {
public:
  /// The tree of \p rootType, with `help` as a further child of a root that
  /// has subcommands.
  explicit CommandParser(const CommandType &rootType);

  /// The chosen command, filled from \p arguments. Every failure comes out
  /// as a CommandError holding the command stack at that moment.
  std::shared_ptr<ParsableCommandBase>
  parse(const std::vector<std::string> &arguments);

  /// The types from the root to the current node.
  std::vector<const CommandType *> commandStack() const;
  /// Where the values of secret options stand in the arguments parsed.
  const std::vector<ParsedValues::SecretText> &getSecretTexts() const noexcept {
    return secretTexts;
  }
  const Tree &getCommandTree() const noexcept { return *commandTree; }

private:
  std::shared_ptr<ParsableCommandBase> descend(SplitArguments &split);
  std::shared_ptr<ParsableArguments> parseCurrent(SplitArguments &split);
  const Tree *consumeNextCommand(SplitArguments &split);
  void checkForBuiltInFlags(const SplitArguments &split) const;
  std::shared_ptr<ParsableCommandBase>
  extractLastParsedValue(const SplitArguments &split);

  std::unique_ptr<Tree> commandTree;
  const Tree *currentNode;
  std::vector<DecodedArguments> decodedArguments;
  std::vector<ParsedValues::SecretText> secretTexts;
};

} // namespace argparse

#endif
