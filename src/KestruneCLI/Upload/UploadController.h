#ifndef KESTRUNECLI_UPLOAD_UPLOADCONTROLLER_H
#define KESTRUNECLI_UPLOAD_UPLOADCONTROLLER_H

#include "KestruneCLI/Config/ConfigController.h"
#include "KestruneCLI/Helpers/DarwinProtocol.h"
#include "KestruneCLI/Upload/UploadModel.h"
#include "KestruneCLI/UrlSessionManager/URLSessionManagerProtocol.h"
#include "SecureStore/Keychain.h"

#include <optional>
#include <string>

namespace kestrune {

class UrlSessionUtilProtocol;

/// Runs one upload: tests that an account is signed in, reads it, checks the
/// files, sends the installer, the metadata and the icon as blobs one after
/// the other and creates the application that ties them together. Every
/// failure is printed and ends the process through the given
/// DarwinProtocol.
class UploadController {
public:
  /// The production set: the account keychain, the console client and a
  /// ConfigController that always ends the process for real.
  explicit UploadController(const DarwinProtocol &darwinWrapper);

  /// The same with the account store and the console client given (tests).
  /// \p keychain serves both the sign-in test and the account read.
  UploadController(const DarwinProtocol &darwinWrapper,
                   securestore::Keychain keychain,
                   const URLSessionManagerProtocol &urlsessionManager,
                   const UrlSessionUtilProtocol &urlSessionUtil);

  /// Uploads the files at the paths as typed; \p iconPath is optional.
  /// With \p account (the account a group change has just stored) the
  /// upload goes to it; without, it tests that an account is signed in and
  /// reads it. Every file is opened before the first blob goes out: one
  /// that can't be read ends the upload with its code (36, 37, 43) and
  /// nothing is sent. Returns once the application exists. On a failure the
  /// message is printed and the process ended; should the exit return, upload
  /// returns at once too, except that a failed blob upload only leaves that
  /// blob out (no application is created without the installer and the
  /// metadata, and one without its icon only when the exit returned).
  void upload(const std::string &installerPath, const std::string &metadataPath,
              const std::optional<std::string> &iconPath,
              const std::optional<ConfigModel> &account = std::nullopt);

  /// The record of the upload's files; see kestrune::createUploadModel.
  [[nodiscard]] std::optional<UploadModel>
  createUploadModel(const std::string &installerPath,
                    const std::string &metadataPath,
                    const std::optional<std::string> &iconPath) const;

private:
  /// The completion of one blob upload: keeps the blob's number in \p cell,
  /// or reports the error (\p unknown when the client gave none).
  NumberCompletion storeBlobId(std::optional<std::int64_t> &cell,
                               CliError unknown) const;

  ConfigController configController;
  securestore::Keychain keychain;
  const DarwinProtocol &darwinWrapper;
  const URLSessionManagerProtocol &urlsessionManager;
  const UrlSessionUtilProtocol &urlSessionUtil;
};

} // namespace kestrune

#endif
