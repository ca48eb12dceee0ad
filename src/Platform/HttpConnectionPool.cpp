#include "Platform/HttpConnectionPool.h"

#include <mutex>
#include <vector>

namespace platform {
namespace {

/// Handles of finished transfers, each with the connections it opened, kept
/// for the next transfer. One taken on another thread than it was given
/// back on is ordered by the lock.
class HandlePool {
public:
  CurlHandle take() {
    {
      std::lock_guard lock(mutex);
      if (!idle.empty()) {
        CurlHandle handle = std::move(idle.back());
        idle.pop_back();
        return handle;
      }
    }
    return CurlHandle(curl_easy_init());
  }

  /// Keeps \p handle and its connections; a reset forgets every option of
  /// the transfer that used it, not the connections.
  void giveBack(CurlHandle handle) {
    curl_easy_reset(handle.get());
    std::lock_guard lock(mutex);
    idle.push_back(std::move(handle));
  }

private:
  std::mutex mutex;
  std::vector<CurlHandle> idle;
};

// Never destroyed: a transfer may still be running while the process ends,
// and the operating system closes the connections then.
HandlePool &handlePool() {
  static HandlePool *pool = new HandlePool();
  return *pool;
}

} // namespace

void initialiseCurl() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

PooledHandle::PooledHandle() : handle(handlePool().take()) {}

PooledHandle::~PooledHandle() {
  if (handle)
    handlePool().giveBack(std::move(handle));
}

} // namespace platform
