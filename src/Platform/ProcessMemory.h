#ifndef KESTRUNECLI_PLATFORM_PROCESSMEMORY_H
#define KESTRUNECLI_PLATFORM_PROCESSMEMORY_H

namespace platform {

/// Makes the process non-dumpable for the rest of its life: it leaves no core
/// file, and other processes of the same user can neither attach to it
/// (ptrace) nor read its memory, environment or open files under /proc. Its
/// command line stays readable, as for every process.
void protectProcessMemory();

} // namespace platform

#endif
