// The answer to the application's creation: a 201 never fails (it names the
// application when its Location parses), any other status or no answer at
// all always does, with one of the route's two errors; a Location whose
// path ends in a number names that number; and what is printed holds no
// control character of the console's.

#include "FuzzSupport.h"
#include "KestruneCLI/UrlSessionManager/ConsoleAnswers.h"
#include "Platform/UrlReference.h"

#include <cstdint>
#include <string>

using fuzzsupport::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  fuzzsupport::FuzzInput input(data, size);
  if (input.takeBool()) {
    const std::string id = std::to_string(input.takeIntegral<std::uint64_t>());
    const std::string name = input.takeBool() ? "Location" : "location";
    const std::string slash = input.takeBool() ? "/" : "";
    platform::HttpResponse response{
        201,
        {{"Content-Type", "application/json"},
         {name, "https://uem.example/api/mam/apps/internal/" + id + slash}}};
    kestrune::ApplicationOutcome outcome =
        kestrune::readApplicationAnswer(input.takeRemainingText(), response);
    require(outcome.identifier == id && !outcome.error,
            "the Location's last path component names the application");
    return 0;
  }
  const fuzzsupport::Answer answer = fuzzsupport::decodeAnswer(input);
  const kestrune::ApplicationOutcome outcome =
      kestrune::readApplicationAnswer(answer.data, answer.response);
  require(!(outcome.identifier && outcome.error), "a name or an error");
  require(fuzzsupport::isInert(outcome.identifier.value_or("")) &&
              (!outcome.error ||
               fuzzsupport::isInert(outcome.error->errorDescription())),
          "the console's texts print inert");
  if (fuzzsupport::hasStatus(answer, 201)) {
    require(!outcome.error, "a 201 never fails");
    const auto location = answer.response->getHeader("Location");
    require(outcome.identifier.has_value() ==
                (location && platform::UrlReference::parse(*location)),
            "a name exactly when the Location parses");
  } else {
    require(!outcome.identifier && outcome.error &&
                (outcome.error->code() == 52 || outcome.error->code() == 53),
            "any other answer fails with an error of the route's table");
  }
  return 0;
}
