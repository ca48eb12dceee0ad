#ifndef KESTRUNECLI_TOOLS_MOCKCONSOLE_CONNECTIONSOCKET_H
#define KESTRUNECLI_TOOLS_MOCKCONSOLE_CONNECTIONSOCKET_H

#include <optional>
#include <string>

namespace mockconsole {

// The server library hands its handlers no socket. Two things need one: a
// connection dropped on purpose (Answer::dropAfterBodyBytes), and the
// direct read of large bodies (DirectBodyRead.h).

/// The socket of the connection that this process accepted on \p localPort
/// from \p remoteAddress : \p remotePort; absent when there is none. It
/// stays owned by the server, which closes it.
std::optional<int> findConnectionSocket(int localPort,
                                        const std::string &remoteAddress,
                                        int remotePort);

/// Breaks off the connection on \p socket as a crashed server would: no
/// answer, and a reset when its owner closes it.
void dropConnection(int socket);

} // namespace mockconsole

#endif
