#ifndef KESTRUNECLI_ARGUMENTPARSER_USAGE_STRINGEXTENSIONS_H
#define KESTRUNECLI_ARGUMENTPARSER_USAGE_STRINGEXTENSIONS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace argparse {

/// \p text broken into lines of at most \p columns characters, every line
/// but empty ones indented by \p wrappingIndent spaces. Breaks at the last
/// blank that fits, keeps the text's own line breaks, and lets a word longer
/// than the width overflow. When \p columns is exactly the indent, every
/// word is a line of its own; when it is less, the text keeps its own line
/// breaks only.
std::string wrapped(std::string_view text, std::size_t columns,
                    std::size_t wrappingIndent = 0);

/// \p text with case boundaries marked by \p separator and every character in
/// lower case: "groupId" gives "group-id", "URLPath" gives "url-path".
std::string convertedToSnakeCase(std::string_view text,
                                 std::string_view separator = "_");

/// \p prefix joined to \p name in the name's style: "no-dry-run",
/// "no_dry_run"; a name with neither "-" nor "_" is joined with "-".
std::string addingPrefixWithAutodetectedStyle(std::string_view name,
                                              std::string_view prefix);

/// The Levenshtein distance between \p a and \p b in characters.
std::size_t editDistance(std::string_view a, std::string_view b);

} // namespace argparse

#endif
