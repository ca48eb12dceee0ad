#ifndef KESTRUNECLI_TESTS_SECURESTORE_STORETESTING_H
#define KESTRUNECLI_TESTS_SECURESTORE_STORETESTING_H

#include "SecureStore/Keychain.h"
#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace securestore {

/// What \p action printed, then "=> " and the text it returned, or
/// "throws " and the case of the Status (or the description of the other
/// error) that it threw.
inline std::string outcomeOf(const std::function<std::string()> &action) {
  std::string outcome;
  std::string printed = testsupport::captureStdout([&] {
    try {
      outcome = action();
    } catch (const Status &status) {
      outcome = "throws " + std::string(status.caseName());
    } catch (const Error &error) {
      outcome = "throws " + error.localizedDescription();
    }
  });
  return printed + "=> " + outcome;
}

/// The outcomes of \p actions, one after the other.
inline std::string
outcomesOf(std::initializer_list<std::function<std::string()>> actions) {
  std::string outcomes;
  for (const std::function<std::string()> &action : actions)
    outcomes += outcomeOf(action);
  return outcomes;
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
