#include "KestruneCLI/Helpers/DarwinWrapper.h"

#include "Platform/StandardOutput.h"

#include <cstdlib>

namespace kestrune {

DarwinProtocol::~DarwinProtocol() = default;

void DarwinWrapper::exitCode(std::int32_t code) const { std::exit(code); }

const DarwinWrapper &DarwinWrapper::shared() {
  static const DarwinWrapper wrapper;
  return wrapper;
}

void reportError(const CliError &error, const DarwinProtocol &darwin) {
  platform::printLine(error.errorDescription());
  darwin.exitCode(error.code());
}

} // namespace kestrune
