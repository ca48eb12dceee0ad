#ifndef KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONMANAGERPROTOCOL_H
#define KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONMANAGERPROTOCOL_H

#include "KestruneCLI/Helpers/CliError.h"
#include "KestruneCLI/Helpers/ConfigModel.h"
#include "KestruneCLI/UrlSessionManager/BlobType.h"
#include "Platform/HttpMessage.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kestrune {

class UrlSessionUtilProtocol;

/// Completion of the operations that yield a number: exactly one of the
/// number and the error is present, except where a caller's table says not.
using NumberCompletion =
    std::function<void(std::optional<std::int64_t>, std::optional<CliError>)>;
/// Completion of the application creation: the error, absent on success.
using ErrorCompletion = std::function<void(std::optional<CliError>)>;

/// The console client. Each operation blocks until the console has answered
/// and has called its completion on the calling thread before it returns.
class URLSessionManagerProtocol {
public:
  virtual ~URLSessionManagerProtocol();

  /// Looks up the number of \p groupId: GET {groupApiStr}{groupId}, the
  /// group ID sent as one query value.
  virtual void fetchGroupIdNum(const ConfigModel &config,
                               const std::string &groupApiStr,
                               const std::string &groupId,
                               const UrlSessionUtilProtocol &urlSessionUtil,
                               const NumberCompletion &completion) const = 0;

  /// Uploads \p binaryBody, a file opened by the caller, as a blob named
  /// \p binaryName.
  virtual void doUploadBlob(const ConfigModel &config,
                            const platform::HttpBody &binaryBody,
                            const std::string &binaryName,
                            const UrlSessionUtilProtocol &urlSessionUtil,
                            BlobType blobType,
                            const NumberCompletion &completion) const = 0;

  /// Creates the application record that ties the blobs together.
  virtual void doFinalUpload(const ConfigModel &config,
                             std::int64_t metadataValue,
                             std::int64_t installerValue,
                             std::optional<std::int64_t> iconValue,
                             const UrlSessionUtilProtocol &urlSessionUtil,
                             const ErrorCompletion &completion) const = 0;
};

} // namespace kestrune

#endif
