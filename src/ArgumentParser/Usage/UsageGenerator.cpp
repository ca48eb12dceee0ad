#include "ArgumentParser/Usage/UsageGenerator.h"

namespace argparse {

std::string UsageGenerator::synopsis() const {
  std::vector<std::string> entries = definition.synopsis();
  if (entries.empty())
    return toolName;
  if (entries.size() > maxSynopsisEntries)
    return toolName + " <options>";
  std::string text = toolName;
  for (const std::string &entry : entries)
    text += " " + entry;
  return text;
}

} // namespace argparse
