#ifndef KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHMANAGER_H
#define KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHMANAGER_H

#include "KestruneCLI/Helpers/APIAuthManager/AuthUtilProtocol.h"
#include "KestruneCLI/Helpers/CliError.h"
#include "KestruneCLI/Helpers/ConfigModel.h"
#include "KestruneCLI/Helpers/DarwinProtocol.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kestrune {

/// Turns what `config --signin` was given into a complete account record, or
/// into the one error that tells what is wrong with it.
class AuthManager {
public:
  /// Called exactly once: with an error and no record, or with a record and
  /// no error.
  using Completion =
      std::function<void(std::optional<CliError>, std::optional<ConfigModel>)>;

  AuthManager() = delete;

  /// Inline sign-in when any of \p username, \p password, \p apikey is
  /// present (an empty text counts as present): every field must then be on
  /// the command line, and nothing is asked. Otherwise secured sign-in:
  /// \p groupId and \p hostname must be present, and the username, password
  /// and API key are asked for through \p authUtil, in that order.
  ///
  /// In both ways the hostname is normalised (normalizeHostname); the record
  /// carries it with its scheme, the other fields as given, and no group
  /// number. Errors, in the order they are looked for:
  /// - secured: missingGroupId, missingHostName, missingSecuredUsername,
  ///   missingSecuredPassword, missingSecuredApiKey (an answer that is absent
  ///   or empty), incorrectHostname;
  /// - inline: incorrectHostname, then the one missing field (missingUsername,
  ///   missingPassword, missingHostName, missingApiKey, missingGroupId) or
  ///   multipleMissingFields naming them all.
  static void configure(const std::optional<std::string> &groupId,
                        const std::optional<std::string> &hostname,
                        const std::optional<std::string> &username,
                        const std::optional<std::string> &password,
                        const std::optional<std::string> &apikey,
                        const AuthUtilProtocol &authUtil,
                        const Completion &completion);

  /// How the caller of configure ends the process when it reports an error:
  /// DarwinWrapper::shared() unless a test puts its own in place.
  static std::reference_wrapper<const DarwinProtocol> darwinWrapper;

private:
  static void securedAuthentication(const std::optional<std::string> &groupId,
                                    const std::optional<std::string> &hostname,
                                    const AuthUtilProtocol &authUtil,
                                    const Completion &completion);
  static void authenticateInline(const std::optional<std::string> &groupId,
                                 const std::optional<std::string> &hostname,
                                 const AuthUtilProtocol &authUtil,
                                 const std::optional<std::string> &username,
                                 const std::optional<std::string> &password,
                                 const std::optional<std::string> &apikey,
                                 const Completion &completion);
  static std::optional<std::string> getHostname(const std::string &hostname);
  static std::string getMissingItem(const CliError &error);
  static std::string
  getMultipleMissingFields(const std::vector<CliError> &errors);
};

} // namespace kestrune

#endif
