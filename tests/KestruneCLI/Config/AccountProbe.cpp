// Saves or reads the account in a process of its own, through the
// controller and the account keychain built the tool's way, on the store
// that the process chooses by itself.
//
//   AccountProbe save <username> <password> <apiKey> <hostname> <groupId>
//                     <groupIdNum>
//   AccountProbe read | keys | store

#include "KestruneCLI/Config/ConfigController.h"
#include "NoConsole.h"

#include <algorithm>
#include <cstdio>
#include <string>

int main(int argc, char **argv) {
  using namespace kestrune;
  NoConsole console;
  NoExit exit;
  ConfigController controller(console, makeAccountKeychain(), exit);
  std::string command = argc > 1 ? argv[1] : "";
  if (command == "save" && argc == 8) {
    ConfigModel model{argv[2], argv[3], argv[4],
                      argv[5], argv[6], std::stoll(argv[7])};
    ConfigControllerTestAccess::save(controller, model);
    return 0;
  }
  if (command == "read") {
    try {
      ConfigModel model = controller.getCreds();
      std::printf(
          "%s|%s|%s|%s|%s|%s\n", model.username.c_str(), model.password.c_str(),
          model.apiKey.c_str(), model.hostname.c_str(), model.groupId.c_str(),
          model.groupIdNum ? std::to_string(*model.groupIdNum).c_str() : "nil");
    } catch (const CliError &error) {
      std::printf("%s (%d)\n", error.caseName(), error.code());
    }
    return 0;
  }
  if (command == "keys") {
    std::vector<std::string> keys = makeAccountKeychain().allKeys();
    std::sort(keys.begin(), keys.end());
    for (const std::string &key : keys)
      std::printf("%s\n", key.c_str());
    return 0;
  }
  if (command == "store") {
    std::printf("%s\n", securestore::defaultItemStore().describe().c_str());
    return 0;
  }
  std::fputs("usage: AccountProbe save <six fields> | read | keys | store\n",
             stderr);
  return 2;
}
