#include "KestruneCLI/Helpers/APIAuthManager/AuthManager.h"

#include "KestruneCLI/Helpers/APIAuthManager/HostnameNormalizer.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"

#include <map>

namespace kestrune {

std::reference_wrapper<const DarwinProtocol> AuthManager::darwinWrapper =
    DarwinWrapper::shared();

void AuthManager::configure(const std::optional<std::string> &groupId,
                            const std::optional<std::string> &hostname,
                            const std::optional<std::string> &username,
                            const std::optional<std::string> &password,
                            const std::optional<std::string> &apikey,
                            const AuthUtilProtocol &authUtil,
                            const Completion &completion) {
  if (username || password || apikey) {
    authenticateInline(groupId, hostname, authUtil, username, password, apikey,
                       completion);
    return;
  }
  securedAuthentication(groupId, hostname, authUtil, completion);
}

void AuthManager::securedAuthentication(
    const std::optional<std::string> &groupId,
    const std::optional<std::string> &hostname,
    const AuthUtilProtocol &authUtil, const Completion &completion) {
  if (!groupId)
    return completion(CliError::missingGroupId(), std::nullopt);
  if (!hostname)
    return completion(CliError::missingHostName(), std::nullopt);

  std::optional<std::string> username =
      authUtil.getValidInput(AuthParameters::username);
  if (!username || username->empty())
    return completion(CliError::missingSecuredUsername(), std::nullopt);
  std::optional<std::string> password =
      authUtil.getValidInput(AuthParameters::password);
  if (!password || password->empty())
    return completion(CliError::missingSecuredPassword(), std::nullopt);
  std::optional<std::string> apiKey =
      authUtil.getValidInput(AuthParameters::apiKey);
  if (!apiKey || apiKey->empty())
    return completion(CliError::missingSecuredApiKey(), std::nullopt);

  // Checked last, so a mistyped address shows only after the three prompts.
  std::optional<std::string> normalized = getHostname(*hostname);
  if (!normalized)
    return completion(CliError::incorrectHostname(), std::nullopt);

  completion(std::nullopt, ConfigModel{*username, *password, *apiKey,
                                       *normalized, *groupId, std::nullopt});
}

void AuthManager::authenticateInline(const std::optional<std::string> &groupId,
                                     const std::optional<std::string> &hostname,
                                     const AuthUtilProtocol &,
                                     const std::optional<std::string> &username,
                                     const std::optional<std::string> &password,
                                     const std::optional<std::string> &apikey,
                                     const Completion &completion) {
  struct Field {
    const char *key;
    const std::optional<std::string> &value;
    CliError whenMissing;
  };
  const Field fields[] = {
      {"username", username, CliError::missingUsername()},
      {"password", password, CliError::missingPassword()},
      {"hostname", hostname, CliError::missingHostName()},
      {"apikey", apikey, CliError::missingApiKey()},
      {"groupId", groupId, CliError::missingGroupId()},
  };
  std::map<std::string, std::string> given;
  std::vector<CliError> missing;
  for (const Field &field : fields) {
    if (field.value)
      given[field.key] = *field.value;
    else
      missing.push_back(field.whenMissing);
  }

  // A bad address is reported before missing fields; an absent one reads as
  // the empty text, which normalises, so it is reported as missing instead.
  std::optional<std::string> normalized = getHostname(given["hostname"]);
  if (!normalized)
    return completion(CliError::incorrectHostname(), std::nullopt);
  if (missing.size() == 1)
    return completion(missing.front(), std::nullopt);
  if (missing.size() > 1)
    return completion(
        CliError::multipleMissingFields(getMultipleMissingFields(missing)),
        std::nullopt);

  completion(std::nullopt,
             ConfigModel{given["username"], given["password"], given["apikey"],
                         *normalized, given["groupId"], std::nullopt});
}

std::optional<std::string>
AuthManager::getHostname(const std::string &hostname) {
  return normalizeHostname(hostname);
}

std::string AuthManager::getMissingItem(const CliError &error) {
  switch (error.getCase()) {
  case CliError::Case::missingUsername:
    return " Username";
  case CliError::Case::missingHostName:
    return " Hostname";
  case CliError::Case::missingGroupId:
    return " GroupId";
  case CliError::Case::missingPassword:
    return " Password";
  case CliError::Case::missingApiKey:
    return " ApiKey";
  default:
    return "";
  }
}

std::string
AuthManager::getMultipleMissingFields(const std::vector<CliError> &errors) {
  std::string text;
  for (std::size_t i = 0; i < errors.size(); ++i) {
    if (i + 1 < errors.size()) {
      text += getMissingItem(errors[i]) + ",";
      continue;
    }
    if (!text.empty())
      text.pop_back();
    text += " and" + getMissingItem(errors[i]) + " fields are";
  }
  return text;
}

} // namespace kestrune
