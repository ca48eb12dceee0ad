#include "MockConsole/ConnectionSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <filesystem>

namespace mockconsole {
namespace {

struct Endpoint {
  std::string address;
  int port = 0;
};

std::optional<Endpoint> endpointOf(const sockaddr_storage &storage) {
  char text[INET6_ADDRSTRLEN] = {};
  if (storage.ss_family == AF_INET) {
    const auto &address = reinterpret_cast<const sockaddr_in &>(storage);
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return Endpoint{text, ntohs(address.sin_port)};
  }
  if (storage.ss_family == AF_INET6) {
    const auto &address = reinterpret_cast<const sockaddr_in6 &>(storage);
    inet_ntop(AF_INET6, &address.sin6_addr, text, sizeof text);
    return Endpoint{text, ntohs(address.sin6_port)};
  }
  return std::nullopt;
}

} // namespace

// The server library hands its handlers no socket, so the connection is
// found among this process's descriptors by its two endpoints, which no
// other open socket shares (a client in this process sees them reversed).
std::optional<int> findConnectionSocket(int localPort,
                                        const std::string &remoteAddress,
                                        int remotePort) {
  std::error_code error;
  for (const auto &entry :
       std::filesystem::directory_iterator("/proc/self/fd", error)) {
    std::string name = entry.path().filename().string();
    int descriptor = -1;
    auto [end, failure] =
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
    if (failure != std::errc() || end != name.data() + name.size())
      continue;
    sockaddr_storage local{}, peer{};
    socklen_t localLength = sizeof local, peerLength = sizeof peer;
    if (getsockname(descriptor, reinterpret_cast<sockaddr *>(&local),
                    &localLength) != 0 ||
        getpeername(descriptor, reinterpret_cast<sockaddr *>(&peer),
                    &peerLength) != 0)
      continue;
    auto localEnd = endpointOf(local);
    auto peerEnd = endpointOf(peer);
    if (localEnd && peerEnd && localEnd->port == localPort &&
        peerEnd->port == remotePort && peerEnd->address == remoteAddress)
      return descriptor;
  }
  return std::nullopt;
}

void dropConnection(int socket) {
  linger abort{1, 0};
  setsockopt(socket, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
  shutdown(socket, SHUT_RDWR);
}

} // namespace mockconsole
