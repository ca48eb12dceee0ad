#ifndef KESTRUNECLI_CONFIG_CONFIGCONTROLLER_H
#define KESTRUNECLI_CONFIG_CONFIGCONTROLLER_H

#include "KestruneCLI/Config/ConfigModel.h"
#include "KestruneCLI/Helpers/DarwinProtocol.h"
#include "KestruneCLI/UrlSessionManager/URLSessionManagerProtocol.h"
#include "SecureStore/Keychain.h"

#include <optional>
#include <string_view>

namespace kestrune {

/// The keychain service that holds the account.
inline constexpr std::string_view accountService = "kestrune-cli";

/// The store of the account, built the one way every caller builds it:
/// service "kestrune-cli", accessibility afterFirstUnlock, on the process's
/// default item store.
securestore::Keychain makeAccountKeychain();

/// The account behind the config command and the group change of upload:
/// its record in memory and its six keychain items.
class ConfigController {
public:
  ConfigController(const URLSessionManagerProtocol &urlsessionManager,
                   securestore::Keychain keychain,
                   const DarwinProtocol &darwinWrapper);

  /// Reads the stored account in the order username, groupId, groupIdNum,
  /// hostname, apiKey, password. Throws the CliError of the first item that
  /// is missing (noUsernameInKeychain … noPasswordInKeychain); a keychain
  /// that fails reads as a missing item. A groupIdNum that is not a decimal
  /// signed 64-bit integer gives a record without the number.
  ConfigModel getCreds() const;

private:
  /// Writes configModel as six items (username, password, apiKey, hostname,
  /// groupId, groupIdNum) and prints the outcome; does nothing without a
  /// record. The first failing write ends the sequence; the items already
  /// written stay, and the process goes on.
  void saveToKeychain();

  std::optional<ConfigModel> configModel;
  securestore::Keychain keychain;
  const URLSessionManagerProtocol &urlsessionManager;
  const DarwinProtocol &darwinWrapper;

  friend class ConfigControllerTestAccess;
};

} // namespace kestrune

#endif
