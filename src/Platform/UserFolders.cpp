#include "Platform/UserFolders.h"

#include <cstdlib>
#include <pwd.h>
#include <string>
#include <unistd.h>

namespace platform {

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

} // namespace platform
