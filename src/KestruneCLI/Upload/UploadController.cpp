#include "KestruneCLI/Upload/UploadController.h"

#include "KestruneCLI/Helpers/CliError.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionUtil.h"
#include "Platform/HttpMessage.h"
#include "Platform/StandardOutput.h"

#include <exception>

namespace kestrune {

namespace {

constexpr std::string_view unreadableAccountMessage =
    "❗️Error: Unable to get the config model while uploading the binary";

} // namespace

UploadController::UploadController(const DarwinProtocol &darwinWrapper)
    : UploadController(darwinWrapper, makeAccountKeychain(),
                       UrlSessionManager::shared(), UrlSessionUtil::shared()) {}

UploadController::UploadController(
    const DarwinProtocol &darwinWrapper, securestore::Keychain keychain,
    const URLSessionManagerProtocol &urlsessionManager,
    const UrlSessionUtilProtocol &urlSessionUtil)
    // The account is read by a controller of its own, which ends the process
    // for real whatever this one was given.
    : configController(urlsessionManager, keychain, DarwinWrapper::shared()),
      keychain(std::move(keychain)), darwinWrapper(darwinWrapper),
      urlsessionManager(urlsessionManager), urlSessionUtil(urlSessionUtil) {}

std::optional<UploadModel> UploadController::createUploadModel(
    const std::string &installerPath, const std::string &metadataPath,
    const std::optional<std::string> &iconPath) const {
  return kestrune::createUploadModel(installerPath, metadataPath, iconPath,
                                     darwinWrapper);
}

NumberCompletion
UploadController::storeBlobId(std::optional<std::int64_t> &cell,
                              CliError unknown) const {
  return [this, &cell, unknown = std::move(unknown)](
             std::optional<std::int64_t> value, std::optional<CliError> error) {
    if (value) {
      cell = value;
      return;
    }
    reportError(error ? *error : unknown, darwinWrapper);
  };
}

void UploadController::upload(const std::string &installerPath,
                              const std::string &metadataPath,
                              const std::optional<std::string> &iconPath,
                              const std::optional<ConfigModel> &account) {
  ConfigModel config;
  if (account) {
    config = *account;
  } else {
    std::optional<std::string> username = keychain["username"];
    if (!username || username->empty()) {
      reportError(CliError::needToSignIn(), darwinWrapper);
      return;
    }
    std::optional<ConfigModel> read = readAccountOrReport(
        configController, unreadableAccountMessage, darwinWrapper);
    if (!read)
      return;
    config = std::move(*read);
  }

  std::optional<UploadModel> model =
      createUploadModel(installerPath, metadataPath, iconPath);
  if (!model) {
    reportError(CliError::unableToCreateUploadModel(), darwinWrapper);
    return;
  }
  if (!isAcceptedInstallerName(model->installerName)) {
    reportError(CliError::invalidInstallerFileType(), darwinWrapper);
    return;
  }
  if (!isAcceptedMetadataName(model->metadataName)) {
    reportError(CliError::invalidMetadataFileType(), darwinWrapper);
    return;
  }

  // Every file is opened before the first blob goes out, so that one that
  // can't be read (missing, a folder, forbidden) stops the upload before the
  // console has anything; what is sent is then what the opened files hold.
  std::optional<platform::HttpBody> installerBody =
      platform::HttpBody::openFile(model->installerPath);
  if (!installerBody) {
    reportError(CliError::errorFetchingLocationOfInstallerFile(),
                darwinWrapper);
    return;
  }
  std::optional<platform::HttpBody> metadataBody =
      platform::HttpBody::openFile(model->metadataPath);
  if (!metadataBody) {
    reportError(CliError::errorFetchingLocationOfMetadataFile(), darwinWrapper);
    return;
  }
  std::optional<platform::HttpBody> iconBody;
  if (model->iconPath) {
    iconBody = platform::HttpBody::openFile(*model->iconPath);
    if (!iconBody) {
      reportError(CliError::invalidIconPath(), darwinWrapper);
      return;
    }
  }

  // Each call blocks until its answer is in and its completion has run, so
  // the stages simply follow one another on this thread.
  std::optional<std::int64_t> installerId;
  std::optional<std::int64_t> metadataId;
  std::optional<std::int64_t> iconId;
  urlsessionManager.doUploadBlob(
      config, *installerBody, model->installerName, urlSessionUtil,
      BlobType::installer,
      storeBlobId(installerId, CliError::unknownUploadInstallerAPIError()));
  urlsessionManager.doUploadBlob(
      config, *metadataBody, model->metadataName, urlSessionUtil,
      BlobType::metadata,
      storeBlobId(metadataId, CliError::unknownUploadMetadataAPIError()));
  if (!installerId || !metadataId)
    return;

  // An icon path that couldn't be normalised is judged only now, after the
  // two required files.
  if (iconPath) {
    if (!model->iconPath) {
      reportError(CliError::invalidIconPath(), darwinWrapper);
      return;
    }
    if (!model->iconName) {
      reportError(CliError::invalidIconName(), darwinWrapper);
      return;
    }
    urlsessionManager.doUploadBlob(
        config, *iconBody, *model->iconName, urlSessionUtil, BlobType::icon,
        storeBlobId(iconId, CliError::unknownUploadIconAPIError()));
  }

  urlsessionManager.doFinalUpload(config, *metadataId, *installerId, iconId,
                                  urlSessionUtil,
                                  [this](std::optional<CliError> error) {
                                    if (error)
                                      reportError(*error, darwinWrapper);
                                  });
}

} // namespace kestrune
