#include "KestruneCLI/UrlSessionManager/UrlSessionUtil.h"

#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"
#include "Platform/StandardOutput.h"

namespace kestrune {

UrlSessionUtilProtocol::~UrlSessionUtilProtocol() = default;

std::optional<platform::HttpSession>
UrlSessionUtil::getUrlSession(const ConfigModel &config) const {
  std::optional<platform::HttpHeaders> headers =
      UrlSessionManager::configureHeaders(config);
  if (!headers) {
    platform::printLine("\n❗️Unable to configure request headers. \n");
    return std::nullopt;
  }
  platform::HttpSessionConfiguration configuration;
  configuration.additionalHeaders = std::move(*headers);
  return platform::HttpSession(std::move(configuration));
}

const UrlSessionUtil &UrlSessionUtil::shared() {
  static const UrlSessionUtil instance;
  return instance;
}

} // namespace kestrune
