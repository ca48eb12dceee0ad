#ifndef KESTRUNECLI_HELPERS_DARWINWRAPPER_H
#define KESTRUNECLI_HELPERS_DARWINWRAPPER_H

#include "KestruneCLI/Helpers/CliError.h"
#include "KestruneCLI/Helpers/DarwinProtocol.h"

namespace kestrune {

/// Ends the process through the C library's exit, which flushes stdout.
class DarwinWrapper final : public DarwinProtocol {
public:
  [[noreturn]] void exitCode(std::int32_t code) const override;
  /// The one production instance.
  static const DarwinWrapper &shared();
};

/// Reports \p error the tool's way: its message and one line break on
/// standard output, then the process ends with its code through \p darwin.
void reportError(const CliError &error, const DarwinProtocol &darwin);

} // namespace kestrune

#endif
