// Runs a keychain script (KeychainScript.h) of the service "kestrune-cli" in
// a process of its own: on the store that the process chooses itself, as
// the tool would, or with --file on the file store at <path>.
//
//   StoreProbe [--file <path>] <command> [, <command>]...

#include "KeychainScript.h"
#include "SecureStore/FileItemStore.h"

#include <memory>

int main(int argc, char **argv) {
  securestore::Keychain keychain("kestrune-cli");
  std::unique_ptr<securestore::FileItemStore> file;
  int first = 1;
  if (argc > 2 && std::string(argv[1]) == "--file") {
    file = std::make_unique<securestore::FileItemStore>(argv[2]);
    keychain = keychain.withItemStore(*file);
    first = 3;
  }
  std::string script;
  for (int i = first; i < argc; ++i)
    script += std::string(argv[i]) + " ";
  securestore::runScript(keychain, script);
  return 0;
}
