#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"

#include "Platform/HttpSession.h"
#include "Platform/StandardOutput.h"
#include "Platform/UrlReference.h"
#include "Platform/UrlText.h"
#include "Spinner/Pattern.h"
#include "Spinner/Spinner.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <memory>
#include <semaphore>
#include <string_view>
#include <utility>

namespace kestrune {
namespace {

using Json = nlohmann::json;

/// What each kind of blob shows and tells the console.
struct BlobTraits {
  std::string_view spinnerText;
  std::string_view moduleType;
  std::string_view name;
};

BlobTraits traitsOf(BlobType blobType) {
  switch (blobType) {
  case BlobType::installer:
    return {"Uploading installer file. It may take a few minutes ...",
            "Application", "installer"};
  case BlobType::metadata:
    return {"Uploading metadata file ...", "General", "metadata"};
  case BlobType::icon:
    return {"Uploading icon file ...", "General", "icon"};
  }
  return {"", "", ""};
}

/// The cells that a callback fills on the client's thread and the caller
/// reads after its wait.
struct ResultCells {
  std::optional<std::int64_t> result;
  std::optional<CliError> error;
};

using AnswerReader =
    std::function<void(const std::optional<std::string> &data,
                       const std::optional<platform::HttpResponse> &response,
                       const std::optional<platform::HttpError> &error)>;

/// Sends \p request and blocks until \p readAnswer has run on the client's
/// thread: the semaphore orders the callback's writes before the caller's
/// reads.
void sendAndWait(const platform::HttpSession &session,
                 platform::HttpRequest request, AnswerReader readAnswer) {
  auto semaphore = std::make_shared<std::binary_semaphore>(0);
  platform::HttpTask task = session.dataTask(
      std::move(request), [semaphore, readAnswer = std::move(readAnswer)](
                              std::optional<std::string> data,
                              std::optional<platform::HttpResponse> response,
                              std::optional<platform::HttpError> error) {
        readAnswer(data, response, error);
        semaphore->release();
      });
  task.resume();
  semaphore->acquire();
}

/// The answer's body as a JSON object; absent without data, for text that
/// isn't JSON and for any other top level. The whole body must be JSON: the
/// parser would take a NUL byte for the end of its input, and JSON holds no
/// raw NUL anywhere, so a body with one is no JSON.
std::optional<Json> parseObject(const std::optional<std::string> &data) {
  if (!data || data->find('\0') != std::string::npos)
    return std::nullopt;
  Json json = Json::parse(*data, nullptr, /*allow_exceptions=*/false);
  if (json.is_discarded() || !json.is_object())
    return std::nullopt;
  return json;
}

/// A JSON number that converts exactly to a signed 64-bit integer: 5 and
/// 5.0 do; 5.5, 1e30, "5" and true don't.
std::optional<std::int64_t> exactInteger(const Json &value) {
  if (value.is_number_unsigned()) {
    auto number = value.get<std::uint64_t>();
    if (number > static_cast<std::uint64_t>(INT64_MAX))
      return std::nullopt;
    return static_cast<std::int64_t>(number);
  }
  if (value.is_number_integer())
    return value.get<std::int64_t>();
  if (!value.is_number_float())
    return std::nullopt;
  double number = value.get<double>();
  // -2^63 is the smallest int64; 2^63 is the first double past the largest.
  if (!std::isfinite(number) || std::trunc(number) != number ||
      number < -9223372036854775808.0 || number >= 9223372036854775808.0)
    return std::nullopt;
  return static_cast<std::int64_t>(number);
}

std::optional<std::int64_t> integerAt(const Json &object, const char *key) {
  auto found = object.find(key);
  if (found == object.end())
    return std::nullopt;
  return exactInteger(*found);
}

std::optional<std::string> messageOf(const Json &object) {
  auto found = object.find("message");
  if (found == object.end() || !found->is_string())
    return std::nullopt;
  return found->get<std::string>();
}

bool hasStatus(const std::optional<platform::HttpResponse> &response,
               long status) {
  return response && response->statusCode == status;
}

void readGroupAnswer(ResultCells &cells, const std::optional<std::string> &data,
                     const std::optional<platform::HttpResponse> &response,
                     const std::optional<platform::HttpError> &error) {
  if (error) {
    cells.error = CliError::networkError(error->description);
    return;
  }
  std::optional<Json> object = parseObject(data);
  if (!object) {
    cells.error = CliError::fetchGidAPIResponseParsingError();
    return;
  }
  if (!hasStatus(response, 200)) {
    std::optional<std::string> message = messageOf(*object);
    cells.error = message ? CliError::fetchGidAPIResponseError(*message)
                          : CliError::unknownFetchGidResponseError();
    return;
  }
  auto groups = object->find("OrganizationGroups");
  if (groups == object->end() || !groups->is_array() || groups->empty() ||
      !std::all_of(groups->begin(), groups->end(),
                   [](const Json &group) { return group.is_object(); })) {
    cells.error = CliError::noOGInResponse();
    return;
  }
  std::optional<std::int64_t> id = integerAt(groups->front(), "Id");
  if (!id) {
    cells.error = CliError::noOGId();
    return;
  }
  cells.result = id;
}

void readBlobAnswer(ResultCells &cells, const std::optional<std::string> &data,
                    const std::optional<platform::HttpResponse> &response,
                    const std::optional<platform::HttpError> &error) {
  if (error) {
    cells.error = CliError::networkError(error->description);
    return;
  }
  std::optional<Json> object = parseObject(data);
  if (!object) {
    cells.error = CliError::uploadResponseParsingError();
    return;
  }
  if (!hasStatus(response, 200)) {
    std::optional<std::string> message = messageOf(*object);
    cells.error = message ? CliError::uploadApiResponseError(*message)
                          : CliError::uploadAPIResponseErrorUnknown();
    return;
  }
  std::optional<std::int64_t> value = integerAt(*object, "Value");
  if (!value) {
    cells.error = CliError::noBlobIdValue();
    return;
  }
  cells.result = value;
}

std::string applicationSuccessMessage(const std::string &identifier) {
  std::string message =
      "\n💡Application has been uploaded to the console successfully. \n\n "
      "Please check: https://";
  message += "\x1b[3;31myour_uem_hostname.example\x1b[0;0m";
  message += "\x1b[0;0m\x1b[0;0m";
  message += "/Quellmark/#/Quellmark/Apps/Details/Internal/";
  message += identifier;
  message += "/Summary \n\n The Application ID : ";
  message += identifier;
  message += " ";
  return message;
}

// This callback looks at the status first and never at the error: a request
// that failed outright ends like any answer without a usable message, and a
// 201 whose body was cut off still tells that the application was created.
void readApplicationAnswer(
    ResultCells &cells, const std::optional<std::string> &data,
    const std::optional<platform::HttpResponse> &response) {
  if (hasStatus(response, 201)) {
    std::optional<std::string> location = response->getHeader("Location");
    if (!location)
      return;
    std::optional<platform::UrlReference> url =
        platform::UrlReference::parse(*location);
    if (!url)
      return;
    platform::printLine(applicationSuccessMessage(url->getLastPathComponent()));
    return;
  }
  std::optional<Json> object = parseObject(data);
  std::optional<std::string> message =
      object ? messageOf(*object) : std::nullopt;
  cells.error = message
                    ? CliError::errorCreatingApplicationWithMessage(*message)
                    : CliError::errorCreatingApplication();
}

/// The application's JSON, composed as text: its spacing is part of what
/// the console receives, so no serialiser stands in for it.
std::string composeApplicationBody(std::int64_t metadataValue,
                                   std::int64_t installerValue,
                                   std::optional<std::int64_t> iconValue) {
  std::string body = "{\n  \"pkgInfoBlobId\": ";
  body += std::to_string(metadataValue);
  body += ",\n  \"isManagedInstall\": true,\n  \"applicationBlobId\": ";
  body += std::to_string(installerValue);
  if (iconValue) {
    body += ",\n  \"applicationIconId\":";
    body += std::to_string(*iconValue);
  }
  body += "\n}";
  return body;
}

} // namespace

URLSessionManagerProtocol::~URLSessionManagerProtocol() = default;

void UrlSessionManager::fetchGroupIdNum(
    const ConfigModel &config, const std::string &groupApiStr,
    const std::string &groupId, const UrlSessionUtilProtocol &urlSessionUtil,
    const NumberCompletion &completion) const {
  auto cells = std::make_shared<ResultCells>();
  std::optional<platform::HttpSession> session =
      urlSessionUtil.getUrlSession(config);
  if (!session) {
    completion(std::nullopt, CliError::unableToFormFetchGroupIDURLSession());
    return;
  }
  std::string urlText = groupApiStr + groupId;
  if (!platform::UrlReference::parse(urlText)) {
    completion(std::nullopt, CliError::unableToFormAValidFetchGidURL(urlText));
    return;
  }
  sendAndWait(
      *session, platform::HttpRequest{urlText, "GET", {}},
      [cells](const auto &data, const auto &response, const auto &error) {
        readGroupAnswer(*cells, data, response, error);
      });
  completion(cells->result, cells->error);
}

void UrlSessionManager::doUploadBlob(
    const ConfigModel &config, const std::string &binaryPath,
    const std::string &binaryName, const UrlSessionUtilProtocol &urlSessionUtil,
    BlobType blobType, const NumberCompletion &completion) const {
  auto cells = std::make_shared<ResultCells>();
  std::optional<platform::HttpSession> session =
      urlSessionUtil.getUrlSession(config);
  if (!session) {
    completion(std::nullopt, CliError::unableToFormUploadBlobURLSession());
    return;
  }
  BlobTraits traits = traitsOf(blobType);
  if (!config.groupIdNum) {
    completion(std::nullopt,
               CliError::unableToGetTheGroupIDNumberDuringBlobUpload());
    return;
  }
  platform::printLine("\n");
  std::optional<spinner::Spinner> spinner;
  spinner.emplace(spinner::Pattern::line(), std::string(traits.spinnerText));
  spinner->start();

  std::string urlText =
      config.hostname + "/api/mam/blobs/uploadblob?filename=" + binaryName +
      "&organizationgroupid=" + std::to_string(*config.groupIdNum) +
      "&moduleType=" + std::string(traits.moduleType);
  std::string encoded = platform::percentEncodeQueryAllowed(urlText);
  if (!platform::UrlReference::parse(encoded)) {
    // The spinner keeps turning: the caller reports the error and ends.
    completion(std::nullopt,
               CliError::unableToFormAValidUploadBlobURL(urlText));
    return;
  }
  platform::HttpRequest request;
  request.url = encoded;
  request.method = "POST";
  // The file is streamed from disk while it is sent; one that can't be
  // opened goes out as a POST without a body, and the console answers it.
  request.body =
      platform::HttpBody::openFile(binaryPath).value_or(platform::HttpBody());
  sendAndWait(
      *session, std::move(request),
      [cells](const auto &data, const auto &response, const auto &error) {
        readBlobAnswer(*cells, data, response, error);
      });
  if (cells->result) {
    spinner->stopAndClear();
    // Gone before the line is printed: a spinner writes as it goes away.
    spinner.reset();
    platform::printLine("\n✅ " + std::string(traits.name) +
                        " file successfully uploaded. \n");
  }
  completion(cells->result, cells->error);
}

void UrlSessionManager::doFinalUpload(
    const ConfigModel &config, std::int64_t metadataValue,
    std::int64_t installerValue, std::optional<std::int64_t> iconValue,
    const UrlSessionUtilProtocol &urlSessionUtil,
    const ErrorCompletion &completion) const {
  auto cells = std::make_shared<ResultCells>();
  std::optional<platform::HttpSession> session =
      urlSessionUtil.getUrlSession(config);
  if (!session) {
    completion(CliError::unableToFormCreateAPIURLSession());
    return;
  }
  if (!config.groupIdNum) {
    platform::printLine("❗️Unable to fetch GroupID number ");
    completion(CliError::unableToGetTheGroupIDNumDuringApplicationCreate());
    return;
  }
  std::string urlText = config.hostname + "/api/mam/groups/" +
                        std::to_string(*config.groupIdNum) + "/macos/apps";
  if (!platform::UrlReference::parse(urlText)) {
    completion(CliError::unableToFormAValidCreateApplicationURL(urlText));
    return;
  }
  platform::HttpRequest request;
  request.url = urlText;
  request.method = "POST";
  request.body = platform::HttpBody::fromBytes(
      composeApplicationBody(metadataValue, installerValue, iconValue));
  sendAndWait(*session, std::move(request),
              [cells](const auto &data, const auto &response, const auto &) {
                readApplicationAnswer(*cells, data, response);
              });
  completion(cells->error);
}

std::optional<platform::HttpHeaders>
UrlSessionManager::configureHeaders(const ConfigModel &configModel) {
  std::optional<std::string> authorization =
      getBase64Authorization(configModel.username, configModel.password);
  if (!authorization) {
    platform::printLine("\n❗️ERROR: Unable to get a base 64 encoded value");
    return std::nullopt;
  }
  return platform::HttpHeaders{
      {"Authorization", "Basic " + *authorization},
      {"qm-tenant-code", configModel.apiKey},
      {"Content-Type", "application/json"},
      {"Accept", "application/json;version=2"},
  };
}

std::optional<std::string>
UrlSessionManager::getBase64Authorization(const std::string &username,
                                          const std::string &password) {
  std::string joined = username + ":" + password;
  if (!platform::isValidUtf8(joined))
    return std::nullopt;
  return platform::encodeBase64(joined);
}

const UrlSessionManager &UrlSessionManager::shared() {
  static const UrlSessionManager instance;
  return instance;
}

} // namespace kestrune
