#include "TextStyling/OutputTarget.h"

#include "Platform/AsciiText.h"
#include "Platform/StandardOutput.h"

#include <cstdlib>

namespace styling {

OutputTarget decideOutputTarget(std::optional<std::string_view> xcodeColors,
                                std::optional<std::string_view> term,
                                bool stdoutIsTerminal) noexcept {
  if (xcodeColors && *xcodeColors == "YES")
    return OutputTarget::xcodeColors;
  // No character outside ASCII lower-cases to a letter of "dumb", so an
  // ASCII comparison is the whole Unicode one here.
  if (term && !platform::equalsIgnoringCase(*term, "dumb") && stdoutIsTerminal)
    return OutputTarget::console;
  return OutputTarget::unknown;
}

OutputTarget currentOutputTarget(const platform::Terminal &terminal) {
  std::optional<std::string> xcodeColors = getEnvValue("XcodeColors");
  std::optional<std::string> term = getEnvValue("TERM");
  std::optional<std::string_view> xcodeColorsView;
  std::optional<std::string_view> termView;
  if (xcodeColors)
    xcodeColorsView = *xcodeColors;
  if (term)
    termView = *term;
  return decideOutputTarget(xcodeColorsView, termView,
                            terminal.isInteractive());
}

OutputTarget currentOutputTarget() {
  return currentOutputTarget(platform::standardOutput());
}

std::optional<std::string> getEnvValue(const char *name) {
  const char *value = std::getenv(name);
  if (!value)
    return std::nullopt;
  return std::string(value);
}

} // namespace styling
