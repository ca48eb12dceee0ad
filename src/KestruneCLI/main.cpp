#include "KestruneCLI/KestruneCLI.h"

int main(int argc, char **argv) {
  kestrune::KestruneCLI::main(argc, argv);
  return 0;
}
