#include "Platform/ProcessMemory.h"

#include <sys/prctl.h>

namespace platform {

void protectProcessMemory() {
  // Cannot fail for the value 0; and there is nothing to fall back on.
  (void)::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
}

} // namespace platform
