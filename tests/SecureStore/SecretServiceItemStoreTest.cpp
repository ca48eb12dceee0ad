// The store a process chooses, as a user meets it: StoreProbe processes on a
// private bus, where the test can leave the Secret Service out, lock its
// keyring or kill its daemon.

#include "StoreTesting.h"
#include "Support/PrivateSecretService.h"

#include <csignal>
#include <filesystem>

namespace securestore {
namespace {

namespace fs = std::filesystem;
using testsupport::Environment;
using testsupport::PrivateSecretService;
using Keyring = PrivateSecretService::Keyring;

// The environment of a user whose home is \p home, with no bus but \p bus.
Environment sessionOf(const fs::path &home, const std::string &bus,
                      std::optional<std::string> dataHome) {
  return {{"HOME", home.string()},
          {"XDG_DATA_HOME", dataHome},
          {"XDG_RUNTIME_DIR", std::nullopt},
          {"DBUS_SESSION_BUS_ADDRESS",
           bus.empty() ? std::nullopt : std::optional<std::string>(bus)}};
}

TEST(StoreChoiceTest, TheNextProcessReadsWhatOneSavedInTheStoreItChose) {
  // Paths from "/" lie in a fresh folder, where HOME is "/home"; a store
  // that is no path is the Secret Service.
  struct Case {
    std::optional<Keyring> keyring; // no bus at all when absent
    std::optional<std::string> dataHome, store;
  };
  const std::string underHome = "/home/.local/share/kestrune-cli/keychain";
  const Case cases[] = {
      {std::nullopt, "/data", "/data/kestrune-cli/keychain"},
      {std::nullopt, std::nullopt, underHome},
      {std::nullopt, "", underHome},
      {std::nullopt, "relative/data", underHome},
      {Keyring::none, "/data", "/data/kestrune-cli/keychain"},
      {Keyring::withoutDefault, std::nullopt, underHome},
      {Keyring::unlocked, "/data", std::nullopt},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.dataHome.value_or("(unset)"));
    std::optional<PrivateSecretService> service;
    if (c.keyring && !service.emplace(*c.keyring).isRunning())
      GTEST_SKIP() << service->getProblem();
    testsupport::TempDir root;
    auto place = [&](std::optional<std::string> path) {
      return path && path->find('/') == 0 ? root.path().string() + *path : path;
    };
    Environment session =
        sessionOf(root.path() / "home", service ? service->getBusAddress() : "",
                  place(c.dataHome));
    EXPECT_EQ(probe({"describe", ",", "set", "username", "alice"}, session),
              "=> " +
                  (c.store ? "file store at " + *place(c.store)
                           : "Secret Service (default collection)") +
                  "\n=> ok\n");
    EXPECT_EQ(probe({"get", "username", ",", "keys"}, session),
              "=> alice\n=> username \n");
    EXPECT_EQ(fs::exists(root.path() / "data"),
              c.store && c.store->find("/data") == 0);
    EXPECT_EQ(fs::exists(root.path() / "home"), c.store == underHome);
  }
}

TEST(StoreChoiceTest, SecretServiceItemsAreFoundByTheirPlainAttributes) {
  PrivateSecretService service;
  std::optional<fs::path> secretTool = testsupport::findProgram("secret-tool");
  if (!service.isRunning() || !secretTool)
    GTEST_SKIP() << "needs secret-tool and " << service.getProblem();
  testsupport::TempDir home;
  Environment session = sessionOf(home.path(), service.getBusAddress(), {});
  probe({"set", "groupIdNum", "570"}, session);
  auto secretToolSays = [&](std::vector<std::string> arguments) {
    testsupport::ProcessResult result =
        testsupport::runProcess(*secretTool, {arguments, session});
    return std::to_string(result.exitCode) + " " + result.standardOutput;
  };
  EXPECT_EQ(secretToolSays(
                {"lookup", "service", "kestrune-cli", "account", "groupIdNum"}),
            "0 570");
  EXPECT_EQ(secretToolSays({"clear", "service", "kestrune-cli"}), "0 ");
  EXPECT_EQ(probe({"get", "groupIdNum"}, session), "=> absent\n");
}

TEST(StoreChoiceTest, ALockedOrVanishedSecretServiceAnswersWithoutPrompting) {
  const std::string locked =
      "OSStatus error:[-25308] User interaction is not allowed.\n=> throws "
      "interactionNotAllowed\n";
  const std::string gone = "OSStatus error:[-25291] No keychain is available. "
                           "You may need to restart your computer.\n=> throws "
                           "notAvailable\n";
  for (bool vanish : {false, true}) {
    SCOPED_TRACE(vanish ? "vanished" : "locked");
    PrivateSecretService service;
    if (!service.isRunning())
      GTEST_SKIP() << service.getProblem();
    testsupport::TempDir home;
    fs::path resume = home.path() / "resume";
    testsupport::ChildProcess prober(
        STORE_PROBE_PATH,
        {{"set", "username", "alice", ",", "await", resume.string(), ",", "get",
          "username", ",", "set", "username", "bob", ",", "remove", "username",
          ",", "contains", "username"},
         sessionOf(home.path(), service.getBusAddress(), {})});
    EXPECT_EQ(prober.readLine(std::chrono::seconds(30)), "=> ok");
    EXPECT_EQ(prober.readLine(std::chrono::seconds(30)), "=> waiting");
    vanish ? service.killDaemon() : service.lockDefaultCollection();
    testsupport::writeFile(resume, "");
    EXPECT_EQ(prober.finish().standardOutput,
              "=> resumed\n" + (vanish ? gone + gone + gone + gone
                                       : locked + locked + locked + "=> 10\n"));
    EXPECT_EQ(prober.wait(), 0);
  }
}

} // namespace
} // namespace securestore
