#ifndef KESTRUNECLI_SECURESTORE_SECRETSERVICEITEMSTORE_H
#define KESTRUNECLI_SECURESTORE_SECRETSERVICEITEMSTORE_H

#include "SecureStore/ItemStore.h"

#include <memory>
#include <string>

namespace securestore {

/// Opens the Secret Service (libsecret) on the process's D-Bus session bus:
/// the bus of DBUS_SESSION_BUS_ADDRESS, else $XDG_RUNTIME_DIR/bus (GLib keeps
/// one session connection per process). Gives nullptr, with
/// the reason in \p reason when given, if no bus is reachable, no Secret
/// Service runs on it (none is started), it has no default collection, or
/// the program was built without libsecret.
///
/// The store keeps each item in the default collection: the value as the
/// secret, and as attributes "class", "service" (or "server") and "account"
/// in plain text, with the other attributes in "attributes". Calls answer
/// interactionNotAllowed while the default collection is locked (nothing
/// ever prompts), noDefaultKeychain when it is gone, and notAvailable when
/// the service has vanished.
std::unique_ptr<ItemStore>
openSecretServiceItemStore(std::string *reason = nullptr);

} // namespace securestore

#endif
