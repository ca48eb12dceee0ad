#include "MockConsole/ConsoleRules.h"

#include "MockConsole/JsonText.h"

#include "Platform/AsciiText.h"
#include "Platform/UrlText.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace mockconsole {
namespace {

using Json = nlohmann::json;

/// The first field named \p name, whose case doesn't matter.
const std::string *findHeader(const ConsoleRequest &request,
                              std::string_view name) {
  for (const auto &[fieldName, value] : request.headers)
    if (platform::equalsIgnoringCase(fieldName, name))
      return &value;
  return nullptr;
}

/// The first parameter named \p name.
const std::string *findParameter(const ConsoleRequest &request,
                                 std::string_view name) {
  for (const auto &[parameterName, value] : request.parameters)
    if (parameterName == name)
      return &value;
  return nullptr;
}

std::string headerValue(const ConsoleRequest &request, std::string_view name) {
  const std::string *value = findHeader(request, name);
  return value ? *value : std::string();
}

std::string parameterValue(const ConsoleRequest &request,
                           std::string_view name) {
  const std::string *value = findParameter(request, name);
  return value ? *value : std::string();
}

std::string messageBody(std::string_view message) {
  return dumpJson(Json{{"message", message}});
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
  std::int64_t value = 0;
  auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || text.empty())
    return std::nullopt;
  return value;
}

/// The JSON integer under \p key of \p object.
std::optional<std::int64_t> integerIn(const Json &object, const char *key) {
  auto found = object.find(key);
  if (found == object.end())
    return std::nullopt;
  if (found->is_number_integer())
    return found->get<std::int64_t>();
  return std::nullopt;
}

/// The {number} of /api/mam/groups/{number}/macos/apps.
std::string groupSegmentOf(std::string_view path) {
  constexpr std::string_view prefix = "/api/mam/groups/";
  constexpr std::string_view suffix = "/macos/apps";
  if (!path.starts_with(prefix) || !path.ends_with(suffix) ||
      path.size() < prefix.size() + suffix.size())
    return {};
  return std::string(
      path.substr(prefix.size(), path.size() - prefix.size() - suffix.size()));
}

Answer answerWith(int status, std::string body) {
  Answer answer;
  answer.status = status;
  answer.body = std::move(body);
  return answer;
}

} // namespace

ConsoleRules::ConsoleRules(std::int64_t firstBlobId,
                           std::int64_t firstApplicationId)
    : nextBlobId(firstBlobId), nextApplicationId(firstApplicationId) {}

void ConsoleRules::addAccount(Account account) {
  std::lock_guard lock(mutex);
  accounts.push_back(std::move(account));
}

void ConsoleRules::mapGroup(std::string groupId, std::int64_t number) {
  std::lock_guard lock(mutex);
  groups[std::move(groupId)] = number;
}

std::vector<StoredBlob> ConsoleRules::getBlobs() const {
  std::lock_guard lock(mutex);
  return blobs;
}

Answer ConsoleRules::answer(Route route, const ConsoleRequest &request,
                            const std::string &baseUrl) {
  if (route == Route::Other)
    return answerWith(404, messageBody("There is no such resource: " +
                                       request.method + " " + request.path));
  if (auto denied = checkCredentials(request))
    return answerWith(401, messageBody(*denied));
  switch (route) {
  case Route::GroupSearch:
    return searchGroup(request);
  case Route::UploadBlob:
    return storeBlob(request);
  case Route::CreateApplication:
    return createApplication(request, baseUrl);
  case Route::Other:
    break;
  }
  return answerWith(500, messageBody("unreachable"));
}

