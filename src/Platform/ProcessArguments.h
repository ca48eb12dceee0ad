#ifndef KESTRUNECLI_PLATFORM_PROCESSARGUMENTS_H
#define KESTRUNECLI_PLATFORM_PROCESSARGUMENTS_H

#include <string>
#include <vector>

namespace platform {

/// The arguments the process was started with, without the program name,
/// for callers that were not handed argc and argv.
std::vector<std::string> getProcessArguments();

} // namespace platform

#endif
