#ifndef KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHUTIL_H
#define KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHUTIL_H

#include "KestruneCLI/Helpers/APIAuthManager/AuthUtilProtocol.h"

namespace kestrune {

/// Prompts on the terminal. The username is read as a line of standard input
/// and shows as it is typed; the password and the API key are read from the
/// controlling terminal with echo off (see platform::readLineWithoutEcho), so
/// they never show.
///
/// Each field gets at most two prompts: an empty first answer (for a secret,
/// the end of input counts as one, as with getpass) prints
/// "❗️Error: The entered {name} is empty. Please enter the {name}." and
/// asks again; an empty second answer is returned as it is. Answers are not
/// trimmed: a blank is a character.
class AuthUtil final : public AuthUtilProtocol {
public:
  [[nodiscard]] std::optional<std::string>
  getValidInput(AuthParameters input) const override;

  /// The one production instance.
  static const AuthUtil &shared();
};

} // namespace kestrune

#endif
