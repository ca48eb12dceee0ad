#ifndef KESTRUNECLI_TESTS_CONFIG_NOCONSOLE_H
#define KESTRUNECLI_TESTS_CONFIG_NOCONSOLE_H

#include "KestruneCLI/Config/ConfigController.h"

#include <cstdlib>

namespace kestrune {

/// A console client for tests of the account's persistence, which never
/// reach the console: any call is a fault of the code under test.
class NoConsole final : public URLSessionManagerProtocol {
public:
  void fetchGroupIdNum(const ConfigModel &, const std::string &,
                       const std::string &, const UrlSessionUtilProtocol &,
                       const NumberCompletion &) const override {
    std::abort();
  }
  void doUploadBlob(const ConfigModel &, const std::string &,
                    const std::string &, const UrlSessionUtilProtocol &,
                    BlobType, const NumberCompletion &) const override {
    std::abort();
  }
  void doFinalUpload(const ConfigModel &, std::int64_t, std::int64_t,
                     std::optional<std::int64_t>,
                     const UrlSessionUtilProtocol &,
                     const ErrorCompletion &) const override {
    std::abort();
  }
};

/// A process exit for the same tests: never called either.
class NoExit final : public DarwinProtocol {
public:
  void exitCode(std::int32_t) const override { std::abort(); }
};

/// Reaches the controller's private save, as a sign-in does after its
/// lookup.
class ConfigControllerTestAccess {
public:
  static void save(ConfigController &controller,
                   std::optional<ConfigModel> model) {
    controller.configModel = std::move(model);
    controller.saveToKeychain();
  }
};

} // namespace kestrune

#endif
