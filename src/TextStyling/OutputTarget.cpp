#include "TextStyling/OutputTarget.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace styling {
namespace {

bool equalsIgnoringAsciiCase(std::string_view text, std::string_view lower) {
  if (text.size() != lower.size())
    return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
    if (c != lower[i])
      return false;
  }
  return true;
}

} // namespace

OutputTarget decideOutputTarget(std::optional<std::string_view> xcodeColors,
                                std::optional<std::string_view> term,
                                bool stdoutIsTerminal) noexcept {
  if (xcodeColors && *xcodeColors == "YES")
    return OutputTarget::xcodeColors;
  // No character outside ASCII lower-cases to a letter of "dumb", so an
  // ASCII comparison is the whole Unicode one here.
  if (term && !equalsIgnoringAsciiCase(*term, "dumb") && stdoutIsTerminal)
    return OutputTarget::console;
  return OutputTarget::unknown;
}

OutputTarget currentOutputTarget() {
  std::optional<std::string> xcodeColors = getEnvValue("XcodeColors");
  std::optional<std::string> term = getEnvValue("TERM");
  std::optional<std::string_view> xcodeColorsView;
  std::optional<std::string_view> termView;
  if (xcodeColors)
    xcodeColorsView = *xcodeColors;
  if (term)
    termView = *term;
  return decideOutputTarget(xcodeColorsView, termView,
                            isatty(fileno(stdout)) == 1);
}

std::optional<std::string> getEnvValue(const char *name) {
  const char *value = std::getenv(name);
  if (!value)
    return std::nullopt;
  return std::string(value);
}

} // namespace styling
