#ifndef KESTRUNECLI_HELPERS_DARWINPROTOCOL_H
#define KESTRUNECLI_HELPERS_DARWINPROTOCOL_H

#include <cstdint>

namespace kestrune {

/// How the tool ends its process. Controllers hold a reference to an
/// implementation so that tests can give one that records and returns.
class DarwinProtocol {
public:
  virtual ~DarwinProtocol();
  /// Ends the process with \p code. The production implementation never
  /// returns; callers stay in a defined place when a test one does.
  virtual void exitCode(std::int32_t code) const = 0;
};

} // namespace kestrune

#endif
