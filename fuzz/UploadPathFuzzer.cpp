// The paths of an upload as typed: normalising decodes percent escapes and
// then drops every backslash. A normalised path is UTF-8 without a
// backslash; text without "%" only loses its backslashes; a path is refused
// only for a "%" or bytes that aren't UTF-8. The upload's record names each
// file after its path's last component, and an icon whose path is refused
// leaves both icon fields out while the installer and metadata stay.

#include "FuzzSupport.h"
#include "KestruneCLI/Helpers/DarwinProtocol.h"
#include "KestruneCLI/Upload/UploadModel.h"
#include "Platform/UrlText.h"

#include <algorithm>
#include <cstdint>
#include <string>

using fuzzsupport::require;

namespace {

// Records the exit instead of ending the process.
struct RecordingExit final : kestrune::DarwinProtocol {
  mutable std::optional<std::int32_t> code;
  void exitCode(std::int32_t exitCode) const override { code = exitCode; }
};

void checkPath(const std::string &typed) {
  const std::optional<std::string> path = kestrune::normalizePath(typed);
  if (!path) {
    require(typed.find('%') != std::string::npos ||
                !platform::isValidUtf8(typed),
            "only a % or bytes that aren't UTF-8 refuse a path");
    return;
  }
  require(platform::isValidUtf8(*path), "a normalised path is UTF-8");
  require(path->find('\\') == std::string::npos,
          "a normalised path has no backslash");
  if (typed.find('%') == std::string::npos) {
    std::string expected = typed;
    std::erase(expected, '\\');
    require(*path == expected, "without escapes only backslashes go");
  }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  fuzzsupport::silenceStandardOutput();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  fuzzsupport::FuzzInput input(data, size);
  const std::string installer = input.takeText(256);
  const std::string metadata = input.takeText(256);
  const std::optional<std::string> icon =
      input.takeBool() ? std::optional(input.takeRemainingText())
                       : std::nullopt;
  checkPath(installer);
  checkPath(metadata);
  if (icon)
    checkPath(*icon);

  RecordingExit exit;
  const std::optional<kestrune::UploadModel> model =
      kestrune::createUploadModel(installer, metadata, icon, exit);
  const auto installerPath = kestrune::normalizePath(installer);
  const auto metadataPath = kestrune::normalizePath(metadata);
  if (!installerPath || !metadataPath) {
    require(!model && exit.code == (installerPath ? 37 : 36),
            "a refused installer or metadata path ends the upload");
    return 0;
  }
  require(model && !exit.code, "decodable paths give a record");
  require(model->installerPath == installerPath &&
              model->metadataPath == metadataPath &&
              model->installerName ==
                  platform::lastPathComponent(*installerPath) &&
              model->metadataName == platform::lastPathComponent(*metadataPath),
          "each file is named after its path's last component");
  require(model->iconPath ==
                  (icon ? kestrune::normalizePath(*icon) : std::nullopt) &&
              model->iconName.has_value() == model->iconPath.has_value(),
          "the icon's fields are both there or both absent");
  return 0;
}
