#ifndef KESTRUNECLI_TESTS_SUPPORT_PRIVATESECRETSERVICE_H
#define KESTRUNECLI_TESTS_SUPPORT_PRIVATESECRETSERVICE_H

#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <memory>
#include <string>

namespace testsupport {

/// A D-Bus bus of the test's own, with no service activation, and on it a
/// GNOME Keyring Secret Service that the test may lock or kill without
/// disturbing any other test. Both are killed at the end.
class PrivateSecretService {
public:
  enum class Keyring {
    /// A "login" collection, unlocked and the default.
    unlocked,
    /// No keyring daemon at all.
    none,
    /// The daemon without any collection but the session one.
    withoutDefault
  };

  /// Starts the bus and, unless \p keyring is none, the daemon. When a
  /// program is missing or something does not come up, isRunning() is false
  /// and getProblem() says why.
  explicit PrivateSecretService(Keyring keyring = Keyring::unlocked);

  bool isRunning() const noexcept { return problem.empty(); }
  const std::string &getProblem() const noexcept { return problem; }
  const std::string &getBusAddress() const noexcept { return busAddress; }

  /// Locks the default collection, as a screen lock would.
  void lockDefaultCollection();
  /// Ends the keyring daemon: the service vanishes from the bus.
  void killDaemon();

private:
  TempDir home;
  std::string busAddress;
  std::string problem;
  std::unique_ptr<ChildProcess> bus;
  std::unique_ptr<ChildProcess> daemon;
};

} // namespace testsupport

#endif
