#ifndef KESTRUNECLI_PLATFORM_MODULE_H
#define KESTRUNECLI_PLATFORM_MODULE_H

#include <string>
#include <string_view>

namespace platform {

/// The entry point \p symbol of the program's own module \p file (a file
/// name such as "kestrune-secret-service.so"), loading it on first use and
/// keeping it for the rest of the process. An installed program finds its
/// modules in a folder beside its own; one that runs from the build tree,
/// where the build put them. Absent (nullptr) when the module is missing or
/// lacks the entry, with the reason in \p problem.
///
/// Modules keep the libraries that few runs need out of the others' start:
/// only the runs that call into one load it and what it links.
void *findModuleEntry(std::string_view file, const char *symbol,
                      std::string &problem);

} // namespace platform

#endif
