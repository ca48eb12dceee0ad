#ifndef KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONUTIL_H
#define KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONUTIL_H

#include "KestruneCLI/UrlSessionManager/UrlSessionUtilProtocol.h"

namespace kestrune {

/// Makes a session per call, carrying the four header fields of
/// UrlSessionManager::configureHeaders and nothing else.
class UrlSessionUtil final : public UrlSessionUtilProtocol {
public:
  /// Absent, after printing "\n❗️Unable to configure request headers. \n",
  /// when configureHeaders gives no fields.
  [[nodiscard]] std::optional<platform::HttpSession>
  getUrlSession(const ConfigModel &config) const override;

  /// The one production instance.
  static const UrlSessionUtil &shared();
};

} // namespace kestrune

#endif
