#ifndef KESTRUNECLI_ARGUMENTPARSER_PARSING_GRAPHEMES_H
#define KESTRUNECLI_ARGUMENTPARSER_PARSING_GRAPHEMES_H

// The parser splits names and arguments into user-perceived characters with
// the platform's splitter, so that help, suggestions and short-option groups
// agree with the rest of the tool on what a character is.

#include "Platform/Graphemes.h"

namespace argparse {

using platform::countGraphemes;
using platform::isLowercase;
using platform::isUppercase;
using platform::lowercased;
using platform::splitGraphemes;

} // namespace argparse

#endif
