#include "KestruneCLI/Config/ConfigController.h"
#include "Support/Texts.h"

#include "Support/Doubles.h"
#include "Support/MemoryItemStore.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>

// The account operations where the built tool can't be driven: a store that
// fails, a lookup that gives neither a number nor an error, and an exit that
// returns (the code behind it must stay where it is defined to). The usual
// paths run on the built binary against the console simulator
// (tests/EndToEnd).

namespace {

using kestrune::ConfigController;
using Items = std::map<std::string, std::string>;
using Operation = securestore::MemoryItemStore::Operation;

const Items account = {{"username", "admin"}, {"password", "pw"},
                       {"apiKey", "key"},     {"hostname", "https://h"},
                       {"groupId", "ACME"},   {"groupIdNum", "570"}};

/// The account with \p changes; an empty value leaves the item out.
Items with(Items items, const Items &changes) {
  for (const auto &[key, value] : changes)
    items[key] = value;
  std::erase_if(items, [](const auto &item) { return item.second.empty(); });
  return items;
}

const std::string ioFailure = "OSStatus error:[-36] I/O error (bummers)\n";
using texts::saved;
using texts::signedIn;
using texts::signedOut;

const Items nothing;

using Fault = std::function<void(securestore::MemoryItemStore &)>;
Fault failing(Operation operation, std::string key) {
  return [=](securestore::MemoryItemStore &store) {
    store.answerForAccount(operation, key, -36);
  };
}
const Fault noFault;
const Fault nextReadFails = [](securestore::MemoryItemStore &store) {
  store.answerNext(Operation::copyMatching, -36);
};

using Run = std::function<void(ConfigController &)>;
const Run signIn = [](ConfigController &controller) {
  controller.signIn({"admin", "pw", "key", "https://h", "ACME", std::nullopt});
};
const Run signOut = [](ConfigController &controller) { controller.signOut(); };
const Run list = [](ConfigController &controller) { controller.listInfo(); };
const Run editGroup = [](ConfigController &controller) {
  controller.editGroupId("OTHER");
};

struct Case {
  const char *name;
  Items stored;
  Fault fault;
  std::optional<std::int64_t> lookup; // the group number; none: nothing
  Run operation;
  std::string printed; // with the spinner made readable
  int exitCode;        // 0: the exit wasn't asked for
  Items storedAfter;
  Items storedDuringLookup = {}; // by another run, while the console answers
};

TEST(AccountOperationsTest, StoreFaultsSilentLookupsAndReturningExits) {
  const Case cases[] = {
      {"signed in already, the exit returns: refused, then signed in",
       with(account, {{"username", "someone"}}), noFault, 570, signIn,
       "<hide><clear><show><cr>\n❗️ERROR: You have already signed in as: "
       "someone \n\n<show>" +
           signedIn + saved,
       20, account},
      {"a lookup that gives nothing stores nothing", nothing, noFault,
       std::nullopt, signIn,
       "<hide>\n❗️ERROR: Unknown error while fetching group id\n<show>", 18,
       nothing},
      {"a store that can't be read counts as nobody signed in",
       with(account, {{"username", "someone"}}), nextReadFails, 570, signIn,
       "<hide>" + ioFailure + "<clear><show><cr><show>" + signedIn + saved, 0,
       account},
      {"a failed save is told, leaves the store as it was, and exits 0",
       nothing, failing(Operation::addItem, "hostname"), 570, signIn,
       "<hide><clear><show><cr><show>" + signedIn + ioFailure +
           "❗️Error: Unable to save user info in macOS Keychain: I/O error "
           "(bummers)\n\n",
       0, nothing},
      {"signed out already, the exit returns: the removals still run",
       with(account, {{"username", ""}}), noFault, std::nullopt, signOut,
       "\n❗️Error: You have signed out already.\n" + signedOut, 17,
       nothing},
      {"a removal that fails ends the sign-out and puts back what went",
       account, failing(Operation::deleteItems, "hostname"), std::nullopt,
       signOut,
       ioFailure + "\n❗️Error: Unable to signout - I/O error (bummers)\n",
       21, account},
      {"a read that fails while listing reads as a missing item", account,
       failing(Operation::copyMatching, "groupId"), std::nullopt, list,
       ioFailure + "\n❗️Error: Group ID not found in the keychain. Please "
                   "login again\n",
       24, account},
      {"a group change whose lookup gives nothing changes nothing", account,
       noFault, std::nullopt, editGroup, texts::groupNotStored, 19, account},
      {"a group change whose number can't be written keeps the old pair",
       account, failing(Operation::updateItems, "groupIdNum"), 571, editGroup,
       ioFailure + texts::groupNotStored, 19, account},
      {"a group change into an account replaced meanwhile changes nothing",
       account,
       noFault,
       571,
       editGroup,
       texts::groupNotStored,
       19,
       with(account, {{"username", "bob"}}),
       {{"username", "bob"}}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    securestore::MemoryItemStore store;
    securestore::Keychain keychain =
        kestrune::makeAccountKeychain().withItemStore(store);
    for (const auto &[key, value] : c.stored)
      keychain.set(value, key);
    if (c.fault)
      c.fault(store);
    testsupport::ScriptedConsole console;
    console.groupIdNum = c.lookup;
    console.duringLookup = [&] {
      for (const auto &[key, value] : c.storedDuringLookup)
        keychain.set(value, key);
    };
    testsupport::RecordingExit exit;
    ConfigController controller(console, keychain, exit);

    std::string printed =
        testsupport::captureStdout([&] { c.operation(controller); });

    EXPECT_EQ(testsupport::readSpinnerTranscript(printed), c.printed);
    EXPECT_EQ(exit.codes,
              c.exitCode ? std::vector{c.exitCode} : std::vector<int>());
    store.clearAnswers();
    Items stored;
    for (const auto &[key, value] : account)
      if (std::optional<std::string> read = keychain[key].read())
        stored[key] = *read;
    EXPECT_EQ(stored, c.storedAfter);
  }
}

} // namespace
