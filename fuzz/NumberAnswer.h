#ifndef KESTRUNECLI_FUZZ_NUMBERANSWER_H
#define KESTRUNECLI_FUZZ_NUMBERANSWER_H

// The invariants of the two routes that answer with a number (a group's Id,
// a blob's Value), checked on arbitrary answers and on well-formed ones
// built around a number that the input chooses.

#include "FuzzSupport.h"
#include "KestruneCLI/UrlSessionManager/ConsoleAnswers.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace fuzzsupport {

using Reader =
    kestrune::AnswerOutcome (*)(const std::optional<std::string> &,
                                const std::optional<platform::HttpResponse> &,
                                const std::optional<platform::HttpError> &);

/// \p wrap turns a number's JSON text into a 200 body that carries it.
inline void checkNumberRoute(const std::uint8_t *data, std::size_t size,
                             Reader read,
                             std::initializer_list<std::int32_t> errorCodes,
                             std::string (*wrap)(const std::string &)) {
  FuzzInput input(data, size);
  if (input.takeBool()) {
    // A well-formed success: the number comes back as it went in, whatever
    // its size or form (5 and 5.0 are the same integer).
    const auto number = input.takeIntegral<std::int64_t>();
    std::string text = std::to_string(number);
    if (input.takeBool() && number > -(1LL << 52) && number < (1LL << 52))
      text += ".0";
    platform::HttpResponse response{200, {}};
    kestrune::AnswerOutcome outcome = read(wrap(text), response, std::nullopt);
    require(outcome.result == number && !outcome.error,
            "a well-formed success gives its number back");
    return;
  }
  const Answer answer = decodeAnswer(input);
  const kestrune::AnswerOutcome outcome =
      read(answer.data, answer.response, answer.error);
  require(outcome.result.has_value() != outcome.error.has_value(),
          "exactly one of the number and the error");
  if (outcome.result)
    require(!answer.error && hasStatus(answer, 200),
            "a number only from a 200 answer without a transport error");
  if (outcome.error) {
    require(std::ranges::count(errorCodes, outcome.error->code()) == 1,
            "an error of the route's table");
    require(isInert(outcome.error->errorDescription()),
            "the console's and the network's texts print inert");
    if (answer.error)
      require(*outcome.error == kestrune::CliError::networkError(
                                    platform::escapeControlCharacters(
                                        answer.error->description)),
              "a transport error is reported as the network error");
  }
}

} // namespace fuzzsupport

#endif
