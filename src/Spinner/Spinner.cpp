#include "Spinner/Spinner.h"

#include "Platform/Graphemes.h"
#include "Platform/StandardOutput.h"
#include "Platform/TerminalSignals.h"
#include "TextStyling/TextStyling.h"

#include <cassert>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace spinner {
namespace {

constexpr std::string_view hideCursor = "\x1b[?25l";
constexpr std::string_view showCursor = "\x1b[?25h";

// Bounds of the wait between two redraws: a speed of zero, below zero or not
// a number would otherwise spin the thread, and a huge one overflow the clock.
constexpr double shortestDelay = 0.001;
constexpr double longestDelay = 365.0 * 24 * 60 * 60;

// At process exit stdio flushes and unbuffers standard output without
// taking its lock, so a redraw from a spinner's thread at that moment could
// be torn. The first exit handler closes this gate: from then on no redraw
// is written. Nothing else is written at exit either: a process that ends
// while a spinner turns leaves its last line as it stands, exactly as the
// spinner drew it. The gate is never destroyed, so threads may still look at
// it at exit.
struct ExitGate {
  std::mutex mutex;
  bool exiting = false;
};

void closeExitGate();

ExitGate &getExitGate() {
  static ExitGate *gate = [] {
    auto *made = new ExitGate;
    std::atexit(closeExitGate);
    return made;
  }();
  return *gate;
}

void closeExitGate() {
  ExitGate &gate = getExitGate();
  std::lock_guard lock(gate.mutex);
  gate.exiting = true;
}

std::size_t visibleLength(std::string_view text) {
  return platform::countGraphemes(
      styling::TextStyling::extractModes(text).text);
}

std::chrono::steady_clock::duration delayFor(double speed) {
  double seconds = speed;
  if (!(seconds >= shortestDelay))
    seconds = shortestDelay;
  if (seconds > longestDelay)
    seconds = longestDelay;
  return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
      std::chrono::duration<double>(seconds));
}

} // namespace

Spinner::Spinner(platform::Terminal &terminal, const SpinnerPattern &pattern,
                 std::string text, std::optional<double> speed,
                 styling::Color color)
    : terminal(terminal), speed(speed.value_or(pattern.getSpeed())),
      _text(std::move(text)) {
  const std::vector<std::string> &plain = pattern.getFrames();
  assert(!plain.empty() && "a spinner needs at least one frame");
  frames.reserve(plain.size());
  for (const std::string &frame : plain)
    frames.push_back(styling::applyingColor(frame, color));
}

Spinner::Spinner(const SpinnerPattern &pattern, std::string text,
                 std::optional<double> speed, styling::Color color)
    : Spinner(platform::standardOutput(), pattern, std::move(text), speed,
              color) {}

Spinner::~Spinner() {
  bool wasRunning = false;
  {
    std::lock_guard lock(mutex);
    closing = true;
    wasRunning = running;
  }
  wakeUp.notify_all();
  if (queue.joinable())
    queue.join();
  writeFlushed(showCursor);
  if (wasRunning)
    platform::noteCursorShown();
}

void Spinner::start() {
  std::unique_lock lock(mutex);
  if (running)
    return;
  // Noted first, so that a signal that ends the process from here on shows
  // the cursor again.
  platform::noteCursorHidden();
  writeFlushed(hideCursor);
  running = true;
  nextRedraw = Clock::now();
  if (!queue.joinable()) {
    try {
      queue = std::thread([this] { serveQueue(); });
    } catch (const std::system_error &) {
      // Without a thread there is no animation; the line is still drawn
      // when the spinner stops, so the caller loses nothing but the motion.
    }
  }
  lock.unlock();
  wakeUp.notify_all();
}

