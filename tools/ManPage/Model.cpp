#include "ManPage/Model.h"

#include "ArgumentParser/ArgumentParser.h"
#include "ArgumentParser/Usage/HelpGenerator.h"
#include "KestruneCLI/Config/ConfigController.h"
#include "KestruneCLI/Helpers/CliError.h"
#include "KestruneCLI/KestruneCLI.h"
#include "SecureStore/ItemStore.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace manpage {

namespace {

using argparse::ArgumentDefinition;
using argparse::CommandType;

// The code point at \p i of UTF-8 \p text, and the number of its bytes.
std::pair<std::uint32_t, std::size_t> codePointAt(const std::string &text,
                                                  std::size_t i) {
  const auto byte = [&](std::size_t k) {
    return static_cast<std::uint8_t>(k < text.size() ? text[k] : 0);
  };
  const std::uint8_t lead = byte(i);
  if (lead < 0x80)
    return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  std::uint32_t value = lead & (0x7F >> length);
  for (std::size_t k = 1; k < length; ++k)
    value = (value << 6) | (byte(i + k) & 0x3F);
  return {value, length};
}

bool isPictograph(std::uint32_t c) {
  return (c >= 0x2190 && c <= 0x2BFF) || (c >= 0xFE00 && c <= 0xFE0F) ||
         c == 0x200D || c >= 0x1F000;
}

std::string trimmed(const std::string &text) {
  const auto first = text.find_first_not_of(" \t\n");
  if (first == std::string::npos)
    return {};
  return text.substr(first, text.find_last_not_of(" \t\n") - first + 1);
}

std::vector<std::string> displayNames(std::vector<argparse::Name> names) {
  std::vector<std::string> texts;
  for (const argparse::Name &name : argparse::sortedForDisplay(names))
    texts.push_back(name.synopsisString());
  return texts;
}

// The help option, with the abstract the help text gives it.
Option helpOption(const std::vector<const CommandType *> &stack) {
  std::string label;
  for (const argparse::Name &name : stack.front()->getHelpNames())
    label += (label.empty() ? "" : ", ") + name.synopsisString();
  Option help{displayNames(stack.front()->getHelpNames()), {}, {}, false};
  const argparse::HelpGenerator generator(stack);
  for (const auto &section : generator.getSections())
    for (const auto &element : section.elements)
      if (element.label == label)
        help.abstract = plainText(element.abstract);
  return help;
}

Command describeCommand(const std::vector<const CommandType *> &stack) {
  const CommandType &type = *stack.back();
  Command command{type.getCommandName(),
                  plainText(type.getConfiguration().abstract),
                  {}};
  const argparse::ArgumentSet set = type.makeArgumentSet();
  for (const ArgumentDefinition *definition : set.definitions()) {
    if (definition->help.isHidden())
      continue;
    // The page and the scripts know named arguments only: fail the build
    // rather than leave a new positional argument undocumented.
    if (definition->isPositional())
      throw std::logic_error("positional arguments are not documented: " +
                             definition->valueName());
    Option option;
    option.names = displayNames(definition->names);
    if (!definition->isNullary())
      option.valueName = definition->valueName();
    if (definition->help.help)
      option.abstract = plainText(definition->help.help->abstract);
    option.required =
        !definition->help.has(ArgumentDefinition::Help::isOptional);
    command.options.push_back(std::move(option));
  }
  command.options.push_back(helpOption(stack));
  return command;
}

// The message of a failure without its "Error: " lead and without the note
// that follows a blank line.
std::string meaningOf(const std::string &message) {
  std::string text = trimmed(message);
  text = text.substr(0, text.find("\n\n"));
  text = plainText(text);
  for (const char *lead : {"Error: ", "ERROR: "})
    if (text.starts_with(lead))
      text.erase(0, std::string(lead).size());
  return text;
}

std::vector<ExitStatus> exitStatuses() {
  std::vector<ExitStatus> rows{
      {0, "", "Success: the command did its work, or printed help or the "
              "version."},
      {argparse::ExitCode::validationFailure.rawValue, "",
       "The command line is wrong: an unknown option, a missing or invalid "
       "value, or an extra argument. The message and the usage go to "
       "standard error."},
  };
#define KESTRUNE_ROW_X(name, label, pre, post, code)                            \
  rows.push_back({code, #name, meaningOf(pre "<" #label ">" post)});
#define KESTRUNE_ROW_Y(name, text, code)                                       \
  rows.push_back({code, #name, meaningOf(text)});
  KESTRUNE_CLI_ERROR_CASES(KESTRUNE_ROW_X, KESTRUNE_ROW_Y)
#undef KESTRUNE_ROW_X
#undef KESTRUNE_ROW_Y
  std::stable_sort(rows.begin(), rows.end(),
                   [](const ExitStatus &a, const ExitStatus &b) {
                     return a.code < b.code;
                   });
  return rows;
}

// The file store's path with the data home, or the home, given by name.
std::string fileStorePath(const char *xdgDataHome, const char *home,
                          const std::string &marker,
                          const std::string &shown) {
  ::setenv("HOME", home, 1);
  if (xdgDataHome)
    ::setenv("XDG_DATA_HOME", xdgDataHome, 1);
  else
    ::unsetenv("XDG_DATA_HOME");
  std::string path = securestore::defaultFileStorePath().string();
  return shown + path.substr(marker.size());
}

} // namespace

std::string plainText(const std::string &text) {
  std::string plain;
  bool blank = false;
  for (std::size_t i = 0; i < text.size();) {
    const auto [c, length] = codePointAt(text, i);
    if (c == ' ' || c == '\t' || c == '\n') {
      blank = true;
    } else if (!isPictograph(c)) {
      if (blank && !plain.empty())
        plain += ' ';
      blank = false;
      plain.append(text, i, length);
    }
    i += length;
  }
  return plain;
}

Tool describeTool() {
  using kestrune::KestruneCLI;
  const CommandType *root = &argparse::commandType<KestruneCLI>();
  Tool tool;
  tool.root = describeCommand({root});
  for (const CommandType *subcommand : root->getConfiguration().subcommands)
    if (subcommand->getConfiguration().shouldDisplay)
      tool.subcommands.push_back(describeCommand({root, subcommand}));
  tool.exitStatuses = exitStatuses();
  tool.otherFailureCode = argparse::ExitCode::failure.rawValue;
  tool.fileStoreUnderDataHome = fileStorePath("/XDG_DATA_HOME", "/HOME",
                                              "/XDG_DATA_HOME", "$XDG_DATA_HOME");
  tool.fileStoreUnderHome = fileStorePath(nullptr, "/HOME", "/HOME", "~");
  tool.accountService = std::string(kestrune::accountService);
  tool.bundlePlist = std::string(kestrune::TivrelOSXUtils::defaultBundlePath) +
                     "/Contents/Info.plist";
  return tool;
}

} // namespace manpage
