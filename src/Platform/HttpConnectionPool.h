#ifndef KESTRUNECLI_PLATFORM_HTTPCONNECTIONPOOL_H
#define KESTRUNECLI_PLATFORM_HTTPCONNECTIONPOOL_H

// Private to PlatformHttp: libcurl's handles, and the connections they keep.

#include <curl/curl.h>

#include <memory>

namespace platform {

struct CurlDeleter {
  void operator()(CURL *handle) const noexcept { curl_easy_cleanup(handle); }
};
using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;

/// Sets libcurl up for the process; later calls do nothing.
void initialiseCurl();

/// A handle for the time of one transfer, with the connections that earlier
/// transfers of the process opened and left open: the requests of one run
/// to one server go over one connection for as long as the server keeps it
/// open. It is the handle given back last, or a new one when all are in
/// use, so transfers that run at once never share a handle or a
/// connection. On destruction the handle forgets every option of the
/// transfer (its buffers and callbacks), not its connections, and goes
/// back.
class PooledHandle {
public:
  PooledHandle();
  ~PooledHandle();
  PooledHandle(const PooledHandle &) = delete;
  PooledHandle &operator=(const PooledHandle &) = delete;

  /// Null when libcurl could not make a handle.
  CURL *get() const noexcept { return handle.get(); }

private:
  CurlHandle handle;
};

} // namespace platform

#endif
