// Runs keychain commands in a process of its own, on the store that the
// process chooses by itself, so that tests see what the tool would see.
//
//   KeychainProbe <service> <command> [, <command>]...
//
// Commands: describe | get <key> | set <key> <value> | remove <key> |
// contains <key> | keys | await <path>. After each command the probe prints
// "=> " and the outcome, after whatever the keychain printed itself.
// "await" prints "=> waiting" and goes on once <path> exists.

#include "SecureStore/Keychain.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using securestore::Keychain;

std::string run(const Keychain &keychain,
                const std::vector<std::string> &words) {
  const std::string &command = words.at(0);
  if (command == "describe")
    return securestore::defaultItemStore().describe();
  if (command == "get")
    return keychain.get(words.at(1)).value_or("absent");
  if (command == "set") {
    keychain.set(words.at(2), words.at(1));
    return "ok";
  }
  if (command == "remove") {
    keychain.remove(words.at(1));
    return "ok";
  }
  if (command == "contains")
    return keychain.contains(words.at(1)) ? "true" : "false";
  if (command == "keys") {
    std::string keys;
    for (const std::string &key : keychain.allKeys())
      keys += (keys.empty() ? "" : " ") + key;
    return keys;
  }
  if (command == "await") {
    std::printf("=> waiting\n");
    std::fflush(stdout);
    while (!std::filesystem::exists(words.at(1)))
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return "resumed";
  }
  return "unknown command " + command;
}

} // namespace

int main(int argc, char **argv) {
  if (argc < 3) {
    std::fputs("usage: KeychainProbe <service> <command> [, <command>]...\n",
               stderr);
    return 2;
  }
  Keychain keychain(argv[1]);
  std::vector<std::vector<std::string>> commands(1);
  for (int i = 2; i < argc; ++i) {
    if (std::string(argv[i]) == ",")
      commands.emplace_back();
    else
      commands.back().push_back(argv[i]);
  }
  for (const std::vector<std::string> &words : commands) {
    std::string outcome;
    try {
      outcome = run(keychain, words);
    } catch (const securestore::Status &status) {
      outcome = "throws " + std::string(status.caseName());
    } catch (const std::exception &error) {
      outcome = std::string("throws ") + error.what();
    }
    std::printf("=> %s\n", outcome.c_str());
    std::fflush(stdout);
  }
  return 0;
}
