#ifndef KESTRUNECLI_TESTS_SECURESTORE_STORETESTING_H
#define KESTRUNECLI_TESTS_SECURESTORE_STORETESTING_H

#include "KeychainScript.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

namespace securestore {

/// What runScript prints for \p script on \p k, in this process.
inline std::string scriptOutput(const Keychain &k, const std::string &script) {
  return testsupport::captureStdout([&] { runScript(k, script); });
}

/// The standard output of StoreProbe run with \p arguments in \p environment.
inline std::string probe(std::vector<std::string> arguments,
                         const testsupport::Environment &environment = {}) {
  testsupport::ProcessResult result =
      testsupport::runProcess(STORE_PROBE_PATH, {arguments, environment});
  EXPECT_EQ(result.exitCode, 0) << result.standardError;
  return result.standardOutput;
}

} // namespace securestore

#endif
