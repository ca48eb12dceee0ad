#ifndef KESTRUNECLI_SPINNER_SPINNER_H
#define KESTRUNECLI_SPINNER_SPINNER_H

#include "Platform/Terminal.h"
#include "Spinner/SpinnerPattern.h"
#include "TextStyling/Color.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace spinner {

/// An animated frame followed by a text on one line of a terminal, redrawn
/// from a thread of its own while the caller goes on with slow work. The
/// cursor is hidden while it runs. Every member may be called from any
/// thread; a redraw and the final drawing never interleave.
class Spinner {
public:
  /// Takes the frames of \p pattern, coloured once now in \p color (as
  /// styling stands at this moment), the text \p text, and \p speed seconds
  /// per frame, or the pattern's speed when none is given. Writes nothing.
  /// The pattern must have at least one frame. Everything it draws goes to
  /// \p terminal, which must outlive it.
  Spinner(platform::Terminal &terminal, const SpinnerPattern &pattern,
          std::string text, std::optional<double> speed = std::nullopt,
          styling::Color color = styling::Color::defaultColor);

  /// The same, drawing on standard output.
  Spinner(const SpinnerPattern &pattern, std::string text,
          std::optional<double> speed = std::nullopt,
          styling::Color color = styling::Color::defaultColor);

  /// Stops the redraws, then shows the cursor, running or not.
  ~Spinner();

  Spinner(const Spinner &) = delete;
  Spinner &operator=(const Spinner &) = delete;

  /// Hides the cursor and begins the redraws: the first at once, then one
  /// every `speed` seconds. Does nothing when already running. While it
  /// runs, SIGINT, SIGTERM, SIGHUP or SIGQUIT that end the process show the
  /// cursor again first (see platform::noteCursorHidden).
  void start();

  /// Ends the animation with a final drawing. \p text, when given, replaces
  /// the text (by the rule of setText); \p symbol, when given, becomes the
  /// only frame (one blank if empty), otherwise the final drawing is the
  /// next frame. Then the cursor is shown and \p terminator written. Does
  /// nothing at all when not running.
  void stop(std::optional<std::string> text = std::nullopt,
            std::optional<std::string> symbol = std::nullopt,
            std::string terminator = "\n");

  /// Stops with blanks over the frame and text and leaves the cursor at the
  /// start of the emptied line. Does nothing when not running.
  void stopAndClear();

  /// Stop with a green "✔", red "✖", yellow "⚠" or blue "ℹ" and a line
  /// break; \p text, when given, replaces the text.
  void succeed(std::optional<std::string> text = std::nullopt);
  void fail(std::optional<std::string> text = std::nullopt);
  void warn(std::optional<std::string> text = std::nullopt);
  void info(std::optional<std::string> text = std::nullopt);

  /// Shows the cursor.
  void unhideCursor();

  /// The frames as drawn, colour included.
  [[nodiscard]] std::vector<std::string> getFrames() const;
  /// Replaces the frames, at least one; the next redraw shows the first.
  void setFrames(std::vector<std::string> frames);

  /// Seconds between two redraws; a change counts from the next one.
  [[nodiscard]] double getSpeed() const;
  void setSpeed(double speed);

  /// The text behind the frame, with any blanks added by setText.
  [[nodiscard]] std::string getText() const;
  /// Replaces the text. A new text that is shorter on screen than the old
  /// one gets blanks for the difference, so that a redraw covers the old
  /// text; lengths are counted in characters, without styling sequences.
  void setText(std::string text);

  [[nodiscard]] bool isRunning() const;

private:
  using Clock = std::chrono::steady_clock;

  void serveQueue();
  void renderForever();
  void render();
  void writeFlushed(std::string_view bytes);
  std::string frame();
  void setTextLocked(std::string text);
  bool stopLocked(std::optional<std::string> text,
                  std::optional<std::string> symbol,
                  const std::string &terminator);

  platform::Terminal &terminal;
  mutable std::mutex mutex;
  std::condition_variable wakeUp;
  std::vector<std::string> frames;
  double speed;
  std::string _text;
  bool running = false;
  std::size_t frameIdx = 0;
  std::optional<Clock::time_point> nextRedraw;
  bool closing = false;
  std::thread queue;
};

} // namespace spinner

#endif
