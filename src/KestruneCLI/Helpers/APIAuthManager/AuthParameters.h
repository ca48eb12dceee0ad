#ifndef KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHPARAMETERS_H
#define KESTRUNECLI_HELPERS_APIAUTHMANAGER_AUTHPARAMETERS_H

#include <array>
#include <string_view>

namespace kestrune {

/// The credentials that the secured sign-in asks for, in the order it asks.
enum class AuthParameters { username, password, apiKey };

/// Every case, in declaration order.
inline constexpr std::array<AuthParameters, 3> allAuthParameters = {
    AuthParameters::username, AuthParameters::password, AuthParameters::apiKey};

/// The case's name as declared ("username", "password", "apiKey"): prompts and
/// messages name the field with it.
constexpr std::string_view getName(AuthParameters parameter) {
  switch (parameter) {
  case AuthParameters::username:
    return "username";
  case AuthParameters::password:
    return "password";
  case AuthParameters::apiKey:
    return "apiKey";
  }
  return {};
}

} // namespace kestrune

#endif
