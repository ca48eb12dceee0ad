#include "SecureStore/ItemStore.h"

#include "SecureStore/FileItemStore.h"
#include "SecureStore/SecretServiceItemStore.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <pwd.h>
#include <unistd.h>

namespace securestore {

ItemStore::~ItemStore() = default;

namespace {

std::atomic<ItemStore *> chosenStore{nullptr};

std::filesystem::path homeDirectory() {
  if (const char *home = std::getenv("HOME"); home && *home)
    return home;
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::string buffer(size > 0 ? static_cast<std::size_t>(size) : 16384, '\0');
  struct passwd entry {};
  struct passwd *found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) ==
          0 &&
      found && found->pw_dir && *found->pw_dir)
    return found->pw_dir;
  return std::filesystem::temp_directory_path();
}

// The one place where the process's store is chosen: the Secret Service
// when it runs, the file store otherwise.
// The store lives until the process ends and is never destroyed, so no
// D-Bus teardown runs inside exit().
ItemStore &automaticStore() {
  static ItemStore *store = [] {
    std::unique_ptr<ItemStore> secretService = openSecretServiceItemStore();
    if (secretService)
      return secretService.release();
    return static_cast<ItemStore *>(new FileItemStore(defaultFileStorePath()));
  }();
  return *store;
}

} // namespace

std::filesystem::path defaultFileStorePath() {
  std::filesystem::path dataHome;
  if (const char *xdg = std::getenv("XDG_DATA_HOME");
      xdg && *xdg && std::filesystem::path(xdg).is_absolute())
    dataHome = xdg;
  else
    dataHome = homeDirectory() / ".local" / "share";
  return dataHome / "kestrune-cli" / "keychain";
}

ItemStore &defaultItemStore() {
  if (ItemStore *store = chosenStore.load())
    return *store;
  return automaticStore();
}

void setDefaultItemStore(ItemStore *store) { chosenStore.store(store); }

} // namespace securestore
