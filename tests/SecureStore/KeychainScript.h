#ifndef KESTRUNECLI_TESTS_SECURESTORE_KEYCHAINSCRIPT_H
#define KESTRUNECLI_TESTS_SECURESTORE_KEYCHAINSCRIPT_H

#include "SecureStore/Keychain.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace securestore {

/// Runs one command of a keychain script on \p k and gives its outcome.
/// Commands: describe | get <key> | data <key> | set <key> <value> |
/// remove <key> | removeAll | contains <key> (with and without interface) |
/// read <key> | write <key> <value> | erase <key> (by subscript) | keys |
/// await <path> (prints "=> waiting", goes on once <path> exists) | fill
/// <key prefix> <tag> <keys> <rounds>: stores "<tag>-<round>" under "<key
/// prefix>0" … round after round (without end for 0 rounds), printing
/// "<key> <value>" after each write.
inline std::string runCommand(const Keychain &k,
                              const std::vector<std::string> &w) {
  const std::string &command = w.at(0);
  if (command == "describe")
    return k.getItemStore().describe();
  if (command == "get")
    return k.get(w.at(1)).value_or("absent");
  if (command == "data")
    return toText(k.getData(w.at(1)).value_or(toBytes("absent")));
  if (command == "contains")
    return std::to_string(k.contains(w.at(1), true)) +
           std::to_string(k.contains(w.at(1), false));
  if (command == "read")
    return k[w.at(1)].read().value_or("absent");
  if (command == "keys") {
    std::string keys;
    for (const std::string &key : k.allKeys())
      keys += key + " ";
    return keys;
  }
  if (command == "set")
    k.set(w.at(2), w.at(1));
  else if (command == "remove")
    k.remove(w.at(1));
  else if (command == "removeAll")
    k.removeAll();
  else if (command == "write")
    k[w.at(1)] = w.at(2);
  else if (command == "erase")
    k[w.at(1)] = std::nullopt;
  else if (command == "await") {
    std::printf("=> waiting\n");
    std::fflush(stdout);
    while (!std::filesystem::exists(w.at(1)))
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return "resumed";
  } else if (command == "fill") {
    const long keys = std::stol(w.at(3)), rounds = std::stol(w.at(4));
    for (long round = 0; rounds == 0 || round < rounds; ++round)
      for (long i = 0; i < keys; ++i) {
        std::string key = w.at(1) + std::to_string(i);
        k.set(w.at(2) + "-" + std::to_string(round), key);
        std::printf("%s %s-%ld\n", key.c_str(), w.at(2).c_str(), round);
        std::fflush(stdout);
      }
  } else
    return "unknown command " + command;
  return "ok";
}

/// Runs \p script, commands parted by " , ", on \p k: after each it prints
/// "=> " and the outcome (or "throws " and the failure), after whatever
/// the keychain printed itself.
inline void runScript(const Keychain &k, const std::string &script) {
  std::istringstream words(script + " ,");
  std::vector<std::string> command;
  for (std::string word; words >> word;) {
    if (word != ",") {
      command.push_back(word);
      continue;
    }
    std::string outcome;
    try {
      outcome = runCommand(k, command);
    } catch (const Status &status) {
      outcome = "throws " + std::string(status.caseName());
    } catch (const Error &error) {
      outcome = "throws " + error.localizedDescription();
    }
    std::printf("=> %s\n", outcome.c_str());
    std::fflush(stdout);
    command.clear();
  }
}

} // namespace securestore

#endif
