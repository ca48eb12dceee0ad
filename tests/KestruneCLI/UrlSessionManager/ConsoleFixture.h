#ifndef KESTRUNECLI_TESTS_URLSESSIONMANAGER_CONSOLEFIXTURE_H
#define KESTRUNECLI_TESTS_URLSESSIONMANAGER_CONSOLEFIXTURE_H

#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionUtil.h"
#include "MockConsole/MockConsole.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>

namespace urlsessiontest {

/// What an operation with a number result handed to its completion.
struct NumberOutcome {
  std::optional<std::int64_t> value;
  std::optional<kestrune::CliError> error;
  int calls = 0;
  bool onCallingThread = true;
  std::string printed;
};

/// What the application creation handed to its completion.
struct ErrorOutcome {
  std::optional<kestrune::CliError> error;
  int calls = 0;
  bool onCallingThread = true;
  std::string printed;
};

/// Gives no session, as when the account's header fields can't be made.
class NoSessionUtil final : public kestrune::UrlSessionUtilProtocol {
public:
  std::optional<platform::HttpSession>
  getUrlSession(const kestrune::ConfigModel &) const override {
    return std::nullopt;
  }
};

inline mockconsole::Answer answerWith(int status, std::string body,
                                      mockconsole::Headers headers = {}) {
  mockconsole::Answer answer;
  answer.status = status;
  answer.body = std::move(body);
  answer.headers = std::move(headers);
  return answer;
}

inline mockconsole::Answer droppedConnection(std::uint64_t afterBodyBytes) {
  mockconsole::Answer answer;
  answer.dropAfterBodyBytes = afterBodyBytes;
  return answer;
}

/// A console with the account admin / pa:ss / KEY and the group ACME = 42,
/// and the account's ConfigModel pointing at it.
class ConsoleFixture : public testing::Test {
protected:
  void SetUp() override {
    console.addAccount({"admin", "pa:ss", "KEY"});
    console.mapGroup("ACME", 42);
    console.start();
    config = {"admin", "pa:ss", "KEY", console.getBaseUrl(), "ACME", 42};
  }

  std::string groupApiStr() const {
    return config.hostname + "/api/system/groups/search?groupID=";
  }

  NumberOutcome fetchGroup(const std::string &groupId,
                           const kestrune::UrlSessionUtilProtocol &util =
                               kestrune::UrlSessionUtil::shared()) {
    NumberOutcome outcome;
    std::thread::id caller = std::this_thread::get_id();
    outcome.printed = testsupport::captureStdout([&] {
      manager.fetchGroupIdNum(
          config, groupApiStr(), groupId, util, [&](auto value, auto error) {
            outcome.value = value;
            outcome.error = error;
            ++outcome.calls;
            outcome.onCallingThread = std::this_thread::get_id() == caller;
          });
    });
    return outcome;
  }

  NumberOutcome uploadBlob(const std::string &path, const std::string &name,
                           kestrune::BlobType type,
                           const kestrune::UrlSessionUtilProtocol &util =
                               kestrune::UrlSessionUtil::shared()) {
    NumberOutcome outcome;
    std::thread::id caller = std::this_thread::get_id();
    outcome.printed = testsupport::captureStdout([&] {
      manager.doUploadBlob(
          config, path, name, util, type, [&](auto value, auto error) {
            outcome.value = value;
            outcome.error = error;
            ++outcome.calls;
            outcome.onCallingThread = std::this_thread::get_id() == caller;
          });
    });
    return outcome;
  }

  /// Uploads \p bytes as a file named \p name from a temporary directory.
  NumberOutcome
  uploadBytes(const std::string &bytes, const std::string &name = "App.pkg",
              kestrune::BlobType type = kestrune::BlobType::installer) {
    std::filesystem::path path = directory.path() / "upload";
    testsupport::writeFile(path, bytes);
    return uploadBlob(path.string(), name, type);
  }

  ErrorOutcome createApplication(std::int64_t metadataValue,
                                 std::int64_t installerValue,
                                 std::optional<std::int64_t> iconValue,
                                 const kestrune::UrlSessionUtilProtocol &util =
                                     kestrune::UrlSessionUtil::shared()) {
    ErrorOutcome outcome;
    std::thread::id caller = std::this_thread::get_id();
    outcome.printed = testsupport::captureStdout([&] {
      manager.doFinalUpload(config, metadataValue, installerValue, iconValue,
                            util, [&](auto error) {
                              outcome.error = error;
                              ++outcome.calls;
                              outcome.onCallingThread =
                                  std::this_thread::get_id() == caller;
                            });
    });
    return outcome;
  }

  /// A base URL on which nothing listens.
  static std::string closedBaseUrl() {
    mockconsole::MockConsole closed;
    closed.start();
    std::string url = closed.getBaseUrl();
    closed.stop();
    return url;
  }

  mockconsole::MockConsole console;
  kestrune::ConfigModel config;
  const kestrune::UrlSessionManager &manager =
      kestrune::UrlSessionManager::shared();
  testsupport::TempDir directory;
};

} // namespace urlsessiontest

#endif
