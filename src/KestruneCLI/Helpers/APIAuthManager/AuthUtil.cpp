#include "KestruneCLI/Helpers/APIAuthManager/AuthUtil.h"

#include "Platform/StandardOutput.h"
#include "Platform/TerminalPrompt.h"

#include <string_view>

namespace kestrune {
namespace {

std::optional<std::string> askOnce(AuthParameters input,
                                   const std::string &prompt) {
  if (input == AuthParameters::username) {
    platform::writeOut(prompt);
    platform::flushOut();
    return platform::readLineFromStandardInput();
  }
  return platform::readLineWithoutEcho(prompt);
}

} // namespace

AuthUtilProtocol::~AuthUtilProtocol() = default;

std::optional<std::string> AuthUtil::getValidInput(AuthParameters input) const {
  const std::string name(getName(input));
  const std::string prompt = "Enter the " + name + ": ";
  std::optional<std::string> answer = askOnce(input, prompt);
  if (!answer || !answer->empty())
    return answer;
  platform::printLine("❗️Error: The entered " + name +
                      " is empty. Please enter the " + name + ".");
  return askOnce(input, prompt);
}

const AuthUtil &AuthUtil::shared() {
  static const AuthUtil authUtil;
  return authUtil;
}

} // namespace kestrune
