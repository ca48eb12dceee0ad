#include "Support/MemoryItemStore.h"

#include "SecureStore/ItemTable.h"
#include "SecureStore/SecConstants.h"

namespace securestore {

MemoryItemStore::MemoryItemStore() : table(std::make_unique<ItemTable>()) {}

MemoryItemStore::~MemoryItemStore() = default;

void MemoryItemStore::answerNext(Operation operation, OSStatus status,
                                 CopyResult result) {
  std::lock_guard lock(mutex);
  nextAnswers[operation].push_back({status, std::move(result)});
}

void MemoryItemStore::answerAlways(Operation operation, OSStatus status) {
  std::lock_guard lock(mutex);
  alwaysAnswers[operation] = status;
}

void MemoryItemStore::answerForAccount(Operation operation, std::string account,
                                       OSStatus status) {
  std::lock_guard lock(mutex);
  accountAnswers[{operation, std::move(account)}] = status;
}

void MemoryItemStore::failAccessControl(std::optional<PlatformError> error) {
  std::lock_guard lock(mutex);
  accessControlFailure = std::move(error);
}

void MemoryItemStore::clearAnswers() {
  std::lock_guard lock(mutex);
  nextAnswers.clear();
  alwaysAnswers.clear();
  accountAnswers.clear();
  accessControlFailure.reset();
}

std::vector<MemoryItemStore::Call> MemoryItemStore::getCalls() const {
  std::lock_guard lock(mutex);
  return calls;
}

void MemoryItemStore::clearCalls() {
  std::lock_guard lock(mutex);
  calls.clear();
}

std::optional<MemoryItemStore::Answer>
MemoryItemStore::takeAnswer(Operation operation, const Dictionary &dictionary) {
  auto queued = nextAnswers.find(operation);
  if (queued != nextAnswers.end() && !queued->second.empty()) {
    Answer answer = std::move(queued->second.front());
    queued->second.pop_front();
    return answer;
  }
  if (const std::string *account = findText(dictionary, kSecAttrAccount)) {
    auto forAccount = accountAnswers.find({operation, *account});
    if (forAccount != accountAnswers.end())
      return Answer{forAccount->second, {}};
  }
  auto always = alwaysAnswers.find(operation);
  if (always != alwaysAnswers.end())
    return Answer{always->second, {}};
  return std::nullopt;
}

OSStatus MemoryItemStore::copyMatching(const Dictionary &query,
                                       CopyResult *result) {
  std::lock_guard lock(mutex);
  calls.push_back({Operation::copyMatching, query, {}, result != nullptr});
  if (auto answer = takeAnswer(Operation::copyMatching, query)) {
    if (result)
      *result = std::move(answer->result);
    return answer->status;
  }
  return table->copyMatching(query, result);
}

OSStatus MemoryItemStore::addItem(const Dictionary &attributes) {
  std::lock_guard lock(mutex);
  calls.push_back({Operation::addItem, {}, attributes, false});
  if (auto answer = takeAnswer(Operation::addItem, attributes))
    return answer->status;
  return table->addItem(attributes, std::chrono::system_clock::now(),
                        makeItemId());
}

OSStatus MemoryItemStore::updateItems(const Dictionary &query,
                                      const Dictionary &attributesToUpdate) {
  std::lock_guard lock(mutex);
  calls.push_back({Operation::updateItems, query, attributesToUpdate, false});
  if (auto answer = takeAnswer(Operation::updateItems, query))
    return answer->status;
  return table->updateItems(query, attributesToUpdate,
                            std::chrono::system_clock::now());
}

OSStatus MemoryItemStore::deleteItems(const Dictionary &query) {
  std::lock_guard lock(mutex);
  calls.push_back({Operation::deleteItems, query, {}, false});
  if (auto answer = takeAnswer(Operation::deleteItems, query))
    return answer->status;
  return table->deleteItems(query);
}

AccessControlResult
MemoryItemStore::createAccessControl(const std::string &protection,
                                     std::uint64_t flags) {
  std::lock_guard lock(mutex);
  calls.push_back({Operation::createAccessControl,
                   {},
                   {{"protection", protection},
                    {"flags", static_cast<std::int64_t>(flags)}},
                   false});
  if (accessControlFailure) {
    AccessControlResult failed{std::nullopt, *accessControlFailure};
    accessControlFailure.reset();
    return failed;
  }
  return {AccessControl{protection, flags}, std::nullopt};
}

} // namespace securestore
