#ifndef KESTRUNECLI_CONFIG_CONFIGCONTROLLER_H
#define KESTRUNECLI_CONFIG_CONFIGCONTROLLER_H

#include "KestruneCLI/Config/ConfigModel.h"
#include "KestruneCLI/Helpers/DarwinProtocol.h"
#include "KestruneCLI/UrlSessionManager/URLSessionManagerProtocol.h"
#include "SecureStore/Keychain.h"

#include <optional>
#include <string>
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

  /// Proves the credentials of config against the console with a live lookup
  /// of its group, then keeps the record and writes it to the keychain. Ends
  /// the process with code 20 when an account is already signed in, and with
  /// the lookup's code when the console refuses. config has no group number.
  void signIn(const ConfigModel &config);

  /// Removes the six keychain items and forgets the record. Ends the process
  /// with code 17 when nobody is signed in and with 21 when a removal fails.
  void signOut();

  /// Prints the stored account without its password and API key. Returns
  /// false, after ending the process with the read's code, when the account
  /// can't be read.
  bool listInfo();

  /// Looks up newVal on the console with the stored credentials and, when the
  /// console knows it, stores it with its number as the account's group.
  void editGroupId(const std::string &newVal);

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
