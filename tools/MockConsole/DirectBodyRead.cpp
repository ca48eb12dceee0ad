#include "MockConsole/DirectBodyRead.h"

#include "MockConsole/ConnectionSocket.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/socket.h>

namespace mockconsole {
namespace {

/// The declared length of a body that arrives plainly, without chunks or
/// compression: only then may it be read from the socket directly.
std::optional<std::uint64_t> plainLength(const httplib::Request &request) {
  if (request.has_header("Transfer-Encoding") ||
      request.has_header("Content-Encoding") ||
      !request.has_header("Content-Length"))
    return std::nullopt;
  std::string text = request.get_header_value("Content-Length");
  std::uint64_t length = 0;
  auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), length);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return length;
}

} // namespace

std::optional<DirectBody> findDirectBody(const httplib::Request &request) {
  std::optional<std::uint64_t> length = plainLength(request);
  if (!length)
    return std::nullopt;
  std::optional<int> socket = findConnectionSocket(
      request.local_port, request.remote_addr, request.remote_port);
  if (!socket)
    return std::nullopt;
  return DirectBody{*socket, *length};
}

void readDirectBody(const DirectBody &direct, BodySink &sink,
                    const std::function<bool(const char *, std::size_t)> &take,
                    const std::function<bool()> &isStopping) {
  std::vector<char> buffer(1024 * 1024);
  while (sink.getLength() < direct.length) {
    pollfd readable{direct.socket, POLLIN, 0};
    int ready = ::poll(&readable, 1, 100);
    if (ready == 0) {
      if (isStopping()) {
        sink.markClientGone();
        return;
      }
      continue;
    }
    std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(
        buffer.size(), direct.length - sink.getLength()));
    ssize_t n =
        ready < 0 ? -1 : ::recv(direct.socket, buffer.data(), wanted, 0);
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0) {
      sink.markClientGone();
      return;
    }
    if (!take(buffer.data(), static_cast<std::size_t>(n)))
      return;
  }
}

} // namespace mockconsole
