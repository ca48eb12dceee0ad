// The console address as typed: a normalised address always has an http
// or https scheme and parses with a host that isn't empty (only the empty
// text gives the bare "https://", for the caller to report as missing), and
// normalising it again changes nothing.

#include "FuzzSupport.h"
#include "KestruneCLI/Helpers/APIAuthManager/HostnameNormalizer.h"
#include "Platform/UrlReference.h"

#include <cstdint>
#include <string_view>

using fuzzsupport::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  const std::string_view typed(reinterpret_cast<const char *>(data), size);
  const std::optional<std::string> normalised =
      kestrune::normalizeHostname(typed);
  if (typed.empty()) {
    require(normalised == "https://", "the empty text gives https://");
    return 0;
  }
  if (!normalised)
    return 0;
  require(normalised->starts_with("https://") ||
              normalised->starts_with("http://"),
          "an http or https scheme");
  const auto url = platform::UrlReference::parse(*normalised);
  require(url && url->host && !url->host->empty(),
          "the address parses with a host");
  require(kestrune::normalizeHostname(*normalised) == normalised,
          "normalising twice changes nothing");
  return 0;
}
