#ifndef KESTRUNECLI_TESTS_SUPPORT_TEXTS_H
#define KESTRUNECLI_TESTS_SUPPORT_TEXTS_H

#include <string>

// What the tool prints on its usual paths, byte for byte as a user reads it
// (each with the line break its print adds): the tables of every suite
// compare against these.

namespace texts {

// clang-format off
inline const std::string signedIn = "\n💡-------------------------------------------💡\n\tYou have signed in successfully.\n\n";
inline const std::string saved = "\n🔑Information has been successfully saved into secure macOS keychain.\n\n";
inline const std::string signedOut = "\n🔐-------------------------------------------🔗\n\tYou have signed out successfully.\n\n";
inline const std::string groupNotStored = "\n❗️ERROR: Unknown error while editing the group id\n";
// clang-format on

/// A failure's line: "\n❗️Error: " and \p message.
inline std::string error(const std::string &message) {
  return "\n❗️Error: " + message + "\n";
}

} // namespace texts

#endif
