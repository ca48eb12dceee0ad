#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_DIRECTBODYREAD_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_DIRECTBODYREAD_H

// A way past the server library for large request bodies, kept for the
// upload benchmarks: bench/upload-e2e (UploadE2eBench, 2 GiB through the
// whole tool, the simulator in the same process) and bench/blob-upload
// (BlobUploadBench, 1 GiB through kestrune-mock-console --no-hash). Both
// hold the tool's wall time against curl's on the same route over
// loopback, so the simulator must take a body faster than either client
// sends it. The server library reads a body 4 KiB at a time and polls
// before each read, which made the simulator the bottleneck of both
// measurements; these functions read the rest of a plain body straight
// from the connection's socket in large reads instead. The library then
// finds the body consumed and goes on to the answer. Tests never need
// this path, but every plain HTTP upload takes it.

#include "MockConsole/BodySink.h"

#include <httplib.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace mockconsole {

/// Where the body of a request can be read from directly.
struct DirectBody {
  /// The connection's socket; the server owns and closes it.
  int socket = -1;
  /// The body's declared length.
  std::uint64_t length = 0;
};

/// The socket and length of \p request's body, when the body arrives
/// plainly (a Content-Length, no chunks, no compression) and its socket is
/// found; absent otherwise. The caller knows whether the connection is
/// plain HTTP: over TLS the socket carries ciphertext.
std::optional<DirectBody> findDirectBody(const httplib::Request &request);

/// Reads from \p direct's socket into \p sink, through \p take (which
/// passes pieces on to \p sink and returns false once it is to be
/// dropped), until \p sink holds the whole length. Marks the client gone
/// when it hangs up, or when \p isStopping says the console stops while
/// nothing comes.
void readDirectBody(const DirectBody &direct, BodySink &sink,
                    const std::function<bool(const char *, std::size_t)> &take,
                    const std::function<bool()> &isStopping);

} // namespace mockconsole

#endif
