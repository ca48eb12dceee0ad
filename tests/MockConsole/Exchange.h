#ifndef KESTRUNECLI_TESTS_MOCKCONSOLE_EXCHANGE_H
#define KESTRUNECLI_TESTS_MOCKCONSOLE_EXCHANGE_H

#include "Platform/HttpSession.h"

#include <optional>
#include <string>

namespace mockconsoletest {

/// What a request came back with.
struct Outcome {
  std::optional<std::string> data;
  std::optional<platform::HttpResponse> response;
  std::optional<platform::HttpError> error;
};

/// Sends \p request on \p session and waits for its completion.
inline Outcome exchange(const platform::HttpSession &session,
                        platform::HttpRequest request) {
  Outcome outcome;
  {
    platform::HttpTask task = session.dataTask(
        std::move(request), [&outcome](auto data, auto response, auto error) {
          outcome = {std::move(data), std::move(response), std::move(error)};
        });
    task.resume();
  } // the task waits for its thread here
  return outcome;
}

inline platform::HttpRequest makeRequest(std::string url,
                                         std::string method = "GET",
                                         platform::HttpBody body = {}) {
  platform::HttpRequest request;
  request.url = std::move(url);
  request.method = std::move(method);
  request.body = std::move(body);
  return request;
}

} // namespace mockconsoletest

#endif
