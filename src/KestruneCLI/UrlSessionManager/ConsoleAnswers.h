#ifndef KESTRUNECLI_URLSESSIONMANAGER_CONSOLEANSWERS_H
#define KESTRUNECLI_URLSESSIONMANAGER_CONSOLEANSWERS_H

#include "KestruneCLI/Helpers/CliError.h"
#include "Platform/HttpMessage.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kestrune {

/// What the console's answer to one request decides: the number (a group's
/// Id, a blob's Value) or the error. Pure functions of the answer, so that
/// the client's callbacks and the fuzz targets share them. The texts they
/// take from the answer or the transport (the console's message, a failure's
/// description, an application's identifier) come with their control
/// characters shown as escapes, as platform::escapeControlCharacters shows
/// them, so that printing them can't drive the terminal.
struct AnswerOutcome {
  std::optional<std::int64_t> result;
  std::optional<CliError> error;
};

/// The answer to GET {groupApiStr}{groupId}: the first group's Id.
[[nodiscard]] AnswerOutcome
readGroupAnswer(const std::optional<std::string> &data,
                const std::optional<platform::HttpResponse> &response,
                const std::optional<platform::HttpError> &error);

/// The answer to a blob's upload: its Value.
[[nodiscard]] AnswerOutcome
readBlobAnswer(const std::optional<std::string> &data,
               const std::optional<platform::HttpResponse> &response,
               const std::optional<platform::HttpError> &error);

/// What the answer to the application's creation decides: the identifier
/// to print (a 201 whose Location parses as a URL), the error (any other
/// status), or neither (a 201 without a usable Location).
struct ApplicationOutcome {
  std::optional<std::string> identifier;
  std::optional<CliError> error;
};

/// The answer to the application's creation. The transport's error is never
/// looked at: a failed request ends like an answer without a message.
[[nodiscard]] ApplicationOutcome
readApplicationAnswer(const std::optional<std::string> &data,
                      const std::optional<platform::HttpResponse> &response);

} // namespace kestrune

#endif
