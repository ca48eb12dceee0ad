#include "Platform/HttpOrigin.h"

#include "Platform/AsciiText.h"
#include "Platform/HttpFailure.h"
#include "Platform/UrlReference.h"

#include <algorithm>
#include <cctype>

namespace platform {
namespace {

std::string toLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(std::tolower(c));
  });
  return text;
}

std::optional<std::string> partOf(CURLU *url, CURLUPart which,
                                  unsigned int flags = 0) {
  char *text = nullptr;
  if (curl_url_get(url, which, &text, flags) != CURLUE_OK)
    return std::nullopt;
  std::string value(text);
  curl_free(text);
  return value;
}

} // namespace

CurlUrl parseAsCurl(const std::string &url) {
  CurlUrl handle(curl_url());
  if (!handle ||
      curl_url_set(handle.get(), CURLUPART_URL, url.c_str(),
                   CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME) != CURLUE_OK)
    return nullptr;
  return handle;
}

std::optional<Origin> originOf(const std::string &url) {
  CurlUrl handle = parseAsCurl(url);
  if (!handle)
    return std::nullopt;
  auto scheme = partOf(handle.get(), CURLUPART_SCHEME);
  auto host = partOf(handle.get(), CURLUPART_HOST);
  auto port = partOf(handle.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  if (!scheme || !host || !port)
    return std::nullopt;
  return Origin{toLower(*scheme), toLower(*host), *port};
}

std::optional<HttpError> checkHost(const std::string &url, CURLU *parsed) {
  std::optional<UrlReference> reference = UrlReference::parse(url);
  std::string named = reference && reference->host ? *reference->host : "";
  if (named.empty())
    return HttpError{"The URL is not supported (it names no host)"};
  if (!parsed)
    return describeFailure(CURLE_URL_MALFORMAT, nullptr);
  std::string read = partOf(parsed, CURLUPART_HOST).value_or("");
  if (read.size() > 1 && read.front() == '[' && read.back() == ']')
    read = read.substr(1, read.size() - 2);
  if (!equalsIgnoringCase(named, read))
    return HttpError{"The URL is not supported (its host '" + named +
                     "' would be read as '" + read + "')"};
  return std::nullopt;
}

} // namespace platform
