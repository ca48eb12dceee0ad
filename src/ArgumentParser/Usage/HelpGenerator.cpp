#include "ArgumentParser/Usage/HelpGenerator.h"

#include "ArgumentParser/Usage/StringExtensions.h"
#include "ArgumentParser/Usage/UsageGenerator.h"
#include "Platform/Graphemes.h"
#include "Platform/TerminalSize.h"

#include <algorithm>
#include <cassert>

namespace argparse {

std::optional<std::size_t> HelpGenerator::screenWidthOverride;

namespace {

std::string joined(const std::vector<std::string> &parts,
                   const std::string &separator) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0)
      text += separator;
    text += parts[i];
  }
  return text;
}

std::string toolNameOf(const std::vector<const CommandType *> &stack) {
  std::vector<std::string> names;
  for (const CommandType *type : stack)
    names.push_back(type->getCommandName());
  return joined(names, " ");
}

std::string titleOf(HelpGenerator::Section::Header header) {
  switch (header) {
  case HelpGenerator::Section::Header::positionalArguments:
    return "ARGUMENTS";
  case HelpGenerator::Section::Header::subcommands:
    return "SUBCOMMANDS";
  case HelpGenerator::Section::Header::options:
    return "OPTIONS";
  }
  return "";
}

} // namespace

std::string usageString(const std::vector<const CommandType *> &commandStack) {
  assert(!commandStack.empty() && "a help needs a command");
  const CommandType &current = *commandStack.back();
  std::string text =
      UsageGenerator(toolNameOf(commandStack), current.makeArgumentSet())
          .synopsis();
  if (!current.getConfiguration().subcommands.empty()) {
    if (!text.empty() && text.back() != ' ')
      text += " ";
    text += "<subcommand>";
  }
  return text;
}

HelpGenerator::HelpGenerator(std::vector<const CommandType *> stack)
    : commandStack(std::move(stack)) {
  assert(!commandStack.empty() && "a help needs a command");
  const CommandType &current = *commandStack.back();
  const CommandConfiguration &configuration = current.getConfiguration();

  abstract = configuration.abstract;
  if (!configuration.discussion.empty()) {
    if (!abstract.empty())
      abstract += "\n";
    abstract += configuration.discussion + "\n";
  }
  usage.components = {usageString(commandStack)};

  std::vector<Section::Element> positionalElements;
  std::vector<Section::Element> optionElements;
  for (const CommandType *command : commandStack) {
    ArgumentSet set = command->makeArgumentSet();
    std::vector<const ArgumentDefinition *> definitions = set.definitions();
    std::size_t i = 0;
    while (i < definitions.size()) {
      const ArgumentDefinition &definition = *definitions[i];
      if (definition.help.isHidden()) {
        ++i;
        continue;
      }
      Section::Element element;
      if (!definition.help.isComposite) {
        element.label = definition.synopsisForHelp().value_or("");
        std::vector<std::string> parts;
        if (definition.help.help && !definition.help.help->abstract.empty())
          parts.push_back(definition.help.help->abstract);
        if (definition.help.defaultValue &&
            !definition.help.defaultValue->empty())
          parts.push_back("(default: " + *definition.help.defaultValue + ")");
        element.abstract = joined(parts, " ");
        ++i;
      } else {
        std::size_t end = i;
        std::vector<std::string> labels;
        std::string firstAbstract;
        while (end < definitions.size() &&
               definitions[end]->help.keys == definition.help.keys) {
          labels.push_back(definitions[end]->synopsisForHelp().value_or(""));
          const auto &help = definitions[end]->help.help;
          if (firstAbstract.empty() && help && !help->abstract.empty())
            firstAbstract = help->abstract;
          ++end;
        }
        element.label = joined(labels, "/");
        std::vector<std::string> parts;
        if (!firstAbstract.empty())
          parts.push_back(firstAbstract);
        if (definition.help.defaultValue)
          parts.push_back("(default: " + *definition.help.defaultValue + ")");
        element.abstract = joined(parts, " ");
        i = end;
      }
      element.discussion =
          definition.help.help ? definition.help.help->discussion : "";

      if (definition.isPositional()) {
        positionalElements.push_back(std::move(element));
      } else if (std::find(optionElements.begin(), optionElements.end(),
                           element) == optionElements.end()) {
        optionElements.push_back(std::move(element));
      }
    }
  }

  bool hasVersion = std::any_of(
      commandStack.begin(), commandStack.end(), [](const CommandType *type) {
        return !type->getConfiguration().version.empty();
      });
  if (hasVersion)
    optionElements.push_back({"--version", "Show the version.", ""});

  std::vector<std::string> helpNames;
  for (const Name &name : commandStack.front()->getHelpNames())
    helpNames.push_back(name.synopsisString());
  std::string helpLabel = joined(helpNames, ", ");
  if (!helpLabel.empty())
    optionElements.push_back({helpLabel, "Show help information.", ""});

  std::vector<Section::Element> subcommandElements;
  for (const CommandType *subcommand : configuration.subcommands) {
    if (!subcommand->getConfiguration().shouldDisplay)
      continue;
    subcommandElements.push_back({subcommand->getCommandName(),
                                  subcommand->getConfiguration().abstract, ""});
  }

  sections.push_back(
      {Section::Header::positionalArguments, positionalElements, "", false});
  sections.push_back({Section::Header::options, optionElements, "", false});
  sections.push_back(
      {Section::Header::subcommands, subcommandElements, "", true});
}

