#ifndef KESTRUNECLI_TEXTSTYLING_OUTPUTTARGET_H
#define KESTRUNECLI_TEXTSTYLING_OUTPUTTARGET_H

#include "Platform/Terminal.h"

#include <optional>
#include <string>
#include <string_view>

namespace styling {

/// Where styled text goes: nowhere that understands styles, a terminal, or a
/// debugger console that follows the XcodeColors convention.
enum class OutputTarget { unknown, console, xcodeColors };

/// Decides the target from the environment's values: \p xcodeColors is the
/// value of `XcodeColors` and \p term that of `TERM` (std::nullopt when
/// unset); \p stdoutIsTerminal tells whether standard output is a terminal.
/// `XcodeColors` must be exactly "YES"; a `TERM` of "dumb" in any case means
/// no terminal.
[[nodiscard]] OutputTarget
decideOutputTarget(std::optional<std::string_view> xcodeColors,
                   std::optional<std::string_view> term,
                   bool stdoutIsTerminal) noexcept;

/// The target of text written to \p terminal now, from `XcodeColors`, `TERM`
/// and whether \p terminal is interactive.
[[nodiscard]] OutputTarget
currentOutputTarget(const platform::Terminal &terminal);

/// The target of text written to standard output now.
[[nodiscard]] OutputTarget currentOutputTarget();

/// The value of the environment variable \p name, or std::nullopt if unset.
[[nodiscard]] std::optional<std::string> getEnvValue(const char *name);

} // namespace styling

#endif
