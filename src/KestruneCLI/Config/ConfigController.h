#ifndef KESTRUNECLI_CONFIG_CONFIGCONTROLLER_H
#define KESTRUNECLI_CONFIG_CONFIGCONTROLLER_H

#include "KestruneCLI/Helpers/ConfigModel.h"
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

  /// Reads the stored account, as it stands at one instant, in the order
  /// username, groupId, groupIdNum, hostname, apiKey, password. Throws the
  /// CliError of the first item that is missing (noUsernameInKeychain …
  /// noPasswordInKeychain); a keychain that fails reads as a missing item. A
  /// groupIdNum that is not a decimal signed 64-bit integer gives a record
  /// without the number.
  ConfigModel getCreds() const;

  /// Signs in with \p config (whose groupIdNum is absent): under a spinner
  /// "Verifying credentials ...", refuses when a username is stored
  /// (alreadySignedIn, code 20; nothing is sent), then looks the group up on
  /// the console with the credentials of \p config. A failed lookup prints
  /// its error and ends the process with its code (unknownFetchGidAPIError,
  /// 18, when the lookup gives nothing at all), leaving the spinner's line as
  /// drawn and storing nothing. A found group clears the spinner, keeps the
  /// record with the number, prints the sign-in text and saves the record.
  ///
  /// When darwinWrapper's exitCode returns: after alreadySignedIn the
  /// sign-in goes on with the lookup; after a failed lookup it returns
  /// without saving.
  void signIn(const ConfigModel &config);

  /// Removes the six items ("username", "password", "apiKey", "hostname",
  /// "groupId", "groupIdNum"), forgets the record and prints the sign-out
  /// text. Nobody signed in: the items are removed quietly all the same
  /// (from any other store that holds a copy) and alreadySignedOut (17). The
  /// six go in one change of the store; a removal that fails:
  /// unableToSignOut with the store's description (21), and every item
  /// stays. Nothing goes to the console.
  ///
  /// When darwinWrapper's exitCode returns: after alreadySignedOut the
  /// removals run all the same; after a failed removal it returns.
  void signOut();

  /// Prints the stored account (username, group ID and number, hostname;
  /// "nil" for a number that doesn't parse), never its password or API key,
  /// and returns true. An item that is missing: the error of getCreds, the
  /// process ends with its code, and the result is false.
  bool listInfo();

  /// Looks \p newVal up on the console with the stored credentials and, when
  /// the console gives its number, stores \p newVal as "groupId" and the
  /// number as "groupIdNum" in one change of the store, updating the record
  /// in memory when there is one, and returns the account as it now stands.
  /// No spinner, nothing printed on success. Failures print, end the
  /// process and give std::nullopt: a missing item with the error of
  /// getCreds, a failed lookup with its error, a lookup that gives nothing
  /// with unknownEditGidAPIError (19); the stored group stays. So does a
  /// pair that can't be stored (the store's line, then 19), or an account
  /// that another run replaced since it was read (19).
  std::optional<ConfigModel> editGroupId(const std::string &newVal);

private:
  /// Writes configModel as six items (username, password, apiKey, hostname,
  /// groupId, groupIdNum) in one change of the store and prints the
  /// outcome; does nothing without a record. A write that fails leaves the
  /// store as it was before, and the process goes on.
  void saveToKeychain();

  std::optional<ConfigModel> configModel;
  securestore::Keychain keychain;
  const URLSessionManagerProtocol &urlsessionManager;
  const DarwinProtocol &darwinWrapper;
};

/// The account as \p controller reads it (ConfigController::getCreds), or
/// std::nullopt once a failure is reported through \p darwinWrapper: a
/// CliError with its message and code, any other with \p unexpectedMessage
/// and unknownError (54).
std::optional<ConfigModel>
readAccountOrReport(const ConfigController &controller,
                    std::string_view unexpectedMessage,
                    const DarwinProtocol &darwinWrapper);

} // namespace kestrune

#endif
