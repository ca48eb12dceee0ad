// Runs keychain commands of the service "kestrune-cli" in a process of its
// own: on the store that the process chooses itself, as the tool would, or
// with --file on the file store at <path>.
//
//   StoreProbe [--file <path>] <command> [, <command>]...
//
// Commands: describe | get <key> | set <key> <value> | remove <key> |
// contains <key> | keys | await <path> | write <key prefix> <tag> <keys>
// <rounds>. After each command the probe prints "=> " and the outcome,
// after whatever the keychain printed itself. "await" prints "=> waiting"
// and goes on once <path> exists. "write" stores "<tag>-<round>" under
// "<key prefix>0" … "<key prefix><keys - 1>" round after round (without end
// for 0 rounds), printing "<key> <value>" after each write has returned.

#include "SecureStore/FileItemStore.h"
#include "SecureStore/Keychain.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using securestore::Keychain;

std::string run(const Keychain &keychain, const std::vector<std::string> &w) {
  const std::string &command = w.at(0);
  if (command == "describe")
    return keychain.getItemStore().describe();
  if (command == "get")
    return keychain.get(w.at(1)).value_or("absent");
  if (command == "set")
    keychain.set(w.at(2), w.at(1));
  else if (command == "remove")
    keychain.remove(w.at(1));
  else if (command == "contains")
    return keychain.contains(w.at(1)) ? "true" : "false";
  else if (command == "keys") {
    std::string keys;
    for (const std::string &key : keychain.allKeys())
      keys += (keys.empty() ? "" : " ") + key;
    return keys;
  } else if (command == "await") {
    std::printf("=> waiting\n");
    std::fflush(stdout);
    while (!std::filesystem::exists(w.at(1)))
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return "resumed";
  } else if (command == "write") {
    const long keys = std::stol(w.at(3)), rounds = std::stol(w.at(4));
    for (long round = 0; rounds == 0 || round < rounds; ++round)
      for (long i = 0; i < keys; ++i) {
        std::string key = w.at(1) + std::to_string(i);
        std::string value = w.at(2) + "-" + std::to_string(round);
        keychain.set(value, key);
        std::printf("%s %s\n", key.c_str(), value.c_str());
        std::fflush(stdout);
      }
  } else
    return "unknown command " + command;
  return "ok";
}

} // namespace

int main(int argc, char **argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  Keychain keychain("kestrune-cli");
  std::unique_ptr<securestore::FileItemStore> file;
  if (words.size() >= 2 && words[0] == "--file") {
    file = std::make_unique<securestore::FileItemStore>(words[1]);
    keychain = keychain.withItemStore(*file);
    words.erase(words.begin(), words.begin() + 2);
  }
  words.push_back(",");
  std::vector<std::string> command;
  for (const std::string &word : words) {
    if (word != ",") {
      command.push_back(word);
      continue;
    }
    std::string outcome;
    try {
      outcome = run(keychain, command);
    } catch (const securestore::Status &status) {
      outcome = "throws " + std::string(status.caseName());
    } catch (const std::exception &error) {
      outcome = std::string("throws ") + error.what();
    }
    std::printf("=> %s\n", outcome.c_str());
    std::fflush(stdout);
    command.clear();
  }
  return 0;
}
