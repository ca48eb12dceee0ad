#include "KestruneCLI/Config/ConfigController.h"

#include "KestruneCLI/Helpers/CliError.h"
#include "Platform/StandardOutput.h"

#include <charconv>

namespace kestrune {

namespace {

constexpr std::string_view savedMessage =
    "\n🔑Information has been successfully saved into secure macOS "
    "keychain.\n";
constexpr std::string_view saveFailedMessage =
    "❗️Error: Unable to save user info in macOS Keychain: ";

// A signed decimal integer: an optional sign, then digits only, within 64
// bits. Anything else, the empty text included, is no number.
std::optional<std::int64_t> parseGroupIdNum(const std::string &text) {
  std::string_view digits = text;
  bool negative = false;
  if (!digits.empty() && (digits.front() == '+' || digits.front() == '-')) {
    negative = digits.front() == '-';
    digits.remove_prefix(1);
  }
  if (digits.empty() ||
      digits.find_first_not_of("0123456789") != std::string_view::npos)
    return std::nullopt;
  std::string signedDigits = (negative ? "-" : "") + std::string(digits);
  std::int64_t value = 0;
  auto [end, error] = std::from_chars(
      signedDigits.data(), signedDigits.data() + signedDigits.size(), value);
  if (error != std::errc() || end != signedDigits.data() + signedDigits.size())
    return std::nullopt;
  return value;
}

} // namespace

securestore::Keychain makeAccountKeychain() {
  return securestore::Keychain(std::string(accountService))
      .accessibility(securestore::Accessibility::afterFirstUnlock);
}

ConfigController::ConfigController(
    const URLSessionManagerProtocol &urlsessionManager,
    securestore::Keychain keychain, const DarwinProtocol &darwinWrapper)
    : keychain(std::move(keychain)), urlsessionManager(urlsessionManager),
      darwinWrapper(darwinWrapper) {}

void ConfigController::saveToKeychain() {
  if (!configModel)
    return;
  const ConfigModel &model = *configModel;
  // The number is always there once a sign-in has reached this point; an
  // absent one is stored as empty text, which reads back as absent.
  std::string groupIdNum =
      model.groupIdNum ? std::to_string(*model.groupIdNum) : std::string();
  try {
    keychain.set(model.username, "username", true);
    keychain.set(model.password, "password", true);
    keychain.set(model.apiKey, "apiKey", true);
    keychain.set(model.hostname, "hostname", true);
    keychain.set(model.groupId, "groupId", true);
    keychain.set(groupIdNum, "groupIdNum", true);
  } catch (const securestore::Error &error) {
    platform::printLine(std::string(saveFailedMessage) +
                        error.localizedDescription() + "\n");
    return;
  }
  platform::printLine(savedMessage);
}

ConfigModel ConfigController::getCreds() const {
  auto read = [&](const char *key, CliError missing) {
    std::optional<std::string> value = keychain[key];
    if (!value)
      throw missing;
    return *value;
  };
  ConfigModel model;
  model.username = read("username", CliError::noUsernameInKeychain());
  model.groupId = read("groupId", CliError::noGroupIdInKeychain());
  std::string groupIdNum =
      read("groupIdNum", CliError::noGroupIdNumInKeyChain());
  model.hostname = read("hostname", CliError::noHostnameInKeychain());
  model.apiKey = read("apiKey", CliError::noApiKeyInKeychain());
  model.password = read("password", CliError::noPasswordInKeychain());
  model.groupIdNum = parseGroupIdNum(groupIdNum);
  return model;
}

void ConfigController::signIn(const ConfigModel &) {}

void ConfigController::signOut() {}

bool ConfigController::listInfo() { return false; }

void ConfigController::editGroupId(const std::string &) {}

} // namespace kestrune
