#ifndef KESTRUNECLI_PLATFORM_USERFOLDERS_H
#define KESTRUNECLI_PLATFORM_USERFOLDERS_H

#include <filesystem>

namespace platform {

/// The user's home folder: HOME when set and not empty, else the one the
/// user database gives for the process's user, else the temporary folder.
std::filesystem::path homeDirectory();

} // namespace platform

#endif
