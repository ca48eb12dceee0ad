#ifndef KESTRUNECLI_PLATFORM_ASCIITEXT_H
#define KESTRUNECLI_PLATFORM_ASCIITEXT_H

#include <string_view>

namespace platform {

/// Whether \p a and \p b are the same text when the ASCII letters are
/// compared without case; every other byte must match as it is. For the
/// names of protocols (header fields, schemes), which are ASCII by rule.
[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);

} // namespace platform

#endif
