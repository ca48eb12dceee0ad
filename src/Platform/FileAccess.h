#ifndef KESTRUNECLI_PLATFORM_FILEACCESS_H
#define KESTRUNECLI_PLATFORM_FILEACCESS_H

#include <cstdint>
#include <filesystem>
#include <vector>

namespace platform {

/// Whether the user of this process may read \p path, as the system's own
/// permission check tells for the real user and group. False when the path
/// doesn't exist.
[[nodiscard]] bool isReadable(const std::filesystem::path &path);

/// The bytes of the file at \p path, as many as can be read: none when it
/// can't be opened, those that came before the failure when a read fails
/// part-way (as one of a directory does).
[[nodiscard]] std::vector<std::uint8_t>
readFileBytes(const std::filesystem::path &path);

} // namespace platform

#endif
