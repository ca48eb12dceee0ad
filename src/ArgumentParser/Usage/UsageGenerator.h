#ifndef KESTRUNECLI_ARGUMENTPARSER_USAGE_USAGEGENERATOR_H
#define KESTRUNECLI_ARGUMENTPARSER_USAGE_USAGEGENERATOR_H

#include "ArgumentParser/Parsing/ArgumentSet.h"

#include <string>

namespace argparse {

/// The one-line usage of a command: its name and its arguments' synopses.
class UsageGenerator {
public:
  /// Entries from this count on are shown as " <options>" instead.
  static constexpr std::size_t maxSynopsisEntries = 12;

  UsageGenerator(std::string toolName, ArgumentSet definition)
      : toolName(std::move(toolName)), definition(std::move(definition)) {}

  /// The tool name followed by the shown arguments' synopses, or by
  /// " <options>" when there are 13 or more of them.
  std::string synopsis() const;

private:
  std::string toolName;
  ArgumentSet definition;
};

} // namespace argparse

#endif
