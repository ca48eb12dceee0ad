#ifndef KESTRUNECLI_TESTS_CONFIG_SPINNERTRANSCRIPT_H
#define KESTRUNECLI_TESTS_CONFIG_SPINNERTRANSCRIPT_H

#include <array>
#include <string>
#include <string_view>

namespace configtest {

/// The sign-in spinner's text.
inline constexpr std::string_view verifyingText = "Verifying credentials ...";

/// Rewrites what the sign-in wrote to a standard output that is no terminal
/// (so its frames are plain), with the spinner's own sequences made readable:
///
/// - a redraw "\r" + frame + " Verifying credentials ..." is dropped, as
///   their number depends on timing (none at all when the work is quick);
/// - the clearing draw "\r" and 27 blanks becomes "<clear>";
/// - "\x1b[?25l" becomes "<hide>", "\x1b[?25h" "<show>", a lone "\r" "<cr>".
///
/// Every other byte stays as written, so a message, a stray escape or a
/// half-drawn line still shows.
inline std::string readSpinnerTranscript(std::string_view output) {
  const std::string clearing =
      "\r" + std::string(2 + verifyingText.size(), ' ');
  const std::array<std::string, 4> redraws = {
      "\r- " + std::string(verifyingText), "\r\\ " + std::string(verifyingText),
      "\r| " + std::string(verifyingText), "\r/ " + std::string(verifyingText)};
  std::string result;
  std::size_t at = 0;
  auto takes = [&](std::string_view sequence) {
    if (output.substr(at, sequence.size()) != sequence)
      return false;
    at += sequence.size();
    return true;
  };
  while (at < output.size()) {
    bool redrawn = false;
    for (const std::string &redraw : redraws)
      redrawn = redrawn || takes(redraw);
    if (redrawn)
      continue;
    if (takes(clearing))
      result += "<clear>";
    else if (takes("\x1b[?25l"))
      result += "<hide>";
    else if (takes("\x1b[?25h"))
      result += "<show>";
    else if (takes("\r"))
      result += "<cr>";
    else
      result += output[at++];
  }
  return result;
}

/// What the sign-in spinner leaves when it is cleared after a good lookup:
/// hidden cursor, the clearing draw, the cursor shown, back to the start of
/// the line, and the cursor shown once more as the spinner goes away.
inline constexpr std::string_view clearedSpinner =
    "<hide><clear><show><cr><show>";

} // namespace configtest

#endif
