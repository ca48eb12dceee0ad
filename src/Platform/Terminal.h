#ifndef KESTRUNECLI_PLATFORM_TERMINAL_H
#define KESTRUNECLI_PLATFORM_TERMINAL_H

#include <cstddef>
#include <string_view>

namespace platform {

/// The terminal the tool writes to: standard output in the tool (see
/// standardOutput), a recorder in tests.
class Terminal {
public:
  virtual ~Terminal();

  /// Whether the bytes reach a terminal, not a file or a pipe.
  [[nodiscard]] virtual bool isInteractive() const = 0;

  /// The width in columns; fallbackColumns when it is unknown.
  [[nodiscard]] virtual std::size_t getColumns() const = 0;

  /// Writes \p bytes in one piece, so that writes of other threads never
  /// land inside them. Failures are not reported. No flush.
  virtual void write(std::string_view bytes) = 0;

  /// Sends what was written so far on to its reader.
  virtual void flush() = 0;
};

} // namespace platform

#endif
