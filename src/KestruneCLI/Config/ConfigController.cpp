#include "KestruneCLI/Config/ConfigController.h"

#include "KestruneCLI/Helpers/CliError.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionUtil.h"
#include "Platform/StandardOutput.h"
#include "Spinner/Pattern.h"
#include "Spinner/Spinner.h"

#include <charconv>
#include <exception>
#include <memory>

namespace kestrune {

namespace {

constexpr std::string_view savedMessage =
    "\n🔑Information has been successfully saved into secure macOS "
    "keychain.\n";
constexpr std::string_view saveFailedMessage =
    "❗️Error: Unable to save user info in macOS Keychain: ";
constexpr std::string_view verifyingText = "Verifying credentials ...";
constexpr std::string_view signedInMessage =
    "\n💡-------------------------------------------💡\n"
    "\tYou have signed in successfully.\n";
constexpr std::string_view signedOutMessage =
    "\n🔐-------------------------------------------🔗\n"
    "\tYou have signed out successfully.\n";
constexpr std::string_view listInfoFailedMessage =
    "❗️Error: Unexpected error during list info";
constexpr std::string_view readCredsFailedMessage =
    "❗️Error: Unexpected error while getting info from the keychain";
constexpr std::string_view groupSearchPath =
    "/api/system/groups/search?groupID=";

// The items of the account, in the order sign-out removes them.
constexpr const char *accountKeys[] = {"username", "password", "apiKey",
                                       "hostname", "groupId",  "groupIdNum"};

std::string makeGroupApiStr(const std::string &hostname) {
  return hostname + std::string(groupSearchPath);
}

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
  // The six items are one account: stored together or not at all, so no
  // other run ever reads half of this one beside half of another.
  try {
    keychain.transaction([&](const securestore::Keychain &account) {
      account.set(model.username, "username", true);
      account.set(model.password, "password", true);
      account.set(model.apiKey, "apiKey", true);
      account.set(model.hostname, "hostname", true);
      account.set(model.groupId, "groupId", true);
      account.set(groupIdNum, "groupIdNum", true);
    });
  } catch (const securestore::Error &error) {
    platform::printLine(std::string(saveFailedMessage) +
                        error.localizedDescription() + "\n");
    return;
  }
  platform::printLine(savedMessage);
}

ConfigModel ConfigController::getCreds() const {
  ConfigModel model;
  std::string groupIdNum;
  // All six items come from one state of the store: a change that another
  // run makes meanwhile is seen whole or not at all.
  keychain.snapshot([&](const securestore::Keychain &account) {
    auto read = [&](const char *key, CliError missing) {
      std::optional<std::string> value = account[key];
      if (!value)
        throw missing;
      return *value;
    };
    model.username = read("username", CliError::noUsernameInKeychain());
    model.groupId = read("groupId", CliError::noGroupIdInKeychain());
    groupIdNum = read("groupIdNum", CliError::noGroupIdNumInKeyChain());
    model.hostname = read("hostname", CliError::noHostnameInKeychain());
    model.apiKey = read("apiKey", CliError::noApiKeyInKeychain());
    model.password = read("password", CliError::noPasswordInKeychain());
  });
  model.groupIdNum = parseGroupIdNum(groupIdNum);
  return model;
}

void ConfigController::signIn(const ConfigModel &config) {
  auto spinner = std::make_unique<spinner::Spinner>(spinner::Pattern::line(),
                                                    std::string(verifyingText));
  spinner->start();

  // One account at a time: a stored username means signed in, and a store
  // that can't be read counts as nobody signed in.
  std::optional<std::string> storedUsername;
  try {
    storedUsername = keychain.get("username", true);
  } catch (const securestore::Error &) {
    storedUsername = std::nullopt;
  }
  if (storedUsername) {
    spinner->stopAndClear();
    reportError(CliError::alreadySignedIn(*storedUsername), darwinWrapper);
  }

  // The lookup is the credential check: only a group number from the console
  // lets the sign-in go on. On failure the spinner keeps its line, since the
  // process ends right behind the message.
  std::optional<std::int64_t> groupIdNum;
  urlsessionManager.fetchGroupIdNum(
      config, makeGroupApiStr(config.hostname), config.groupId,
      UrlSessionUtil::shared(),
      [&](std::optional<std::int64_t> value, std::optional<CliError> error) {
        if (value) {
          groupIdNum = value;
          return;
        }
        reportError(error ? *error : CliError::unknownFetchGidAPIError(),
                    darwinWrapper);
      });
  if (!groupIdNum)
    return;

  configModel = config;
  configModel->groupIdNum = groupIdNum;
  spinner->stopAndClear();
  spinner.reset();
  platform::printLine(signedInMessage);
  saveToKeychain();
}

void ConfigController::signOut() {
  // Read as the keychain subscript reads (a store error is printed and
  // counts as nobody), but telling the two apart.
  std::optional<std::string> username;
  bool readable = true;
  try {
    username = keychain.get("username", true);
  } catch (const securestore::Error &) {
    readable = false;
  }
  if (!username) {
    // Nobody in the store of this run. A copy that another store still
    // holds (an account kept while no Secret Service ran) goes all the same,
    // so that no password is left behind after a sign-out.
    try {
      for (const char *key : accountKeys)
        if (readable)
          keychain.remove(key, true);
    } catch (const securestore::Error &) {
    }
    reportError(CliError::alreadySignedOut(), darwinWrapper);
  }

  // The six items go together: a removal that fails puts back the ones
  // removed before it.
  try {
    keychain.transaction([](const securestore::Keychain &account) {
      for (const char *key : accountKeys)
        account.remove(key, true);
    });
  } catch (const securestore::Error &error) {
    reportError(CliError::unableToSignOut(error.localizedDescription()),
                darwinWrapper);
    return;
  }
  configModel.reset();
  platform::printLine(signedOutMessage);
}

std::optional<ConfigModel>
readAccountOrReport(const ConfigController &controller,
                    std::string_view unexpectedMessage,
                    const DarwinProtocol &darwinWrapper) {
  try {
    return controller.getCreds();
  } catch (const CliError &error) {
    reportError(error, darwinWrapper);
  } catch (const std::exception &) {
    platform::printLine(unexpectedMessage);
    darwinWrapper.exitCode(CliError::unknownError().code());
  }
  return std::nullopt;
}

bool ConfigController::listInfo() {
  std::optional<ConfigModel> read =
      readAccountOrReport(*this, listInfoFailedMessage, darwinWrapper);
  if (!read)
    return false;
  const ConfigModel &model = *read;
  std::string groupIdNum =
      model.groupIdNum ? std::to_string(*model.groupIdNum) : "nil";
  // The password and the API key are never shown.
  std::string listing = "\n📖 Account Info:\n";
  listing += "Username:\t\t" + model.username + "\n";
  listing += "Group ID:\t\t" + model.groupId + "\n";
  listing += "Group ID Number:\t" + groupIdNum + "\n";
  listing += "Hostname:\t\t" + model.hostname + "\n";
  platform::printLine(listing);
  return true;
}

std::optional<ConfigModel>
ConfigController::editGroupId(const std::string &newVal) {
  std::optional<ConfigModel> read =
      readAccountOrReport(*this, readCredsFailedMessage, darwinWrapper);
  if (!read)
    return std::nullopt;
  ConfigModel stored = *read;

  std::optional<std::int64_t> number;
  urlsessionManager.fetchGroupIdNum(
      stored, makeGroupApiStr(stored.hostname), newVal,
      UrlSessionUtil::shared(),
      [&](std::optional<std::int64_t> value, std::optional<CliError> error) {
        if (!value) {
          reportError(error ? *error : CliError::unknownEditGidAPIError(),
                      darwinWrapper);
          return;
        }
        number = value;
      });
  if (!number)
    return std::nullopt;

  // The name and the number are stored together, and only into the account
  // whose credentials proved them: if another run has signed in as someone
  // else meanwhile, the change is not this account's to make. A change that
  // can't be stored ends the run, since the upload would otherwise go into
  // a group the user did not ask for.
  struct AccountChanged {};
  try {
    keychain.transaction([&](const securestore::Keychain &account) {
      for (auto [key, value] : {std::pair{"username", &stored.username},
                                {"password", &stored.password},
                                {"apiKey", &stored.apiKey},
                                {"hostname", &stored.hostname}})
        if (account.get(key, true) != *value)
          throw AccountChanged();
      account.set(newVal, "groupId", true);
      account.set(std::to_string(*number), "groupIdNum", true);
    });
  } catch (const securestore::Error &) {
    reportError(CliError::unknownEditGidAPIError(), darwinWrapper);
    return std::nullopt;
  } catch (const AccountChanged &) {
    reportError(CliError::unknownEditGidAPIError(), darwinWrapper);
    return std::nullopt;
  }
  if (configModel) {
    configModel->groupId = newVal;
    configModel->groupIdNum = number;
  }
  stored.groupId = newVal;
  stored.groupIdNum = number;
  return stored;
}

} // namespace kestrune