std::string
HelpGenerator::Section::Element::rendered(std::size_t screenWidth) const {
  const std::string paddedLabel = "  " + label;
  const std::string wrappedDiscussion =
      discussion.empty()
          ? ""
          : wrapped(discussion, screenWidth, discussionIndent) + "\n";
  std::string renderedAbstract;
  if (!abstract.empty()) {
    const std::string wrappedAbstract =
        wrapped(abstract, screenWidth, labelColumnWidth);
    const std::size_t labelLength = platform::countGraphemes(paddedLabel);
    if (labelLength < labelColumnWidth) {
      std::vector<std::string_view> characters =
          platform::splitGraphemes(wrappedAbstract);
      for (std::size_t i = labelLength; i < characters.size(); ++i)
        renderedAbstract.append(characters[i]);
    } else {
      renderedAbstract = "\n" + wrappedAbstract;
    }
  }
  return paddedLabel + renderedAbstract + "\n" + wrappedDiscussion;
}

std::string HelpGenerator::Section::rendered(std::size_t screenWidth) const {
  if (elements.empty())
    return "";
  std::string text = titleOf(header) + ":\n";
  for (const Element &element : elements)
    text += element.rendered(screenWidth);
  return text;
}

std::string
HelpGenerator::rendered(std::optional<std::size_t> screenWidth) const {
  const std::size_t width =
      screenWidth
          ? *screenWidth
          : screenWidthOverride.value_or(platform::getTerminalSize().columns);

  std::vector<std::string> renderedSections;
  for (const Section &section : sections) {
    std::string text = section.rendered(width);
    if (!text.empty())
      renderedSections.push_back(std::move(text));
  }
  const std::string renderedAbstract =
      abstract.empty() ? ""
                       : wrapped("OVERVIEW: " + abstract, width, 0) + "\n\n";

  std::string helpSubcommandMessage;
  const Section &subcommands = sections.back();
  if (subcommands.isSubcommands && !subcommands.elements.empty()) {
    std::vector<std::string> names;
    for (const CommandType *type : commandStack)
      names.push_back(type->getCommandName());
    names.insert(names.begin() + 1, "help");
    helpSubcommandMessage =
        "\n  See '" + joined(names, " ") + " <subcommand>' for detailed help.";
  }

  return renderedAbstract + "USAGE: " + joined(usage.components, "\n") +
         "\n\n" + joined(renderedSections, "\n") + helpSubcommandMessage;
}

} // namespace argparse