std::optional<std::string>
ConsoleRules::checkCredentials(const ConsoleRequest &request) {
  std::string authorization = headerValue(request, "Authorization");
  const std::string *tenantCode = findHeader(request, "qm-tenant-code");
  std::lock_guard lock(mutex);
  // Checked with the tool's own Base64 encoder.
  for (const Account &account : accounts) {
    if (authorization !=
        "Basic " +
            platform::encodeBase64(account.username + ":" + account.password))
      continue;
    if (!tenantCode || *tenantCode != account.apiKey)
      return "The API key (qm-tenant-code) is not valid for this user.";
    return std::nullopt;
  }
  return "User credentials are incorrect.";
}

// Called with the lock held.
bool ConsoleRules::isGroupNumber(std::int64_t number) const {
  return std::any_of(groups.begin(), groups.end(),
                     [&](const auto &group) { return group.second == number; });
}

Answer ConsoleRules::searchGroup(const ConsoleRequest &request) {
  const std::string *groupId = findParameter(request, "groupID");
  Json groupList = Json::array();
  {
    std::lock_guard lock(mutex);
    auto found = groupId ? groups.find(*groupId) : groups.end();
    if (found != groups.end())
      groupList.push_back(
          {{"Id", found->second}, {"GroupId", *groupId}, {"Name", *groupId}});
  }
  Json body = {{"OrganizationGroups", groupList},
               {"Page", 0},
               {"PageSize", 500},
               {"Total", groupList.size()}};
  return answerWith(200, dumpJson(body));
}

Answer ConsoleRules::storeBlob(const ConsoleRequest &request) {
  std::string filename = parameterValue(request, "filename");
  std::string moduleType = parameterValue(request, "moduleType");
  std::string groupText = parameterValue(request, "organizationgroupid");
  auto groupNumber = parseInteger(groupText);
  if (filename.empty())
    return answerWith(400, messageBody("The filename is missing."));
  if (moduleType != "Application" && moduleType != "General")
    return answerWith(
        400, messageBody("The moduleType '" + moduleType + "' is not known."));
  if (request.bodyLength == 0)
    return answerWith(400, messageBody("The uploaded file is empty."));
  std::lock_guard lock(mutex);
  if (!groupNumber || !isGroupNumber(*groupNumber))
    return answerWith(400, messageBody("The organization group '" + groupText +
                                       "' does not exist."));
  StoredBlob blob{nextBlobId++, filename,           *groupNumber,
                  moduleType,   request.bodyLength, request.bodySha256};
  blobs.push_back(blob);
  return answerWith(200, dumpJson(Json{{"Value", blob.id}}));
}

Answer ConsoleRules::createApplication(const ConsoleRequest &request,
                                       const std::string &baseUrl) {
  std::string groupText = groupSegmentOf(request.path);
  auto groupNumber = parseInteger(groupText);
  Json application = Json::parse(request.body, nullptr, false);
  std::lock_guard lock(mutex);
  if (!groupNumber || !isGroupNumber(*groupNumber))
    return answerWith(404, messageBody("The organization group '" + groupText +
                                       "' does not exist."));
  if (request.bodyLength != request.body.size() || !application.is_object())
    return answerWith(400,
                      messageBody("The request body is not a JSON object."));
  auto blobExists = [&](std::optional<std::int64_t> id) {
    return id &&
           std::any_of(blobs.begin(), blobs.end(),
                       [&](const StoredBlob &blob) { return blob.id == *id; });
  };
  if (!blobExists(integerIn(application, "applicationBlobId")))
    return answerWith(400, messageBody("applicationBlobId names no blob."));
  if (!blobExists(integerIn(application, "pkgInfoBlobId")))
    return answerWith(400, messageBody("pkgInfoBlobId names no blob."));
  if (application.contains("applicationIconId") &&
      !blobExists(integerIn(application, "applicationIconId")))
    return answerWith(400, messageBody("applicationIconId names no blob."));
  std::int64_t id = nextApplicationId++;
  Answer answer = answerWith(201, dumpJson(Json{{"Id", {{"Value", id}}}}));
  answer.headers.emplace_back("Location", baseUrl + "/api/mam/apps/internal/" +
                                              std::to_string(id));
  return answer;
}

} // namespace mockconsole
