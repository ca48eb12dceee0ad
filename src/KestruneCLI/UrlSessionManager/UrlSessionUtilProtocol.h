#ifndef KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONUTILPROTOCOL_H
#define KESTRUNECLI_URLSESSIONMANAGER_URLSESSIONUTILPROTOCOL_H

#include "KestruneCLI/Helpers/ConfigModel.h"
#include "Platform/HttpSession.h"

#include <optional>

namespace kestrune {

/// Where the console client gets its sessions. Operations receive an
/// implementation, so that tests can hand out sessions of their own or none.
class UrlSessionUtilProtocol {
public:
  virtual ~UrlSessionUtilProtocol();

  /// A new session whose requests carry the header fields of \p config's
  /// account. Absent when those can't be made; the reason has been printed.
  [[nodiscard]] virtual std::optional<platform::HttpSession>
  getUrlSession(const ConfigModel &config) const = 0;
};

} // namespace kestrune

#endif
