#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_CONSOLERULES_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_CONSOLERULES_H

#include "MockConsole/Answer.h"
#include "MockConsole/Route.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace mockconsole {

/// A user of the console: requests must carry "Basic " and the Base64 of
/// "username:password" in Authorization, and apiKey in qm-tenant-code.
struct Account {
  std::string username;
  std::string password;
  std::string apiKey;
};

/// A blob the console stored.
struct StoredBlob {
  std::int64_t id = 0;
  std::string filename;
  std::int64_t organizationGroupId = 0;
  std::string moduleType;
  std::uint64_t length = 0;
  /// Empty when hashing is off.
  std::string sha256;
};

/// A request as the console's rules see it, once its body has been read.
struct ConsoleRequest {
  std::string method;
  /// The path, unescaped.
  std::string path;
  /// The header fields as received; the first of a name counts.
  Headers headers;
  /// The query's parameters, unescaped; the first of a name counts.
  Headers parameters;
  /// Bytes of body received.
  std::uint64_t bodyLength = 0;
  /// The first bytes of the body (all of them when as long as bodyLength).
  std::string body;
  /// SHA-256 of the body in lower-case hex; empty when hashing is off.
  std::string bodySha256;
};

/// What the console answers when nothing is scripted: it checks
/// credentials, knows groups by their ID, stores blobs and creates
/// applications. It knows no sockets; all members may be called from any
/// thread.
class ConsoleRules {
public:
  ConsoleRules(std::int64_t firstBlobId, std::int64_t firstApplicationId);

  void addAccount(Account account);
  /// Makes \p groupId known, with \p number as its numeric identifier.
  void mapGroup(std::string groupId, std::int64_t number);

  /// The console's answer to \p request on \p route. \p baseUrl starts the
  /// links it hands out.
  Answer answer(Route route, const ConsoleRequest &request,
                const std::string &baseUrl);

  /// Every blob stored so far.
  std::vector<StoredBlob> getBlobs() const;

private:
  std::optional<std::string> checkCredentials(const ConsoleRequest &request);
  Answer searchGroup(const ConsoleRequest &request);
  Answer storeBlob(const ConsoleRequest &request);
  Answer createApplication(const ConsoleRequest &request,
                           const std::string &baseUrl);
  bool isGroupNumber(std::int64_t number) const;

  mutable std::mutex mutex;
  std::vector<Account> accounts;
  std::map<std::string, std::int64_t> groups;
  std::vector<StoredBlob> blobs;
  std::int64_t nextBlobId;
  std::int64_t nextApplicationId;
};

} // namespace mockconsole

#endif
