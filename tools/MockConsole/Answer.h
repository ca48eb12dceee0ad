#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_ANSWER_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_ANSWER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mockconsole {

/// Header fields in the order given (or, for a request, as received).
using Headers = std::vector<std::pair<std::string, std::string>>;

/// An answer of the console: its own, or one that replaces it for a route,
/// used to provoke every kind of answer a client must cope with. The fields
/// after the header fields say how it goes out; the console's own answers
/// leave them as they are.
struct Answer {
  int status = 200;
  std::string body{};
  /// Header fields of the answer. Content-Type is "application/json"
  /// unless given here.
  Headers headers{};
  /// Waits this long after reading the request before answering.
  std::chrono::milliseconds delay{0};
  /// Answers only once releaseHeldAnswers() is called or the console stops.
  bool holdUntilReleased = false;
  /// Closes the connection instead of answering, as soon as this many bytes
  /// of the request body are in (0: before reading any).
  std::optional<std::uint64_t> dropAfterBodyBytes{};
  /// Declares the whole body's length but closes the connection after
  /// sending this many bytes of it.
  std::optional<std::size_t> cutBodyAfter{};
  /// Text sent over and over inside the body: a body too large to hold.
  struct Repetition {
    /// Not empty.
    std::string text;
    /// Where in the body it goes.
    std::size_t at = 0;
    /// How many bytes of it in all; absent: without end, in chunks, until
    /// the client hangs up.
    std::optional<std::uint64_t> bytes{};
  };
  std::optional<Repetition> repeated{};
};

} // namespace mockconsole

#endif
