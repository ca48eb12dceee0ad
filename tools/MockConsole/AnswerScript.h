#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_ANSWERSCRIPT_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_ANSWERSCRIPT_H

#include "MockConsole/Answer.h"
#include "MockConsole/Route.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace mockconsole {

/// The answers scripted in place of the console's own, the count of calls
/// of each route that picks them, and the waits they ask for (a delay, an
/// answer held until released). All members may be called from any thread.
class AnswerScript {
public:
  /// Answers every later call of \p route with \p answer.
  void setAnswer(Route route, Answer answer);
  /// Answers the \p call-th call of \p route (counted from 1, scripted calls
  /// included) with \p answer; this wins over the above.
  void setAnswer(Route route, int call, Answer answer);
  /// Forgets every scripted answer.
  void clear();

  /// Counts one more call of \p route; the answer scripted for it, if any.
  std::optional<Answer> takeAnswer(Route route);
  /// Waits for \p answer's delay, and until it is released when it is held;
  /// returns at once when the console stops.
  void waitBeforeAnswering(const Answer &answer);
  /// Lets every answer held so far go out.
  void releaseHeldAnswers();
  /// Lets every answer go out now and later ones without waiting.
  void stop();

private:
  std::mutex mutex;
  std::condition_variable changed;
  std::map<Route, Answer> routeAnswers;
  std::map<std::pair<Route, int>, Answer> callAnswers;
  std::map<Route, int> callCounts;
  std::uint64_t releaseGeneration = 0;
  bool stopping = false;
};

/// At most \p size bytes from \p offset of \p answer's body with its
/// repetition in place: a body of any length, made as it goes out.
std::string getRepeatedPiece(const Answer &answer, std::uint64_t offset,
                             std::size_t size);

} // namespace mockconsole

#endif
