#include "MockConsole/AnswerScript.h"

#include <algorithm>
#include <string_view>

namespace mockconsole {

void AnswerScript::setAnswer(Route route, Answer answer) {
  std::lock_guard lock(mutex);
  routeAnswers[route] = std::move(answer);
}

void AnswerScript::setAnswer(Route route, int call, Answer answer) {
  std::lock_guard lock(mutex);
  callAnswers[{route, call}] = std::move(answer);
}

void AnswerScript::clear() {
  std::lock_guard lock(mutex);
  routeAnswers.clear();
  callAnswers.clear();
}

std::optional<Answer> AnswerScript::takeAnswer(Route route) {
  std::lock_guard lock(mutex);
  int call = ++callCounts[route];
  if (auto found = callAnswers.find({route, call}); found != callAnswers.end())
    return found->second;
  if (auto found = routeAnswers.find(route); found != routeAnswers.end())
    return found->second;
  return std::nullopt;
}

void AnswerScript::waitBeforeAnswering(const Answer &answer) {
  std::unique_lock lock(mutex);
  if (answer.delay.count() > 0)
    changed.wait_for(lock, answer.delay, [&] { return stopping; });
  if (!answer.holdUntilReleased)
    return;
  std::uint64_t generation = releaseGeneration;
  changed.wait(lock,
               [&] { return stopping || releaseGeneration != generation; });
}

void AnswerScript::releaseHeldAnswers() {
  std::lock_guard lock(mutex);
  ++releaseGeneration;
  changed.notify_all();
}

void AnswerScript::stop() {
  std::lock_guard lock(mutex);
  stopping = true;
  changed.notify_all();
}

std::string getRepeatedPiece(const Answer &answer, std::uint64_t offset,
                             std::size_t size) {
  const Answer::Repetition &repeated = *answer.repeated;
  const std::string &text = repeated.text;
  const std::size_t at = std::min(repeated.at, answer.body.size());
  const std::uint64_t end = repeated.bytes ? at + *repeated.bytes : UINT64_MAX;
  std::string piece;
  while (piece.size() < size) {
    const std::uint64_t position = offset + piece.size();
    std::string_view next;
    if (position < at) {
      next = std::string_view(answer.body).substr(position, at - position);
    } else if (position < end) {
      std::size_t phase = (position - at) % text.size();
      next = std::string_view(text).substr(phase, end - position);
    } else if (std::uint64_t from = at + (position - end);
               from < answer.body.size()) {
      next = std::string_view(answer.body).substr(from);
    } else {
      break;
    }
    piece += next.substr(0, size - piece.size());
  }
  return piece;
}

} // namespace mockconsole
