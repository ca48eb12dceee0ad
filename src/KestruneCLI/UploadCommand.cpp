#include "KestruneCLI/KestruneCLI.h"

#include "KestruneCLI/Config/ConfigController.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"
#include "KestruneCLI/Upload/UploadController.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"

namespace kestrune {

// Changes the stored group when one is given, then uploads the files. The
// change is stored before the upload, so it holds for the ones after it;
// this upload goes into the group it stored, whatever other runs change
// meanwhile.
void KestruneCLI::Upload::run() {
  UploadController uploadController(DarwinWrapper::shared());
  ConfigController configController(UrlSessionManager::shared(),
                                    makeAccountKeychain(),
                                    DarwinWrapper::shared());
  std::optional<ConfigModel> account;
  if (groupId) {
    account = configController.editGroupId(*groupId);
    if (!account)
      return;
  }
  uploadController.upload(installerPath, metadataPath, iconPath, account);
}

} // namespace kestrune
