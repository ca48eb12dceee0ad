#include "SecureStore/SecretServiceItemStore.h"

// Built instead of SecretServiceItemStore.cpp when libsecret is missing: the
// Secret Service is never reachable and the file store serves.

namespace securestore {

std::unique_ptr<ItemStore> openSecretServiceItemStore(std::string *reason) {
  if (reason)
    *reason = "built without libsecret";
  return nullptr;
}

} // namespace securestore
