#ifndef KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHUTILPROTOCOL_H
#define KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHUTILPROTOCOL_H

#include "KestruneCLI/Helpers/APIAuthManager/AuthParameters.h"

#include <optional>
#include <string>

namespace kestrune {

/// Where the secured sign-in gets the credentials it prompts for. AuthManager
/// is handed an implementation, so that tests can script the answers.
class AuthUtilProtocol {
public:
  virtual ~AuthUtilProtocol();

  /// Asks for \p input and returns the answer: a non-empty text, the empty
  /// text when the user gave nothing twice, or std::nullopt when no answer
  /// could be read at all (end of input, a failing terminal).
  [[nodiscard]] virtual std::optional<std::string>
  getValidInput(AuthParameters input) const = 0;
};

} // namespace kestrune

#endif
