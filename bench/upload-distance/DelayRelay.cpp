#include "DelayRelay.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <deque>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

/// The chunks of one direction between the thread reading them and the one
/// writing them on when their time has come. An empty chunk is the end.
class Pipe {
public:
  void push(Clock::time_point due, std::string chunk) {
    std::lock_guard lock(mutex);
    chunks.emplace_back(due, std::move(chunk));
    ready.notify_one();
  }
  std::pair<Clock::time_point, std::string> pop() {
    std::unique_lock lock(mutex);
    ready.wait(lock, [&] { return !chunks.empty(); });
    auto chunk = std::move(chunks.front());
    chunks.pop_front();
    return chunk;
  }

private:
  std::mutex mutex;
  std::condition_variable ready;
  std::deque<std::pair<Clock::time_point, std::string>> chunks;
};

void noDelay(int socket) {
  int yes = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
}

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// Carries what \p from sends to \p to, each chunk \p delay late; at the
/// end, passes the end on.
void carry(int from, int to, std::chrono::microseconds delay) {
  Pipe pipe;
  std::thread writer([&] {
    bool open = true;
    for (;;) {
      auto [due, chunk] = pipe.pop();
      std::this_thread::sleep_until(due);
      if (chunk.empty())
        break;
      for (std::size_t sent = 0; open && sent < chunk.size();) {
        ssize_t n =
            ::send(to, chunk.data() + sent, chunk.size() - sent, MSG_NOSIGNAL);
        open = n > 0;
        sent += open ? static_cast<std::size_t>(n) : 0;
      }
    }
    ::shutdown(to, SHUT_WR);
  });
  std::string buffer(64 * 1024, '\0');
  for (;;) {
    ssize_t n = ::recv(from, buffer.data(), buffer.size(), 0);
    if (n <= 0) {
      pipe.push(Clock::now() + delay, {});
      break;
    }
    pipe.push(Clock::now() + delay,
              buffer.substr(0, static_cast<std::size_t>(n)));
  }
  writer.join();
}

} // namespace

DelayRelay::DelayRelay(int targetPort, std::chrono::microseconds delayEachWay)
    : targetPort(targetPort), delay(delayEachWay) {
  listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(0);
  socklen_t length = sizeof address;
  if (listener < 0 ||
      ::bind(listener, reinterpret_cast<sockaddr *>(&address),
             sizeof address) != 0 ||
      ::listen(listener, 16) != 0 ||
      ::getsockname(listener, reinterpret_cast<sockaddr *>(&address),
                    &length) != 0)
    throw std::runtime_error("the relay cannot listen");
  port = ntohs(address.sin_port);
  acceptor = std::thread([this] { acceptConnections(); });
}

DelayRelay::~DelayRelay() {
  ::shutdown(listener, SHUT_RDWR);
  acceptor.join();
  ::close(listener);
  for (std::thread &session : sessions)
    session.join();
}

void DelayRelay::acceptConnections() {
  for (;;) {
    int client = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0)
      return;
    std::lock_guard lock(mutex);
    sessions.emplace_back([this, client] { relay(client); });
  }
}

void DelayRelay::relay(int client) {
  int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(targetPort);
  if (server < 0 || ::connect(server, reinterpret_cast<sockaddr *>(&address),
                              sizeof address) != 0) {
    ::close(client);
    if (server >= 0)
      ::close(server);
    return;
  }
  noDelay(client);
  noDelay(server);
  std::thread back([&] { carry(server, client, delay); });
  carry(client, server, delay);
  back.join();
  ::close(client);
  ::close(server);
}
