#ifndef KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONMANAGER_H
#define KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONMANAGER_H

#include "KestruneCLI/UrlSessionManager/URLSessionManagerProtocol.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionUtilProtocol.h"
#include "Platform/HttpMessage.h"

#include <optional>
#include <string>

namespace kestrune {

/// The console client: one blocking request per operation, each on a new
/// session from the given UrlSessionUtilProtocol, with no retry and no
/// time-out. The completion runs once, on the calling thread, before the
/// operation returns.
class UrlSessionManager final : public URLSessionManagerProtocol {
public:
  /// GET {groupApiStr}{groupId}, where only the group ID's "&", "=", "#"
  /// and "+" are escaped, so that it stays one query value; the completion
  /// gets the first group's Id or the error.
  void fetchGroupIdNum(const ConfigModel &config,
                       const std::string &groupApiStr,
                       const std::string &groupId,
                       const UrlSessionUtilProtocol &urlSessionUtil,
                       const NumberCompletion &completion) const override;

  /// POSTs \p binaryBody (a file streamed from disk) as the blob
  /// \p binaryName under a spinner; the completion gets the blob's Value or
  /// the error. The name goes out as one query value.
  void doUploadBlob(const ConfigModel &config,
                    const platform::HttpBody &binaryBody,
                    const std::string &binaryName,
                    const UrlSessionUtilProtocol &urlSessionUtil,
                    BlobType blobType,
                    const NumberCompletion &completion) const override;

  /// POSTs the application that ties the blobs together and prints its link
  /// (on the client's thread); the completion gets the error, if any.
  void doFinalUpload(const ConfigModel &config, std::int64_t metadataValue,
                     std::int64_t installerValue,
                     std::optional<std::int64_t> iconValue,
                     const UrlSessionUtilProtocol &urlSessionUtil,
                     const ErrorCompletion &completion) const override;

  /// The header fields of every request, in this order: Authorization
  /// ("Basic " and the Base64 of username:password), qm-tenant-code (the
  /// API key), Content-Type and Accept. Absent, after printing
  /// "\n❗️ERROR: Unable to get a base 64 encoded value", when the user name
  /// or password isn't UTF-8.
  [[nodiscard]] static std::optional<platform::HttpHeaders>
  configureHeaders(const ConfigModel &configModel);

  /// The one production instance.
  static const UrlSessionManager &shared();

private:
  [[nodiscard]] static std::optional<std::string>
  getBase64Authorization(const std::string &username,
                         const std::string &password);
};

} // namespace kestrune

#endif
