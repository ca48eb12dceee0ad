#ifndef KESTRUNECLI_PLATFORM_GRAPHEMES_H
#define KESTRUNECLI_PLATFORM_GRAPHEMES_H

#include <cstddef>
#include <string_view>

namespace platform {

/// The number of user-perceived characters (extended grapheme clusters) in
/// the UTF-8 text \p text. A byte that isn't valid UTF-8 counts as one
/// character of its own.
[[nodiscard]] std::size_t countGraphemes(std::string_view text);

} // namespace platform

#endif
