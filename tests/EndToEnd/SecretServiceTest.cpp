#include "EndToEnd/Fixture.h"
#include "Support/PrivateSecretService.h"

#include <algorithm>
#include <sstream>

// The account of a user who has a Secret Service in some sessions and not in
// others: one copy, kept by the store of the run, whatever another run or
// secret-tool left behind.

namespace {

using e2e::Args;

// clang-format off
const std::string signedIn = "\n💡-------------------------------------------💡\n\tYou have signed in successfully.\n\n\n🔑Information has been successfully saved into secure macOS keychain.\n\n";
const std::string signedOut = "\n🔐-------------------------------------------🔗\n\tYou have signed out successfully.\n\n";
// clang-format on
const Args signIn = {"config", "--signin",   "-u", "alice",  "-p", "s3cret",
                     "-k",     "tenant-key", "-o", "{base}", "-g", "Org1"};
const Args upload = {"upload",        "-i", "{dir}/a.pkg", "-m",
                     "{dir}/a.plist", "-g", "Org2"};

struct Step {
  // 'f' a run without a session bus, 's' a run with the Secret Service, 'h'
  // the items named in arguments stored by hand with secret-tool (the next
  // step shows what they became).
  char by;
  Args arguments;
  std::string out;
  int code;
  // The group of the account in the file store and in the Secret Service.
  std::optional<std::string> file, service;
};

// clang-format off
const Step steps[] = {
    {'f', signIn, signedIn, 0, "Org1", {}},
    {'s', signIn, signedIn, 0, {}, "Org1"},
    {'f', signIn, signedIn, 0, "Org1", "Org1"},
    {'s', upload, e2e::uploaded({"installer", "metadata"}, "1"), 0, {}, "Org2"},
    {'f', signIn, signedIn, 0, "Org1", "Org2"},
    {'s', {"config", "--signout"}, signedOut, 0, {}, {}},
    {'h', {"password", "apiKey", "hostname", "groupId", "groupIdNum"}, "", 0, {}, {}},
    {'s', signIn, signedIn, 0, {}, "Org1"},
    {'s', {"config", "--list"}, "\n📖 Account Info:\nUsername:\t\talice\nGroup ID:\t\tOrg1\nGroup ID Number:\t570\nHostname:\t\t{base}\n\n", 0, {}, "Org1"},
    {'s', upload, e2e::uploaded({"installer", "metadata"}, "2"), 0, {}, "Org2"},
    {'s', {"config", "--signout"}, signedOut, 0, {}, {}},
};
// clang-format on

TEST(SecretServiceTest, KeepsOneCopyOfTheAccountAndUsesItemsStoredByHand) {
  testsupport::PrivateSecretService service;
  auto secretToolPath = testsupport::findProgram("secret-tool");
  if (!service.isRunning() || !secretToolPath)
    GTEST_SKIP() << "needs secret-tool and " << service.getProblem();
  const Args withBus = {testsupport::findProgram("env")->string(),
                        "DBUS_SESSION_BUS_ADDRESS=" + service.getBusAddress()};
  auto secretTool = [&](Args arguments, const std::string &input = "") {
    return testsupport::runProcess(
        *secretToolPath,
        {arguments,
         {{"DBUS_SESSION_BUS_ADDRESS", service.getBusAddress()}},
         input});
  };
  // "account=secret" of every item of the service, sorted. secret-tool
  // prints the secrets on its standard output and the attributes on its
  // standard error, item after item.
  auto inService = [&] {
    auto found = secretTool({"search", "--all", "service", "kestrune-cli"});
    std::istringstream secrets(found.standardOutput),
        attributes(found.standardError);
    std::vector<std::string> items;
    for (std::string line; std::getline(attributes, line);)
      if (line.starts_with("attribute.account = "))
        items.push_back(line.substr(20) + "=");
    std::size_t item = 0;
    for (std::string line; std::getline(secrets, line);)
      if (line.starts_with("secret = ") && item < items.size())
        items[item++] += line.substr(9);
    std::sort(items.begin(), items.end());
    return items;
  };
  e2e::Scene scene;
  testsupport::writeFile(scene.dir() / "a.pkg", "installer");
  testsupport::writeFile(scene.dir() / "a.plist", "metadata");
  for (const Step &step : steps) {
    SCOPED_TRACE(step.by + testing::PrintToString(step.arguments));
    if (step.by == 'h') {
      for (const std::string &key : step.arguments)
        secretTool({"store", "--label=by hand", "service", "kestrune-cli",
                    "account", key},
                   scene.account()[key]);
      continue;
    }
    e2e::Run run =
        scene.run(step.arguments, "", step.by == 's' ? withBus : Args{});
    EXPECT_EQ(run.out, step.out);
    EXPECT_EQ(run.code, step.code);
    EXPECT_EQ(scene.stored(),
              step.file ? scene.account(*step.file) : e2e::Items{});
    std::vector<std::string> expected;
    for (const auto &[key, value] :
         step.service ? scene.account(*step.service) : e2e::Items{})
      expected.push_back(key + "=" + value);
    EXPECT_EQ(inService(), expected);
  }
}

// Runs that never reach the Secret Service load neither libsecret nor GLib,
// even where one runs; the last row shows that the test sees them load.
TEST(SecretServiceTest, IsLoadedOnlyByRunsThatUseIt) {
  testsupport::PrivateSecretService service;
  if (!service.isRunning())
    GTEST_SKIP() << service.getProblem();
  const std::string bus = "DBUS_SESSION_BUS_ADDRESS=" + service.getBusAddress();
  const struct {
    Args wrapper, arguments;
    int code;
    bool loads;
  } runs[] = {
      {{bus}, {"--help"}, 0, false},
      {{bus}, {"--version"}, 48, false},
      {{bus}, {"config", "--bogus"}, 64, false},
      {{}, signIn, 0, false},
      {{bus}, {"config", "--list"}, 23, true},
  };
  e2e::Scene scene;
  for (const auto &run : runs) {
    SCOPED_TRACE(testing::PrintToString(run.arguments));
    Args wrapper = {testsupport::findProgram("env")->string(), "LD_DEBUG=libs"};
    wrapper.insert(wrapper.end(), run.wrapper.begin(), run.wrapper.end());
    e2e::Run ran = scene.run(run.arguments, "", wrapper);
    EXPECT_EQ(ran.code, run.code);
    for (const char *library : {"libsecret-1.so", "libglib-2.0.so"})
      EXPECT_EQ(ran.err.find(library) != std::string::npos, run.loads)
          << library;
  }
}

} // namespace
