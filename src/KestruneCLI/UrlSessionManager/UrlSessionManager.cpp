#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"

#include "KestruneCLI/UrlSessionManager/ConsoleAnswers.h"

#include "Platform/HttpSession.h"
#include "Platform/StandardOutput.h"
#include "Platform/UrlReference.h"
#include "Platform/UrlText.h"
#include "Spinner/Pattern.h"
#include "Spinner/Spinner.h"

#include <memory>
#include <semaphore>
#include <string_view>
#include <utility>

namespace kestrune {
namespace {

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
  auto cells = std::make_shared<AnswerOutcome>();
  std::optional<platform::HttpSession> session =
      urlSessionUtil.getUrlSession(config);
  if (!session) {
    completion(std::nullopt, CliError::unableToFormFetchGroupIDURLSession());
    return;
  }
  // Only what would end the group ID's query value is escaped: one that a
  // URL can't hold is still refused, and shown as the user typed it.
  std::string urlText =
      groupApiStr + platform::percentEncodeQueryValue(groupId);
  if (!platform::UrlReference::parse(urlText)) {
    completion(std::nullopt,
               CliError::unableToFormAValidFetchGidURL(groupApiStr + groupId));
    return;
  }
  sendAndWait(
      *session, platform::HttpRequest{urlText, "GET", {}},
      [cells](const auto &data, const auto &response, const auto &error) {
        *cells = readGroupAnswer(data, response, error);
      });
  completion(cells->result, cells->error);
}

void UrlSessionManager::doUploadBlob(
    const ConfigModel &config, const platform::HttpBody &binaryBody,
    const std::string &binaryName, const UrlSessionUtilProtocol &urlSessionUtil,
    BlobType blobType, const NumberCompletion &completion) const {
  auto cells = std::make_shared<AnswerOutcome>();
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

  std::string start = config.hostname + "/api/mam/blobs/uploadblob?filename=";
  std::string rest =
      "&organizationgroupid=" + std::to_string(*config.groupIdNum) +
      "&moduleType=" + std::string(traits.moduleType);
  std::string urlText = start + binaryName + rest;
  // The name is one query value: after the escaping of the whole text its
  // "&", "=" and "+" are escaped too, so that none of them starts another
  // parameter or turns into a blank. In this order, the "%" of an escape is
  // never escaped again.
  std::string encoded = platform::percentEncodeQueryAllowed(start) +
                        platform::percentEncodeQueryValue(
                            platform::percentEncodeQueryAllowed(binaryName)) +
                        platform::percentEncodeQueryAllowed(rest);
  if (!platform::UrlReference::parse(encoded)) {
    // The spinner keeps turning: the caller reports the error and ends.
    completion(std::nullopt,
               CliError::unableToFormAValidUploadBlobURL(urlText));
    return;
  }
  platform::HttpRequest request;
  request.url = encoded;
  request.method = "POST";
  request.body = binaryBody;
  sendAndWait(
      *session, std::move(request),
      [cells](const auto &data, const auto &response, const auto &error) {
        *cells = readBlobAnswer(data, response, error);
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
  auto cells = std::make_shared<AnswerOutcome>();
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
  sendAndWait(
      *session, std::move(request),
      [cells](const auto &data, const auto &response, const auto &) {
        // Printed here, on the client's thread, before the wait ends.
        ApplicationOutcome outcome = readApplicationAnswer(data, response);
        if (outcome.identifier)
          platform::printLine(applicationSuccessMessage(*outcome.identifier));
        cells->error = std::move(outcome.error);
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
