// Writes records into a file store, as one process of a test that runs
// several at once or kills them at random moments.
//
//   StoreWriter <store path> <service> <tag> <rounds>
//
// Each round stores "<tag>-<round>" under each of six keys, in order, and
// prints "<key> <value>" after each write has returned. Rounds 0 means
// without end. Exit code 0 after the last round; 1 when a write fails.

#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"

#include <array>
#include <cstdio>
#include <string>

int main(int argc, char **argv) {
  if (argc != 5) {
    std::fputs("usage: StoreWriter <store path> <service> <tag> <rounds>\n",
               stderr);
    return 2;
  }
  securestore::FileItemStore store(argv[1]);
  securestore::Keychain keychain =
      securestore::Keychain(argv[2]).withItemStore(store);
  const std::string tag = argv[3];
  const long rounds = std::stol(argv[4]);
  constexpr std::array<const char *, 6> keys = {
      "username", "password", "apiKey", "hostname", "groupId", "groupIdNum"};
  for (long round = 0; rounds == 0 || round < rounds; ++round) {
    for (const char *key : keys) {
      std::string value = tag + "-" + std::to_string(round);
      try {
        keychain.set(value, key);
      } catch (const securestore::Error &error) {
        std::fprintf(stderr, "write of %s failed: %s\n", key, error.what());
        return 1;
      }
      std::printf("%s %s\n", key, value.c_str());
      std::fflush(stdout);
    }
  }
  return 0;
}
