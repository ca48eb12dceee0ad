#include "KestruneCLI/KestruneCLI.h"
#include "Platform/ProcessMemory.h"

int main(int argc, char **argv) {
  // Secrets pass through most runs: a sign-in's arguments and answers, the
  // stored password an upload sends. Closing the process to core files and
  // to other processes before anything is parsed covers every one of them.
  platform::protectProcessMemory();
  kestrune::KestruneCLI::main(argc, argv);
  return 0;
}
