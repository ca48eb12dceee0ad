#include "KestruneCLI/KestruneCLI.h"

#include "KestruneCLI/Config/ConfigController.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"
#include "KestruneCLI/Upload/UploadController.h"
#include "KestruneCLI/UrlSessionManager/UrlSessionManager.h"

namespace kestrune {

// Changes the stored group when one is given, then uploads the files. The
// change is stored before the upload reads the account, so it holds for this
// upload and for the ones after it.
void KestruneCLI::Upload::run() {
  UploadController uploadController(DarwinWrapper::shared());
  ConfigController configController(UrlSessionManager::shared(),
                                    makeAccountKeychain(),
                                    DarwinWrapper::shared());
  if (groupId)
    configController.editGroupId(*groupId);
  uploadController.upload(installerPath, metadataPath, iconPath);
}

} // namespace kestrune
