#ifndef KESTRUNECLI_FUZZ_FUZZSUPPORT_H
#define KESTRUNECLI_FUZZ_FUZZSUPPORT_H

// What the fuzz targets share: stopping on a broken invariant, and the
// decoding of an input into one answer of the console.

#include "FuzzInput.h"
#include "Platform/HttpMessage.h"
#include "Platform/UrlText.h"

#include <cstdio>
#include <optional>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace fuzzsupport {

/// Stops the run with the input kept: a broken invariant is a finding like
/// a crash. The reason goes to standard error first.
[[noreturn]] inline void violated(const char *what) {
  std::fprintf(stderr, "invariant broken: %s\n", what);
  __builtin_trap();
}

inline void require(bool holds, const char *what) {
  if (!holds)
    violated(what);
}

/// Sends the tool's standard output to /dev/null: what a target prints is
/// no finding, and libFuzzer reports on standard error.
inline void silenceStandardOutput() {
  int null = ::open("/dev/null", O_WRONLY);
  if (null >= 0) {
    ::dup2(null, STDOUT_FILENO);
    ::close(null);
  }
}

/// One answer of the console as the client's callback receives it.
struct Answer {
  std::optional<std::string> data;
  std::optional<platform::HttpResponse> response;
  std::optional<platform::HttpError> error;
};

/// The statuses that the routes' tables name, and their neighbours.
inline constexpr long knownStatuses[] = {200, 201, 204, 400, 401,
                                         403, 404, 500, 0,   199};

/// An answer from \p input: whether a response came and its status (one of
/// the known ones or any number), up to four header fields, whether the
/// transport failed and why, and the body (the rest of the input).
inline Answer decodeAnswer(FuzzInput &input) {
  Answer answer;
  if (input.takeBool()) {
    platform::HttpResponse response;
    response.statusCode = input.takeBool()
                              ? input.pick(knownStatuses)
                              : input.takeIntegralInRange<long>(-1, 1000);
    const int fields = input.takeIntegralInRange(0, 4);
    for (int i = 0; i < fields; ++i) {
      std::string name = input.takeText(24);
      response.headers.emplace_back(std::move(name), input.takeText(256));
    }
    answer.response = std::move(response);
  }
  if (input.takeBool())
    answer.error = platform::HttpError{input.takeText(64)};
  if (input.takeBool())
    answer.data = input.takeRemainingText();
  return answer;
}

/// Whether \p text prints as it is, moving no cursor and setting nothing
/// in the terminal: no control character but tab and line feed.
inline bool isInert(const std::string &text) {
  return platform::escapeControlCharacters(text) == text;
}

inline bool hasStatus(const Answer &answer, long status) {
  return answer.response && answer.response->statusCode == status;
}

} // namespace fuzzsupport

#endif
