#ifndef KESTRUNECLI_SECURESTORE_SECRETSERVICEITEMSTORE_H
#define KESTRUNECLI_SECURESTORE_SECRETSERVICEITEMSTORE_H

#include "SecureStore/ItemStore.h"

#include <memory>
#include <string>

namespace securestore {

/// Opens the Secret Service on the process's D-Bus session bus: the bus of
/// DBUS_SESSION_BUS_ADDRESS, else $XDG_RUNTIME_DIR/bus. The client lives in
/// the module kestrune-secret-service.so, loaded here at the first call that
/// finds a bus, so that a process that never gets here loads neither
/// libsecret nor GLib. Gives nullptr, with the reason in \p reason when
/// given, if no bus is reachable, the module or libsecret can't be loaded,
/// no Secret Service runs on the bus (none is started), or it has no default
/// collection.
///
/// The store keeps each item in the default collection: the value as the
/// secret, and as attributes "class", "service" (or "server") and "account"
/// in plain text, with the other attributes in "attributes". It finds items
/// by "service" (or "server") and "account" alone, so an item that another
/// program stored with these two is read, replaced and removed like its own
/// (its other attributes are kept). Calls answer interactionNotAllowed while
/// the default collection is locked (nothing ever prompts),
/// noDefaultKeychain when it is gone, and notAvailable when the service has
/// vanished.
std::unique_ptr<ItemStore>
openSecretServiceItemStore(std::string *reason = nullptr);

} // namespace securestore

#endif
