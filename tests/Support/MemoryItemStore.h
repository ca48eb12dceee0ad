#ifndef KESTRUNECLI_TESTS_SUPPORT_MEMORYITEMSTORE_H
#define KESTRUNECLI_TESTS_SUPPORT_MEMORYITEMSTORE_H

#include "SecureStore/ItemStore.h"

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace securestore {

class ItemTable;

/// An item store held in memory. It keeps the items with the
/// same rules as the real stores, records every call with its dictionaries,
/// and can be told to answer any call with a chosen status.
class MemoryItemStore final : public ItemStore {
public:
  enum class Operation {
    copyMatching,
    addItem,
    updateItems,
    deleteItems,
    createAccessControl
  };

  /// One call as the store received it. For createAccessControl,
  /// \c attributes holds "protection" (text) and "flags" (integer).
  struct Call {
    Operation operation;
    Dictionary query;
    Dictionary attributes;
    bool hasResultPlace = false;
  };

  MemoryItemStore();
  ~MemoryItemStore() override;

  /// The next call of \p operation answers \p status, and fills the result
  /// place with \p result, without touching the items. Answers queue up.
  void answerNext(Operation operation, OSStatus status, CopyResult result = {});
  /// Every call of \p operation answers \p status until clearAnswers().
  void answerAlways(Operation operation, OSStatus status);
  /// Every call of \p operation whose dictionary names \p account
  /// (kSecAttrAccount) answers \p status until clearAnswers().
  void answerForAccount(Operation operation, std::string account,
                        OSStatus status);
  /// The next createAccessControl gives no object, and \p error if given.
  void failAccessControl(std::optional<PlatformError> error);
  /// Forgets every scripted answer.
  void clearAnswers();

  /// Every call so far, in order.
  std::vector<Call> getCalls() const;
  void clearCalls();

  OSStatus copyMatching(const Dictionary &query, CopyResult *result) override;
  OSStatus addItem(const Dictionary &attributes) override;
  OSStatus updateItems(const Dictionary &query,
                       const Dictionary &attributesToUpdate) override;
  OSStatus deleteItems(const Dictionary &query) override;
  AccessControlResult createAccessControl(const std::string &protection,
                                          std::uint64_t flags) override;
  std::string describe() const override { return "memory store"; }

private:
  struct Answer {
    OSStatus status;
    CopyResult result;
  };
  std::optional<Answer> takeAnswer(Operation operation,
                                   const Dictionary &dictionary);

  mutable std::mutex mutex;
  std::unique_ptr<ItemTable> table;
  std::map<Operation, std::deque<Answer>> nextAnswers;
  std::map<Operation, OSStatus> alwaysAnswers;
  std::map<std::pair<Operation, std::string>, OSStatus> accountAnswers;
  std::optional<std::optional<PlatformError>> accessControlFailure;
  std::vector<Call> calls;
};

} // namespace securestore

#endif
