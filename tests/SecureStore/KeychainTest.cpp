// How the Keychain treats the answers of a store that the real stores can't
// be driven into giving: a memory store answers each row's script, then the
// row's operation runs. Each row: script, operation, then what was printed,
// "=> " and the outcome, and the value left under the key if any.
//
// Script words: an operation letter (c copyMatching, a addItem, u
// updateItems, d deleteItems) and the status, then "=<bytes>" for a result
// of bytes, "{}" for an empty attribute map or "{label}" for one with a
// label; "x" makes the access control fail without an error, "X" with one.

#include "SecureStore/SecConstants.h"
#include "StoreTesting.h"
#include "Support/MemoryItemStore.h"

#include <sstream>

namespace securestore {
namespace {

using Operation = MemoryItemStore::Operation;

void script(MemoryItemStore &store, const std::string &words) {
  std::istringstream in(words);
  for (std::string word; in >> word;) {
    if (word == "x" || word == "X") {
      store.failAccessControl(
          word == "x" ? std::nullopt
                      : std::optional(PlatformError(
                            "NSOSStatusErrorDomain", -4,
                            {{"NSLocalizedDescription", "no biometry here"}})));
      continue;
    }
    std::size_t end = word.find_first_of("={", 1);
    OSStatus status = std::stoi(word.substr(1, end - 1));
    CopyResult result;
    if (end != std::string::npos && word[end] == '=')
      result = toBytes(word.substr(end + 1));
    else if (end != std::string::npos)
      result = word == "c0{}"
                   ? Dictionary{}
                   : Dictionary{{kSecAttrLabel, std::string("shown")}};
    const std::string letters = "caud";
    const Operation operations[] = {Operation::copyMatching, Operation::addItem,
                                    Operation::updateItems,
                                    Operation::deleteItems};
    store.answerNext(operations[letters.find(word[0])], status, result);
  }
}

std::string act(const Keychain &k, const std::string &operation) {
  if (operation == "get")
    return k.get("k").value_or("absent");
  if (operation == "getData")
    return toText(k.getData("k").value_or(Bytes{}));
  if (operation == "contains")
    return std::to_string(k.contains("k", true)) +
           std::to_string(k.contains("k", false));
  if (operation == "read")
    return k["k"].read().value_or("absent");
  if (operation == "keys")
    return std::to_string(k.allKeys().size());
  if (operation == "attributes")
    return k.get("k", true, [](std::optional<Attributes> attributes) {
      return attributes ? attributes->label().value_or("?") : "none";
    });
  if (operation == "set")
    k.set("v", "k");
  else if (operation == "remove")
    k.remove("k");
  else if (operation == "removeAll")
    k.removeAll();
  else if (operation == "write")
    k["k"] = std::string("v");
  else if (operation == "erase")
    k["k"] = std::nullopt;
  else if (operation == "policy")
    k.accessibility(Accessibility::afterFirstUnlock,
                    AuthenticationPolicy::biometryAny)
        .set("v", "k");
  return "ok";
}

const std::string gone = "OSStatus error:[-25291] No keychain is available. "
                         "You may need to restart your computer.\n";

const struct Row {
  std::string script, operation, expected;
} rows[] = {
    {"c0=abc", "get", "=> abc"},
    {"c-25300", "get", "=> absent"},
    {"c-25291", "get", gone + "=> throws notAvailable"},
    {"c-128", "get", "=> throws userCanceled"},
    {"c42", "get",
     "OSStatus error:[-99999] Unexpected error has occurred.\n=> throws "
     "unexpectedError"},
    {"c0{}", "get", "=> throws unexpectedError"},
    {"c0", "get", "=> throws unexpectedError"},
    {"c0=\xC3\x28", "get",
     "failed to convert data to string\n=> throws conversionError"},
    {"c0=\xC3\x28", "getData", "=> \xC3\x28"},
    {"c0 u0", "set", "=> ok"},
    {"c-25308 u0", "set", "=> ok"},
    {"c-25300", "set", "=> ok [v]"},
    {"c-25291", "set", gone + "=> throws notAvailable"},
    {"a-25291", "set", gone + "=> throws notAvailable"},
    {"c0 u-25291", "set", gone + "=> throws notAvailable"},
    {"d-25291", "remove", gone + "=> throws notAvailable"},
    {"d-128", "removeAll", "=> throws userCanceled"},
    {"c-25308 c-25308", "contains", "=> 10"},
    {"c-25291", "contains", gone + "=> throws notAvailable"},
    {"c-25291", "read", gone + "=> absent"},
    {"a-25291", "write", gone + "=> ok"},
    {"d-25291", "erase", gone + "=> ok"},
    {"c0{label}", "attributes", "=> shown"},
    {"", "attributes", "=> none"},
    {"c0=v", "attributes", "=> throws unexpectedError"},
    {"c-25291", "keys", gone + "=> 0"},
    {"x", "policy",
     "Unexpected error has occurred.\n=> throws unexpectedError"},
    {"X", "policy", "no biometry here\n=> throws no biometry here"},
};

TEST(KeychainTest, TreatsEachAnswerOfTheStoreItsOwnWay) {
  for (const Row &row : rows) {
    SCOPED_TRACE(row.script + " " + row.operation);
    MemoryItemStore store;
    script(store, row.script);
    Keychain k = Keychain("kestrune-cli").withItemStore(store);
    std::string outcome = outcomeOf([&] { return act(k, row.operation); });
    std::optional<std::string> left = k.get("k");
    EXPECT_EQ(outcome + (left ? " [" + *left + "]" : ""), row.expected);
  }
}

} // namespace
} // namespace securestore
