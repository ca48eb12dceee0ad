#ifndef KESTRUNECLI_HELPERS_CLIERROR_H
#define KESTRUNECLI_HELPERS_CLIERROR_H

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace kestrune {

// Every failure of the tool: case, payload label (cases with a payload only),
// message text around the payload, exit code. X has a payload, Y has none.
#define KESTRUNE_CLI_ERROR_CASES(X, Y) \
  X(alreadySignedIn, username, "\n❗️ERROR: You have already signed in as: ", " \n", 20) \
  X(unableToFormAValidFetchGidURL, urlStr, "\n❗️Error: Unable to form a valid URL with the string ", "", 11) \
  X(fetchGidAPIResponseError, errorMessage, "\n❗️Error: ", "", 13) \
  X(unableToSignOut, err, "\n❗️Error: Unable to signout - ", "", 21) \
  X(networkError, err, "\n❗️Error: ", "", 47) \
  X(unableToFormAValidUploadBlobURL, urlString, "\n❗️Error: Unable to form a valid URL with the string ", "", 31) \
  X(uploadApiResponseError, err, "\n❗️Error: ", "", 33) \
  X(unableToFormAValidCreateApplicationURL, urlString, "\n❗️Error: Unable to form a valid URL with the string ", "", 51) \
  X(errorCreatingApplicationWithMessage, err, "\n❗️Error: ", "", 52) \
  X(multipleMissingFields, err, "\n❗️Error: Please re-enter credentials.", " missing. \n\n⚠️ Note: To prompt secure sign-in interactive terminal, please only enter GroupID and Hostname fields", 55) \
  Y(missingUsername, "\n❗️Error: Please re-enter credentials. Username is missing. \n\n⚠️ Note: To prompt secure sign-in interactive terminal, please only enter GroupID and Hostname fields", 1) \
  Y(missingHostName, "❗️Error: Please re-enter credentials. Hostname is missing.", 4) \
  Y(missingGroupId, "❗️Error: Please re-enter credentials. GroupID is missing.", 5) \
  Y(missingPassword, "\n❗️Error: Please re-enter credentials. Password is missing. \n\n⚠️ Note: To prompt secure sign-in interactive terminal, please only enter GroupID and Hostname fields", 2) \
  Y(missingApiKey, "\n❗️Error: Please re-enter credentials. Apikey is missing. \n\n⚠️ Note: To prompt secure sign-in interactive terminal, please only enter GroupID and Hostname fields", 3) \
  Y(missingSecuredUsername, "❗️Error: Exiting as the username entered is empty. Please try again to sign-in.", 6) \
  Y(missingSecuredPassword, "❗️Error: Exiting as the password entered is empty. Please try again to sign-in.", 7) \
  Y(missingSecuredApiKey, "❗️Error: Exiting as the apikey entered is empty. Please try again to sign-in.", 8) \
  Y(incorrectHostname, "❗️Error: Please check if the hostname is valid", 9) \
  Y(unableToGetBase64Encodedstring, "\n❗️ERROR: Unable to get a base 64 encoded value", 22) \
  Y(unableToFormFetchGroupIDURLSession, "\n❗️Error: Unable to form a valid URL session while fetching group id", 10) \
  Y(fetchGidAPIResponseParsingError, "\n❗️Error: Unable to get a valid JSON response", 12) \
  Y(unknownFetchGidResponseError, "\n❗️Error: Unknown response while fetching group id", 14) \
  Y(noOGInResponse, "\n❗️Error: The url response has no Organization Group details", 15) \
  Y(noOGId, "\n❗️Error: Unable to fetch the Group ID number", 16) \
  Y(alreadySignedOut, "\n❗️Error: You have signed out already.", 17) \
  Y(unknownFetchGidAPIError, "\n❗️ERROR: Unknown error while fetching group id", 18) \
  Y(unknownEditGidAPIError, "\n❗️ERROR: Unknown error while editing the group id", 19) \
  Y(unknownError, "", 54) \
  Y(noUsernameInKeychain, "\n❗️Error: Username not found in the keychain. Please login again", 23) \
  Y(noGroupIdInKeychain, "\n❗️Error: Group ID not found in the keychain. Please login again", 24) \
  Y(noGroupIdNumInKeyChain, "\n❗️Error: Group ID number not found in the keychain. Please login again", 25) \
  Y(noHostnameInKeychain, "\n❗️Error: Hostname not found in the keychain. Please login again", 26) \
  Y(noApiKeyInKeychain, "\n❗️Error: ApiKey not found in the keychain. Please login again", 27) \
  Y(noPasswordInKeychain, "\n❗️Error: Password not found in the keychain. Please login again", 28) \
  Y(unableToFormUploadBlobURLSession, "❗️Error: Unable to form a valid URL session while uploading the binary", 29) \
  Y(unableToGetTheGroupIDNumberDuringBlobUpload, "❗️Error: Unable to fetch the group id while uploading the binary", 30) \
  Y(uploadResponseParsingError, "\n❗️Error: Unable to get a valid JSON response while uploading the binary", 32) \
  Y(uploadAPIResponseErrorUnknown, "\n❗️Error: The API response error message is unknown while uploading the binary", 34) \
  Y(noBlobIdValue, "\n❗️Error: The API response doesn't contain the Blod id value", 35) \
  Y(unableToCreateUploadModel, "\n❗️Error: Unable to create an Upload Model", 38) \
  Y(invalidInstallerFileType, "\n❗️Error: Please enter valid installer files of type .dmg, .pkg or .mpkg", 39) \
  Y(invalidMetadataFileType, "\n❗️Error: Please enter valid metadata files of type .plist", 40) \
  Y(errorFetchingLocationOfInstallerFile, "\n❗️Error: Unable to fetch the location of the installer file.", 36) \
  Y(errorFetchingLocationOfMetadataFile, "\n❗️Error: Unable to fetch the location of the metadata file.", 37) \
  Y(unknownUploadInstallerAPIError, "\n❗️Error: Unexpected error while uploading the installer", 41) \
  Y(unknownUploadMetadataAPIError, "\n❗️Error: Unexpected error while uploading the metadata", 42) \
  Y(unknownUploadIconAPIError, "\n❗️Error: Unexpected error while uploading the icon", 45) \
  Y(invalidIconPath, "\n❗️Error: Unable to get the valid icon path.", 43) \
  Y(invalidIconName, "\n❗️Error: Unable to get the icon name.", 44) \
  Y(needToSignIn, "\n❗️Error: Not Signed in, please use config subcommand to sign into console.\n", 46) \
  Y(unableToFormCreateAPIURLSession, "\n❗️Error: Unable to form a valid URL session while creating an application", 49) \
  Y(unableToGetTheGroupIDNumDuringApplicationCreate, "\n❗️Error: Unable to fetch the group id while creating an application", 50) \
  Y(errorCreatingApplication, "\n❗️Error: The API response error message is unknown while creating an application", 53) \
  Y(unableToGetVersion, "\n❗️Error: Unable to get the version of kestrunecli", 48)

/// The tool's one error type: a case, an optional text payload, a fixed
/// message and a distinct exit code from 1 to 55.
class CliError : public std::exception {
public:
  enum class Case {
#define KESTRUNE_CASE_X(name, label, pre, post, code) name,
#define KESTRUNE_CASE_Y(name, text, code) name,
    KESTRUNE_CLI_ERROR_CASES(KESTRUNE_CASE_X, KESTRUNE_CASE_Y)
#undef KESTRUNE_CASE_X
#undef KESTRUNE_CASE_Y
  };

  // One factory per case, named as the case: CliError::networkError("...").
#define KESTRUNE_CASE_X(name, label, pre, post, code)                         \
  static CliError name(std::string label) {                                    \
    return CliError(Case::name, std::move(label));                             \
  }
#define KESTRUNE_CASE_Y(name, text, code)                                      \
  static CliError name() { return CliError(Case::name); }
  KESTRUNE_CLI_ERROR_CASES(KESTRUNE_CASE_X, KESTRUNE_CASE_Y)
#undef KESTRUNE_CASE_X
#undef KESTRUNE_CASE_Y

  explicit CliError(Case errorCase, std::string payload = {});
  // Copies only: a moved-from error would have no message.
  CliError(const CliError &) noexcept = default;
  CliError &operator=(const CliError &) noexcept = default;

  Case getCase() const noexcept { return errorCase; }
  /// The payload text; empty for cases without one.
  std::string_view getPayload() const noexcept {
    return std::string_view(texts->description)
        .substr(texts->payloadStart, texts->payloadLength);
  }

  /// The message of the case with the payload in its place.
  const std::string &errorDescription() const noexcept {
    return texts->description;
  }
  /// The exit code of the case, independent of the payload.
  std::int32_t code() const noexcept;
  /// The case's name as declared, e.g. "networkError".
  const char *caseName() const noexcept;

  const char *what() const noexcept override {
    return texts->description.c_str();
  }

  /// Same case and, for payload cases, equal payloads.
  friend bool operator==(const CliError &a, const CliError &b) noexcept {
    return a.errorCase == b.errorCase && a.getPayload() == b.getPayload();
  }

private:
  /// The message, with the payload inside it. Copies of an error share it:
  /// an error passed on and thrown costs no more memory however long a
  /// payload the console sent, and copying it never throws.
  struct Texts {
    std::string description;
    std::size_t payloadStart = 0, payloadLength = 0;
  };
  Case errorCase;
  std::shared_ptr<const Texts> texts;
};

} // namespace kestrune

#endif
