#include "KestruneCLI/KestruneCLI.h"

#include "KestruneCLI/Config/ConfigController.h"
#include "KestruneCLI/Helpers/APIAuthManager/AuthManager.h"
#include "KestruneCLI/Helpers/APIAuthManager/AuthUtil.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"

namespace kestrune {

// Signs in, signs out and lists, in this fixed order, for the flags given.
void KestruneCLI::Config::run() {
  ConfigController configController(UrlSessionManager::shared(),
                                    makeAccountKeychain(),
                                    DarwinWrapper::shared());
  if (signin)
    AuthManager::configure(
        groupId, hostname, username, password, apiKey, AuthUtil::shared(),
        [&](std::optional<CliError> error, std::optional<ConfigModel> model) {
          if (error) {
            reportError(*error, AuthManager::darwinWrapper.get());
            return;
          }
          if (model)
            configController.signIn(*model);
        });
  if (signout)
    configController.signOut();
  if (list)
    (void)configController.listInfo();
}

} // namespace kestrune
