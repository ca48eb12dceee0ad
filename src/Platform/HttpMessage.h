#ifndef KESTRUNECLI_PLATFORM_HTTPMESSAGE_H
#define KESTRUNECLI_PLATFORM_HTTPMESSAGE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

/// Header fields in the order they were given or received.
using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

/// The value of the field \p name, whose case doesn't matter. Several fields
/// of that name are joined with ", "; absent when there is none.
[[nodiscard]] std::optional<std::string> findHeader(const HttpHeaders &headers,
                                                    std::string_view name);

/// What a request carries as its body: nothing, bytes held in memory, or a
/// regular file that is read from disk in chunks while it is sent, so that a
/// large file costs no memory. Copies share the content.
class HttpBody {
public:
  /// No body.
  HttpBody();

  /// The bytes \p bytes.
  static HttpBody fromBytes(std::string bytes);

  /// The file at \p path, opened now. A regular file is streamed and must
  /// stay as it is now until its last byte has been read; anything else (a
  /// pipe, a device, a file whose size reads 0) is read to its end now and
  /// sent as those bytes. Absent when it can't be opened or read.
  [[nodiscard]] static std::optional<HttpBody>
  openFile(const std::filesystem::path &path);

  /// The number of bytes to send; 0 without a body.
  std::uint64_t getSize() const noexcept;

  /// Copies up to \p size bytes from \p offset into \p buffer and returns
  /// how many it copied; 0 only at the end. Throws std::runtime_error, with
  /// a sentence that names the file, when a file can't be read or has
  /// changed since it was opened (checked when its last byte is read).
  std::size_t readAt(std::uint64_t offset, char *buffer,
                     std::size_t size) const;

  /// The content's own interface; its implementations live in
  /// HttpMessage.cpp.
  class Content;

private:
  explicit HttpBody(std::shared_ptr<const Content> content);
  std::shared_ptr<const Content> content;
};

/// One request: where it goes, its method and its body. The header fields
/// come from the session.
struct HttpRequest {
  std::string url;
  std::string method = "GET";
  HttpBody body;
};

/// The final answer to a request, after any redirects.
struct HttpResponse {
  long statusCode = 0;
  /// The header fields of that answer, in the order they came.
  HttpHeaders headers;

  /// The value of the field \p name, as findHeader finds it.
  [[nodiscard]] std::optional<std::string>
  getHeader(std::string_view name) const {
    return findHeader(headers, name);
  }
};

/// Why a request failed without an answer.
struct HttpError {
  /// A readable sentence, followed by the details in parentheses.
  std::string description;
};

} // namespace platform

#endif
