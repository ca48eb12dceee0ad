#ifndef KESTRUNECLI_BENCH_UPLOADDISTANCE_DELAYRELAY_H
#define KESTRUNECLI_BENCH_UPLOADDISTANCE_DELAYRELAY_H

#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// A TCP relay on a loopback port in front of another one, that holds back
/// every chunk it reads for a fixed time in each direction, as a long
/// network path does: a round trip through it takes twice the delay more.
/// Chunks queue up behind one another, so the delay adds latency without
/// limiting throughput. Stops and waits for its connections when it goes.
class DelayRelay {
public:
  DelayRelay(int targetPort, std::chrono::microseconds delayEachWay);
  ~DelayRelay();
  DelayRelay(const DelayRelay &) = delete;
  DelayRelay &operator=(const DelayRelay &) = delete;

  /// The port it listens on.
  int getPort() const { return port; }

private:
  void acceptConnections();
  void relay(int client);

  int targetPort;
  std::chrono::microseconds delay;
  int listener = -1;
  int port = 0;
  std::mutex mutex;
  std::vector<std::thread> sessions;
  std::thread acceptor;
};

#endif
