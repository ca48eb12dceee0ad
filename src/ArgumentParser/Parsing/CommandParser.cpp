#include "ArgumentParser/Parsing/CommandParser.h"

#include "ArgumentParser/Declarations.h"

#include <algorithm>

namespace argparse {

CommandConfiguration HelpCommand::configuration() {
  CommandConfiguration configuration;
  configuration.commandName = "help";
  return configuration;
}

Arguments<HelpCommand> HelpCommand::arguments() {
  return {argument(&HelpCommand::subcommands, "subcommands")};
}

void HelpCommand::run() {
  throw CommandError(commandStack, ParserError::helpRequested());
}

std::unique_ptr<Tree> Tree::root(const CommandType &type) {
  auto node = std::make_unique<Tree>();
  node->element = &type;
  for (const CommandType *subcommand : type.getConfiguration().subcommands) {
    std::unique_ptr<Tree> child = root(*subcommand);
    child->parent = node.get();
    node->children.push_back(std::move(child));
  }
  return node;
}

std::vector<const Tree *> Tree::pathTo(const CommandType &type) const {
  if (element == &type)
    return {this};
  for (const std::unique_ptr<Tree> &child : children) {
    std::vector<const Tree *> path = child->pathTo(type);
    if (!path.empty()) {
      path.insert(path.begin(), this);
      return path;
    }
  }
  return {};
}

CommandParser::CommandParser(const CommandType &rootType)
    : commandTree(Tree::root(rootType)), currentNode(commandTree.get()) {
  if (!commandTree->children.empty()) {
    auto help = std::make_unique<Tree>();
    help->element = &commandType<HelpCommand>();
    help->parent = commandTree.get();
    commandTree->children.push_back(std::move(help));
  }
}

std::vector<const CommandType *> CommandParser::commandStack() const {
  std::vector<const CommandType *> stack;
  for (const Tree *node = currentNode; node; node = node->parent)
    stack.insert(stack.begin(), node->element);
  return stack;
}

std::shared_ptr<ParsableCommandBase>
CommandParser::parse(const std::vector<std::string> &arguments) {
  std::optional<SplitArguments> split;
  try {
    split.emplace(arguments);
  } catch (const ParserError &error) {
    throw CommandError({commandTree->element}, error);
  }

  try {
    return descend(*split);
  } catch (const CommandError &) {
    throw;
  } catch (const ParserError &error) {
    if (arguments.empty())
      throw CommandError(commandStack(),
                         ParserError::noArguments(std::current_exception()));
    throw CommandError(commandStack(), error);
  } catch (const HelpRequested &) {
    return std::make_shared<HelpCommand>(commandStack());
  } catch (...) {
    throw CommandError(commandStack(), ParserError::invalidState());
  }
}

std::shared_ptr<ParsableCommandBase>
CommandParser::descend(SplitArguments &split) {
  while (true) {
    std::shared_ptr<ParsableArguments> parsed = parseCurrent(split);
    try {
      parsed->validate();
    } catch (...) {
      std::exception_ptr failure = std::current_exception();
      checkForBuiltInFlags(split);
      throw CommandError(commandStack(),
                         ParserError::userValidationError(failure));
    }

    if (const Tree *next = consumeNextCommand(split)) {
      currentNode = next;
      continue;
    }
    checkForBuiltInFlags(split);

    if (const CommandType *defaultSubcommand =
            currentNode->element->getConfiguration().defaultSubcommand) {
      auto child = std::find_if(currentNode->children.begin(),
                                currentNode->children.end(),
                                [&](const std::unique_ptr<Tree> &node) {
                                  return node->element == defaultSubcommand;
                                });
      if (child == currentNode->children.end())
        throw ParserError::invalidState();
      currentNode = child->get();
      continue;
    }
    break;
  }

  std::shared_ptr<ParsableCommandBase> result = extractLastParsedValue(split);
  if (auto *help = dynamic_cast<HelpCommand *>(result.get())) {
    std::vector<const CommandType *> stack{commandTree->element};
    const Tree *node = commandTree.get();
    for (const std::string &name : help->subcommands) {
      auto child = std::find_if(node->children.begin(), node->children.end(),
                                [&](const std::unique_ptr<Tree> &c) {
                                  return c->element->getCommandName() == name;
                                });
      if (child == node->children.end())
        break;
      node = child->get();
      stack.push_back(node->element);
    }
    help->commandStack = std::move(stack);
  }
  return result;
}

std::shared_ptr<ParsableArguments>
CommandParser::parseCurrent(SplitArguments &split) {
  ArgumentSet set = currentNode->element->makeArgumentSet();
  LenientParsedValues parsed = set.lenientParse(split);
  if (parsed.partialError && currentNode->children.empty())
    throw *parsed.partialError;
  const std::vector<ParsedValues::SecretText> &secrets =
      parsed.values.getSecretTexts();
  secretTexts.insert(secretTexts.end(), secrets.begin(), secrets.end());

  ArgumentDecoder decoder(parsed.values, decodedArguments);
  std::shared_ptr<ParsableArguments> value;
  try {
    value = currentNode->element->decode(decoder);
  } catch (...) {
    // Help wins over a missing or invalid value.
    checkForBuiltInFlags(split);
    throw;
  }
  split.removeAll(decoder.getUsedOrigins());

  for (const DecodedArguments &entry : decoder.getPreviouslyDecoded()) {
    bool known = std::any_of(
        decodedArguments.begin(), decodedArguments.end(),
        [&](const DecodedArguments &d) { return d.type == entry.type; });
    if (!known)
      decodedArguments.push_back(entry);
  }
  decodedArguments.push_back(DecodedArguments{currentNode->element, value});
  return value;
}

const Tree *CommandParser::consumeNextCommand(SplitArguments &split) {
  std::optional<SplitArguments::Entry> first = split.peekNext();
  if (!first || !first->second.isValue())
    return nullptr;
  for (const std::unique_ptr<Tree> &child : currentNode->children) {
    if (child->element->getCommandName() == first->second.getValue()) {
      split.popNextValue();
      return child.get();
    }
  }
  return nullptr;
}

void CommandParser::checkForBuiltInFlags(const SplitArguments &split) const {
  if (split.containsAnyOf(currentNode->element->getHelpNames()))
    throw HelpRequested();
  std::vector<const CommandType *> stack = commandStack();
  bool hasVersion =
      std::any_of(stack.begin(), stack.end(), [](const CommandType *type) {
        return !type->getConfiguration().version.empty();
      });
  if (hasVersion && split.contains(Name::makeLong("version")))
    throw CommandError(stack, ParserError::versionRequested());
}

std::shared_ptr<ParsableCommandBase>
CommandParser::extractLastParsedValue(const SplitArguments &split) {
  checkForBuiltInFlags(split);
  if (split.containsNonTerminatorArguments()) {
    for (const SplitArguments::Entry &entry : split.getElements())
      if (entry.second.isOption())
        throw ParserError::unknownOption(entry.first,
                                         entry.second.getOption().getName());
    throw ParserError::unexpectedExtraValues(split.coalescedExtraElements());
  }
  for (auto it = decodedArguments.rbegin(); it != decodedArguments.rend();
       ++it) {
    if (it->type->isCommand())
      return std::static_pointer_cast<ParsableCommandBase>(it->value);
  }
  throw ParserError::invalidState();
}

} // namespace argparse
