#ifndef KESTRUNECLI_TESTS_SUPPORT_MEMORYITEMSTORE_H
#define KESTRUNECLI_TESTS_SUPPORT_MEMORYITEMSTORE_H

#include "SecureStore/ItemStore.h"
#include "SecureStore/ItemTable.h"
#include "SecureStore/SecConstants.h"

#include <chrono>
#include <deque>
#include <map>

namespace securestore {

/// An item store held in memory. It keeps the items with the same rules as
/// the real stores, and can be told to answer calls with a chosen status
/// instead, without touching the items.
class MemoryItemStore final : public ItemStore {
public:
  enum class Operation { copyMatching, addItem, updateItems, deleteItems };

  /// The next call of \p operation answers \p status and fills the result
  /// place with \p result. Answers queue up, and go before the others.
  void answerNext(Operation operation, OSStatus status,
                  CopyResult result = {}) {
    next[operation].push_back({status, std::move(result)});
  }
  /// Every call of \p operation whose dictionary names \p account
  /// (kSecAttrAccount) answers \p status until clearAnswers().
  void answerForAccount(Operation operation, std::string account,
                        OSStatus status) {
    always[{operation, std::move(account)}] = status;
  }
  /// Every call of \p operation answers \p status until clearAnswers().
  void answerAlways(Operation operation, OSStatus status) {
    answerForAccount(operation, anyAccount, status);
  }
  void clearAnswers() {
    next.clear();
    always.clear();
  }

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override {
    return answer(Operation::copyMatching, query, result,
                  [&] { return table.copyMatching(query, result); });
  }
  OSStatus addItem(const Dictionary &attributes) override {
    return answer(Operation::addItem, attributes, nullptr, [&] {
      return table.addItem(attributes, std::chrono::system_clock::now(),
                           makeItemId());
    });
  }
  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &changes) override {
    return answer(Operation::updateItems, query, nullptr, [&] {
      return table.updateItems(query, changes,
                               std::chrono::system_clock::now());
    });
  }
  OSStatus deleteItems(const Dictionary &query) override {
    return answer(Operation::deleteItems, query, nullptr,
                  [&] { return table.deleteItems(query); });
  }
  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override {
    return {AccessControl{protection, flags}, std::nullopt};
  }
  std::string describe() const override { return "memory store"; }

private:
  static constexpr const char *anyAccount = "\n";

  template <typename Keep>
  OSStatus answer(Operation operation, const Dictionary &dictionary,
                  CopyResult *result, Keep &&keep) {
    if (std::deque<std::pair<OSStatus, CopyResult>> &queue = next[operation];
        !queue.empty()) {
      auto [status, given] = std::move(queue.front());
      queue.pop_front();
      if (result)
        *result = std::move(given);
      return status;
    }
    const std::string *account = findText(dictionary, kSecAttrAccount);
    for (const std::string &key :
         {account ? *account : anyAccount, std::string(anyAccount)})
      if (auto scripted = always.find({operation, key});
          scripted != always.end())
        return scripted->second;
    return keep();
  }

  ItemTable table;
  std::map<Operation, std::deque<std::pair<OSStatus, CopyResult>>> next;
  std::map<std::pair<Operation, std::string>, OSStatus> always;
};

} // namespace securestore

#endif
