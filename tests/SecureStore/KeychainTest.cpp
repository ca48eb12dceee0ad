// How the Keychain treats the answers of a store that the real stores can't
// be driven into giving: a memory store answers each row's script, then the
// row's command (KeychainScript.h) runs. Each row: script, command, then
// what the command printed, and the value left under the key if any.
//
// Script words: an operation letter (c copyMatching, a addItem, u
// updateItems, d deleteItems) and the status, then "=<bytes>" for a result
// of bytes or "{}" for an empty attribute map.

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
    std::size_t end = word.find_first_of("={", 1);
    OSStatus status = std::stoi(word.substr(1, end - 1));
    CopyResult result;
    if (end != std::string::npos && word[end] == '=')
      result = toBytes(word.substr(end + 1));
    else if (end != std::string::npos)
      result = Dictionary{};
    const std::string letters = "caud";
    const Operation operations[] = {Operation::copyMatching, Operation::addItem,
                                    Operation::updateItems,
                                    Operation::deleteItems};
    store.answerNext(operations[letters.find(word[0])], status, result);
  }
}

const std::string gone = "OSStatus error:[-25291] No keychain is available. "
                         "You may need to restart your computer.\n";

const struct Row {
  std::string script, operation, expected;
} rows[] = {
    {"c-25291", "get k", gone + "=> throws notAvailable"},
    {"c-128", "get k", "=> throws userCanceled"},
    {"c42", "get k",
     "OSStatus error:[-99999] Unexpected error has occurred.\n=> throws "
     "unexpectedError"},
    {"c0{}", "get k", "=> throws unexpectedError"},
    {"c0", "get k", "=> throws unexpectedError"},
    {"c0=\xC3\x28", "get k",
     "failed to convert data to string\n=> throws conversionError"},
    {"c0=\xC3\x28", "data k", "=> \xC3\x28"},
    {"c0 u0", "set k v", "=> ok"},
    {"c-25308 u0", "set k v", "=> ok"},
    {"c-25291", "set k v", gone + "=> throws notAvailable"},
    {"a-25291", "set k v", gone + "=> throws notAvailable"},
    {"c0 u-25291", "set k v", gone + "=> throws notAvailable"},
    {"d-25291", "remove k", gone + "=> throws notAvailable"},
    {"d-128", "removeAll", "=> throws userCanceled"},
    {"c-25308 c-25308", "contains k", "=> 10"},
    {"c-25291", "contains k", gone + "=> throws notAvailable"},
    {"c-25291", "read k", gone + "=> absent"},
    {"a-25291", "write k v", gone + "=> ok"},
    {"d-25291", "erase k", gone + "=> ok"},
    {"c-25291", "keys", gone + "=> "},
};

TEST(KeychainTest, TreatsEachAnswerOfTheStoreItsOwnWay) {
  for (const Row &row : rows) {
    SCOPED_TRACE(row.script + " " + row.operation);
    MemoryItemStore store;
    script(store, row.script);
    Keychain k = Keychain("kestrune-cli").withItemStore(store);
    std::string outcome = scriptOutput(k, row.operation);
    std::optional<std::string> left = k.get("k");
    EXPECT_EQ(outcome + (left ? "[" + *left + "]\n" : ""), row.expected + "\n");
  }
}

} // namespace
} // namespace securestore
