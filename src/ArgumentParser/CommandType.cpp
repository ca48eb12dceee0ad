#include "ArgumentParser/CommandType.h"

#include "ArgumentParser/Errors.h"
#include "ArgumentParser/Usage/StringExtensions.h"

#include <algorithm>

namespace argparse {

void ParsableCommandBase::run() {
  throw CleanExit::helpRequest(&getCommandType());
}

std::string CommandType::getCommandName() const {
  if (getConfiguration().commandName)
    return *getConfiguration().commandName;
  if (derivedCommandName)
    return *derivedCommandName;
  return convertedToSnakeCase(typeName, "-");
}

std::vector<Name> CommandType::getHelpNames() const {
  std::vector<Name> names =
      getConfiguration().helpNames.makeNames(InputKey{"help"});
  std::stable_sort(names.begin(), names.end(),
                   [](const Name &a, const Name &b) {
                     return a.synopsisString() > b.synopsisString();
                   });
  return names;
}

} // namespace argparse
