#ifndef KESTRUNECLI_PLATFORM_PROPERTYLIST_H
#define KESTRUNECLI_PLATFORM_PROPERTYLIST_H

#include <filesystem>
#include <optional>
#include <string>

namespace platform {

/// The text value of \p key in the top-level dictionary of the property list
/// file at \p path, XML or binary. Absent when the file can't be read, is no
/// property list, has no dictionary at its top, lacks the key, or holds
/// something other than text there.
std::optional<std::string>
readPropertyListString(const std::filesystem::path &path,
                       const std::string &key);

} // namespace platform

#endif
