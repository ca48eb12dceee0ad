#include "EndToEnd/Fixture.h"
#include "Support/PrivateSecretService.h"
#include "Support/Texts.h"

// The account of a user who has a Secret Service in some sessions and not in
// others: one copy, kept by the store of the run, whatever another run or
// secret-tool left behind; and the Secret Service client loaded only by the
// runs that use it.

namespace {

// clang-format off
const std::string signedIn = texts::signedIn + texts::saved;
const std::string signedOut = texts::signedOut;
const e2e::Args signIn = {"config", "--signin", "-u", "alice", "-p", "s3cret", "-k", "tenant-key", "-o", "{base}", "-g", "Org1"};
const e2e::Args upload = {"upload", "-i", "{dir}/a.pkg", "-m", "{dir}/a.plist", "-g", "Org2"};
// clang-format on

struct Step {
  // 'f' a run without a session bus; 's' a run with the Secret Service; 'n'
  // a run beside it that needs no store; 'h' the items named in arguments
  // stored by hand with secret-tool (the next step shows what they became).
  char by;
  e2e::Args arguments;
  std::optional<std::string> out; // none: not this test's concern
  int code;
  // The group of the account in the file store and in the Secret Service.
  std::optional<std::string> file, service;
};

// clang-format off
const Step steps[] = {
    {'n', {"--help"}, {}, 0, {}, {}},
    {'n', {"--version"}, "\n❗️Error: Unable to get the version of kestrunecli\n", 48, {}, {}},
    {'n', {"config", "--bogus"}, "", 64, {}, {}},
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
    {'f', signIn, signedIn, 0, "Org1", {}},
    {'s', {"config", "--signout"}, "\n❗️Error: You have signed out already.\n", 17, {}, {}},
};
// clang-format on

TEST(SecretServiceTest, KeepsOneCopyOfTheAccountAndIsLoadedOnlyWhenUsed) {
  testsupport::PrivateSecretService service;
  auto secretTool = testsupport::findProgram("secret-tool");
  if (!service.isRunning() || !secretTool)
    GTEST_SKIP() << "needs secret-tool and " << service.getProblem();
  const std::string bus = service.getBusAddress();
  const testsupport::Environment onBus = {{"DBUS_SESSION_BUS_ADDRESS", bus}};
  // Every item of the service, account to secret; a second item with an
  // account already seen shows as "duplicate". secret-tool prints the
  // secrets on its standard output and the attributes on its standard error,
  // item after item.
  auto inService = [&] {
    auto found = testsupport::runProcess(
        *secretTool, {{"search", "--all", "service", "kestrune-cli"}, onBus});
    std::istringstream values(found.standardOutput), names(found.standardError);
    e2e::Items items;
    for (std::string name, value; std::getline(names, name);)
      if (name.starts_with("attribute.account = ")) {
        while (std::getline(values, value) && !value.starts_with("secret "))
          ;
        if (!items.emplace(name.substr(20), value.substr(9)).second)
          items["duplicate"] = name.substr(20);
      }
    return items;
  };
  e2e::Scene scene;
  testsupport::writeFile(scene.dir() / "a.pkg", "installer");
  testsupport::writeFile(scene.dir() / "a.plist", "metadata");
  for (const Step &step : steps) {
    SCOPED_TRACE(step.by + testing::PrintToString(step.arguments));
    if (step.by == 'h') {
      for (const std::string &key : step.arguments)
        testsupport::runProcess(*secretTool,
                                {{"store", "--label=by hand", "service",
                                  "kestrune-cli", "account", key},
                                 onBus,
                                 scene.account()[key]});
      continue;
    }
    // ld.so names on standard error every library it loads; GLib comes with
    // libsecret. An empty bus address is no bus.
    e2e::Run run =
        scene.run(step.arguments, "",
                  {*testsupport::findProgram("env"), "LD_DEBUG=libs",
                   "DBUS_SESSION_BUS_ADDRESS=" + (step.by == 'f' ? "" : bus)});
    EXPECT_EQ(run.out, step.out.value_or(run.out));
    EXPECT_EQ(run.code, step.code);
    EXPECT_EQ(run.err.find("libglib-2.0.so") != std::string::npos,
              step.by == 's');
    EXPECT_EQ(scene.stored(),
              step.file ? scene.account(*step.file) : e2e::Items{});
    EXPECT_EQ(inService(),
              step.service ? scene.account(*step.service) : e2e::Items{});
  }
}

} // namespace
