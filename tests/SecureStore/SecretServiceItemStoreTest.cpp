// The Secret Service store as a user meets it: each scenario runs the
// keychain in processes of their own (KeychainProbe) on a private bus, where
// the test can lock the keyring or kill its daemon.

#include "Support/PrivateSecretService.h"
#include "Support/TestSupport.h"
#include "Support/ProcessRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace securestore {
namespace {

using testsupport::Environment;
using testsupport::PrivateSecretService;

#define START_OR_SKIP(service)                                                 \
  if (!(service).isRunning())                                                  \
  GTEST_SKIP() << (service).getProblem()

// The environment of a user whose session bus is \p busAddress (none when
// empty) and whose data home is \p dataHome.
Environment sessionOf(const std::string &busAddress,
                      const std::filesystem::path &dataHome) {
  Environment environment = {{"XDG_DATA_HOME", dataHome.string()},
                             {"XDG_RUNTIME_DIR", std::nullopt},
                             {"DBUS_SESSION_BUS_ADDRESS", std::nullopt}};
  if (!busAddress.empty())
    environment["DBUS_SESSION_BUS_ADDRESS"] = busAddress;
  return environment;
}

std::pair<int, std::string> runProgram(std::vector<std::string> arguments,
                                       const Environment &environment = {}) {
  std::string program = arguments.front();
  arguments.erase(arguments.begin());
  testsupport::ProcessResult result =
      testsupport::runProcess(program, {arguments, environment});
  return {result.exitCode, result.standardOutput};
}

std::string probe(const Environment &environment,
                  std::vector<std::string> commands) {
  commands.insert(commands.begin(), {KEYCHAIN_PROBE_PATH, "kestrune-cli"});
  auto [status, output] = runProgram(commands, environment);
  EXPECT_EQ(status, 0) << output;
  return output;
}

const std::string secretServiceName = "Secret Service (default collection)";

TEST(SecretServiceItemStoreTest, ServesWhatOneProcessSavesToTheNext) {
  PrivateSecretService service;
  START_OR_SKIP(service);
  testsupport::TempDir dataHome;
  Environment session = sessionOf(service.getBusAddress(), dataHome.path());

  EXPECT_EQ(probe(session, {"describe", ",", "set", "groupIdNum", "570"}),
            "=> " + secretServiceName + "\n=> ok\n");
  EXPECT_EQ(probe(session, {"get", "groupIdNum", ",", "keys"}),
            "=> 570\n=> groupIdNum\n");
  EXPECT_FALSE(std::filesystem::exists(dataHome.path() / "kestrune-cli"))
      << "the file store was used";

  std::optional<std::filesystem::path> secretTool =
      testsupport::findProgram("secret-tool");
  if (!secretTool)
    GTEST_SKIP() << "secret-tool is not installed";
  // The item is found by the plain attributes that the README names, and
  // removed the way the README says.
  auto [found, value] =
      runProgram({secretTool->string(), "lookup", "service", "kestrune-cli",
                               "account", "groupIdNum"},
                              session);
  EXPECT_EQ(found, 0);
  EXPECT_EQ(value, "570");
  auto [cleared, output] = runProgram(
      {*secretTool, "clear", "service", "kestrune-cli"}, session);
  EXPECT_EQ(cleared, 0) << output;
  EXPECT_EQ(probe(session, {"get", "groupIdNum"}), "=> absent\n");
}

TEST(SecretServiceItemStoreTest, WithoutAUsableServiceTheFileStoreServes) {
  struct Case {
    std::string_view name;
    std::optional<PrivateSecretService::Keyring> keyring;
  };
  const Case cases[] = {
      {"no session bus", std::nullopt},
      {"a bus without a Secret Service", PrivateSecretService::Keyring::none},
      {"a Secret Service without a default collection",
       PrivateSecretService::Keyring::withoutDefault},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    std::optional<PrivateSecretService> service;
    if (c.keyring) {
      service.emplace(*c.keyring);
      START_OR_SKIP(*service);
    }
    testsupport::TempDir dataHome;
    Environment session =
        sessionOf(service ? service->getBusAddress() : "", dataHome.path());
    std::string store =
        (dataHome.path() / "kestrune-cli" / "keychain").string();
    EXPECT_EQ(probe(session, {"describe", ",", "set", "username", "alice"}),
              "=> file store at " + store + "\n=> ok\n");
    EXPECT_EQ(probe(session, {"get", "username"}), "=> alice\n");
  }
}

TEST(SecretServiceItemStoreTest, ALockedCollectionAnswersWithoutPrompting) {
  PrivateSecretService service;
  START_OR_SKIP(service);
  testsupport::TempDir dataHome;
  Environment session = sessionOf(service.getBusAddress(), dataHome.path());
  probe(session, {"set", "username", "alice"});
  service.lockDefaultCollection();

  const std::string line =
      "OSStatus error:[-25308] User interaction is not allowed.\n";
  EXPECT_EQ(
      probe(session, {"get", "username", ",", "set", "username", "bob", ",",
                      "remove", "username", ",", "contains", "username"}),
      line + "=> throws interactionNotAllowed\n" + line +
          "=> throws interactionNotAllowed\n" + line +
          "=> throws interactionNotAllowed\n=> false\n");
}

TEST(SecretServiceItemStoreTest, AVanishedServiceAnswersNotAvailable) {
  PrivateSecretService service;
  START_OR_SKIP(service);
  testsupport::TempDir dataHome;
  Environment session = sessionOf(service.getBusAddress(), dataHome.path());
  std::filesystem::path resume = dataHome.path() / "resume";

  testsupport::ChildProcess prober(
      KEYCHAIN_PROBE_PATH, {{"kestrune-cli", "set", "username", "alice", ",",
       "await", resume.string(), ",", "get", "username", ",", "set", "username",
       "bob", ",", "remove", "username"},
       session});
  EXPECT_EQ(prober.readLine(std::chrono::seconds(30)), "=> ok");
  EXPECT_EQ(prober.readLine(std::chrono::seconds(30)), "=> waiting");
  service.killDaemon();
  testsupport::writeFile(resume, "");

  const std::string line = "OSStatus error:[-25291] No keychain is available. "
                           "You may need to restart your computer.\n";
  EXPECT_EQ(prober.readAll(),
            "=> resumed\n" + line + "=> throws notAvailable\n" + line +
                "=> throws notAvailable\n" + line + "=> throws notAvailable\n");
  EXPECT_EQ(prober.wait(), 0);
}

} // namespace
} // namespace securestore