// The thread of this spinner: it runs the one pending job, a redraw at
// `nextRedraw`, and sleeps in between. Every job holds the mutex, so a
// redraw never overlaps another or the final drawing of stop.
void Spinner::serveQueue() {
  std::unique_lock lock(mutex);
  while (!closing) {
    if (!nextRedraw) {
      wakeUp.wait(lock);
      continue;
    }
    if (Clock::now() < *nextRedraw) {
      wakeUp.wait_until(lock, *nextRedraw);
      continue;
    }
    nextRedraw.reset();
    renderForever();
  }
}

void Spinner::renderForever() {
  if (!running)
    return;
  {
    ExitGate &gate = getExitGate();
    std::lock_guard gateLock(gate.mutex);
    if (gate.exiting)
      return;
    render();
  }
  nextRedraw = Clock::now() + delayFor(speed);
}

void Spinner::render() {
  std::string line = "\r";
  line += frame();
  writeFlushed(line);
}

void Spinner::writeFlushed(std::string_view bytes) {
  terminal.write(bytes);
  terminal.flush();
}

std::string Spinner::frame() {
  std::string result;
  if (!frames.empty()) {
    if (frameIdx >= frames.size())
      frameIdx = 0;
    result = frames[frameIdx];
    frameIdx = (frameIdx + 1) % frames.size();
  }
  result += ' ';
  result += _text;
  return result;
}

void Spinner::setTextLocked(std::string text) {
  const std::size_t oldLength = visibleLength(_text);
  const std::size_t newLength = visibleLength(text);
  if (oldLength > newLength)
    text.append(oldLength - newLength, ' ');
  _text = std::move(text);
}

bool Spinner::stopLocked(std::optional<std::string> text,
                         std::optional<std::string> symbol,
                         const std::string &terminator) {
  if (!running)
    return false;
  if (text)
    setTextLocked(std::move(*text));
  if (symbol) {
    frames = {symbol->empty() ? std::string(" ") : std::move(*symbol)};
    frameIdx = 0;
  }
  render();
  running = false;
  nextRedraw.reset();
  writeFlushed(showCursor);
  platform::noteCursorShown();
  terminal.write(terminator);
  return true;
}

void Spinner::stop(std::optional<std::string> text,
                   std::optional<std::string> symbol, std::string terminator) {
  std::lock_guard lock(mutex);
  stopLocked(std::move(text), std::move(symbol), terminator);
}

void Spinner::stopAndClear() {
  std::lock_guard lock(mutex);
  if (!stopLocked(std::string(), std::string(" "), std::string()))
    return;
  writeFlushed("\r");
}

void Spinner::succeed(std::optional<std::string> text) {
  stop(std::move(text), styling::green("✔"), "\n");
}

void Spinner::fail(std::optional<std::string> text) {
  stop(std::move(text), styling::red("✖"), "\n");
}

void Spinner::warn(std::optional<std::string> text) {
  stop(std::move(text), styling::yellow("⚠"), "\n");
}

void Spinner::info(std::optional<std::string> text) {
  stop(std::move(text), styling::blue("ℹ"), "\n");
}

void Spinner::unhideCursor() { writeFlushed(showCursor); }

std::vector<std::string> Spinner::getFrames() const {
  std::lock_guard lock(mutex);
  return frames;
}

void Spinner::setFrames(std::vector<std::string> frames) {
  assert(!frames.empty() && "a spinner needs at least one frame");
  std::lock_guard lock(mutex);
  frameIdx = 0;
  this->frames = std::move(frames);
}

double Spinner::getSpeed() const {
  std::lock_guard lock(mutex);
  return speed;
}

void Spinner::setSpeed(double speed) {
  std::lock_guard lock(mutex);
  this->speed = speed;
}

std::string Spinner::getText() const {
  std::lock_guard lock(mutex);
  return _text;
}

void Spinner::setText(std::string text) {
  std::lock_guard lock(mutex);
  setTextLocked(std::move(text));
}

bool Spinner::isRunning() const {
  std::lock_guard lock(mutex);
  return running;
}

} // namespace spinner
