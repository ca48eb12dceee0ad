#include "KestruneCLI/UrlSessionManager/ConsoleAnswers.h"

#include "Platform/UrlReference.h"
#include "Platform/UrlText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <variant>

namespace kestrune {
namespace {

using Json = nlohmann::json;

/// The answer's body as a JSON object; absent without data, for text that
/// isn't JSON and for any other top level. The whole body must be JSON: the
/// parser would take a NUL byte for the end of its input, and JSON holds no
/// raw NUL anywhere, so a body with one is no JSON.
std::optional<Json> parseObject(const std::optional<std::string> &data) {
  if (!data || data->find('\0') != std::string::npos)
    return std::nullopt;
  Json json = Json::parse(*data, nullptr, /*allow_exceptions=*/false);
  if (json.is_discarded() || !json.is_object())
    return std::nullopt;
  return json;
}

/// A JSON number that converts exactly to a signed 64-bit integer: 5 and
/// 5.0 do; 5.5, 1e30, "5" and true don't.
std::optional<std::int64_t> exactInteger(const Json &value) {
  if (value.is_number_unsigned()) {
    auto number = value.get<std::uint64_t>();
    if (number > static_cast<std::uint64_t>(INT64_MAX))
      return std::nullopt;
    return static_cast<std::int64_t>(number);
  }
  if (value.is_number_integer())
    return value.get<std::int64_t>();
  if (!value.is_number_float())
    return std::nullopt;
  double number = value.get<double>();
  // -2^63 is the smallest int64; 2^63 is the first double past the largest.
  // Within that range the conversion drops the fraction, so a number with
  // one doesn't come back the same.
  if (!(number >= -9223372036854775808.0 && number < 9223372036854775808.0))
    return std::nullopt;
  auto integer = static_cast<std::int64_t>(number);
  if (static_cast<double>(integer) != number)
    return std::nullopt;
  return integer;
}

std::optional<std::int64_t> integerAt(const Json &object, const char *key) {
  auto found = object.find(key);
  if (found == object.end())
    return std::nullopt;
  return exactInteger(*found);
}

// What the console or the network says is printed: it comes with its
// control characters shown as escapes, so that no answer can drive the
// user's terminal.
std::string inert(std::string_view text) {
  return platform::escapeControlCharacters(text);
}

std::optional<std::string> messageOf(const Json &object) {
  auto found = object.find("message");
  if (found == object.end() || !found->is_string())
    return std::nullopt;
  return inert(found->get_ref<const std::string &>());
}

bool hasStatus(const std::optional<platform::HttpResponse> &response,
               long status) {
  return response && response->statusCode == status;
}

/// What the group lookup and the blob upload tell before their own fields,
/// in their tables' order: a transport error, a body that is no JSON object,
/// a status other than 200 (with the console's message when it gave one).
/// The routes differ only in the error each names for these rows.
struct RouteErrors {
  CliError notJson;
  CliError (*withMessage)(std::string);
  CliError unknown;
};

std::variant<Json, CliError>
readAcceptedObject(const std::optional<std::string> &data,
                   const std::optional<platform::HttpResponse> &response,
                   const std::optional<platform::HttpError> &error,
                   const RouteErrors &errors) {
  if (error)
    return CliError::networkError(inert(error->description));
  std::optional<Json> object = parseObject(data);
  if (!object)
    return errors.notJson;
  if (!hasStatus(response, 200)) {
    std::optional<std::string> message = messageOf(*object);
    return message ? errors.withMessage(std::move(*message)) : errors.unknown;
  }
  return std::move(*object);
}

} // namespace

AnswerOutcome
readGroupAnswer(const std::optional<std::string> &data,
                const std::optional<platform::HttpResponse> &response,
                const std::optional<platform::HttpError> &error) {
  std::variant<Json, CliError> accepted =
      readAcceptedObject(data, response, error,
                         {CliError::fetchGidAPIResponseParsingError(),
                          &CliError::fetchGidAPIResponseError,
                          CliError::unknownFetchGidResponseError()});
  if (auto *failure = std::get_if<CliError>(&accepted))
    return {std::nullopt, std::move(*failure)};
  const Json &object = std::get<Json>(accepted);
  auto groups = object.find("OrganizationGroups");
  if (groups == object.end() || !groups->is_array() || groups->empty() ||
      !std::all_of(groups->begin(), groups->end(),
                   [](const Json &group) { return group.is_object(); }))
    return {std::nullopt, CliError::noOGInResponse()};
  std::optional<std::int64_t> id = integerAt(groups->front(), "Id");
  if (!id)
    return {std::nullopt, CliError::noOGId()};
  return {id, std::nullopt};
}

AnswerOutcome
readBlobAnswer(const std::optional<std::string> &data,
               const std::optional<platform::HttpResponse> &response,
               const std::optional<platform::HttpError> &error) {
  std::variant<Json, CliError> accepted =
      readAcceptedObject(data, response, error,
                         {CliError::uploadResponseParsingError(),
                          &CliError::uploadApiResponseError,
                          CliError::uploadAPIResponseErrorUnknown()});
  if (auto *failure = std::get_if<CliError>(&accepted))
    return {std::nullopt, std::move(*failure)};
  std::optional<std::int64_t> value =
      integerAt(std::get<Json>(accepted), "Value");
  if (!value)
    return {std::nullopt, CliError::noBlobIdValue()};
  return {value, std::nullopt};
}

ApplicationOutcome
readApplicationAnswer(const std::optional<std::string> &data,
                      const std::optional<platform::HttpResponse> &response) {
  // The status comes first: a 201 whose body was cut off still tells that
  // the application was created.
  if (hasStatus(response, 201)) {
    std::optional<std::string> location = response->getHeader("Location");
    if (!location)
      return {};
    std::optional<platform::UrlReference> url =
        platform::UrlReference::parse(*location);
    if (!url)
      return {};
    return {inert(url->getLastPathComponent()), std::nullopt};
  }
  std::optional<Json> object = parseObject(data);
  std::optional<std::string> message =
      object ? messageOf(*object) : std::nullopt;
  return {std::nullopt, message ? CliError::errorCreatingApplicationWithMessage(
                                      std::move(*message))
                                : CliError::errorCreatingApplication()};
}

} // namespace kestrune
