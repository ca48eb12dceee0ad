#include "Platform/UrlReference.h"

#include "Platform/UrlText.h"

#include <uriparser/Uri.h>

#include <memory>

namespace platform {
namespace {

struct UriDeleter {
  void operator()(UriUriA *uri) const noexcept { uriFreeUriMembersA(uri); }
};

std::optional<std::string> textOf(const UriTextRangeA &range) {
  if (range.first == nullptr)
    return std::nullopt;
  return std::string(range.first, range.afterLast);
}

// The path lies between the authority (or the scheme) and the query or
// fragment; the text is known to be well-formed here, so the split of
// RFC 3986, appendix B, finds it.
std::string pathOf(std::string_view text) {
  std::size_t start = 0;
  std::size_t schemeEnd = text.find_first_of(":/?#");
  if (schemeEnd != std::string_view::npos && schemeEnd > 0 &&
      text[schemeEnd] == ':')
    start = schemeEnd + 1;
  if (text.substr(start, 2) == "//") {
    start = text.find_first_of("/?#", start + 2);
    if (start == std::string_view::npos)
      return {};
  }
  std::size_t end = text.find_first_of("?#", start);
  if (end == std::string_view::npos)
    end = text.size();
  return std::string(text.substr(start, end - start));
}

} // namespace

std::optional<UrlReference> UrlReference::parse(std::string_view text) {
  if (text.empty())
    return std::nullopt;
  UriUriA uri;
  const char *errorPos = nullptr;
  // uriparser frees what it built when it reports a failure.
  if (uriParseSingleUriExA(&uri, text.data(), text.data() + text.size(),
                           &errorPos) != URI_SUCCESS)
    return std::nullopt;
  std::unique_ptr<UriUriA, UriDeleter> owner(&uri);

  UrlReference reference;
  reference.text = std::string(text);
  reference.scheme = textOf(uri.scheme);
  reference.userInfo = textOf(uri.userInfo);
  reference.host = textOf(uri.hostText);
  reference.port = textOf(uri.portText);
  reference.path = pathOf(text);
  reference.query = textOf(uri.query);
  reference.fragment = textOf(uri.fragment);
  return reference;
}

std::string UrlReference::getLastPathComponent() const {
  std::string component = lastPathComponent(path);
  return removingPercentEncoding(component).value_or(component);
}

} // namespace platform
