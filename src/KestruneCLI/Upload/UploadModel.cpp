#include "KestruneCLI/Upload/UploadModel.h"

#include "KestruneCLI/Helpers/CliError.h"
#include "KestruneCLI/Helpers/DarwinWrapper.h"
#include "Platform/UrlText.h"

#include <algorithm>
#include <array>

namespace kestrune {

std::optional<std::string> normalizePath(std::string_view path) {
  std::optional<std::string> decoded = platform::removingPercentEncoding(path);
  if (!decoded)
    return std::nullopt;
  // Removed after decoding, so that an escaped backslash (%5C) goes too.
  std::erase(*decoded, '\\');
  return decoded;
}

std::optional<UploadModel>
createUploadModel(const std::string &installerPath,
                  const std::string &metadataPath,
                  const std::optional<std::string> &iconPath,
                  const DarwinProtocol &darwinWrapper) {
  std::optional<std::string> installer = normalizePath(installerPath);
  if (!installer) {
    reportError(CliError::errorFetchingLocationOfInstallerFile(),
                darwinWrapper);
    return std::nullopt;
  }
  std::optional<std::string> metadata = normalizePath(metadataPath);
  if (!metadata) {
    reportError(CliError::errorFetchingLocationOfMetadataFile(), darwinWrapper);
    return std::nullopt;
  }

  UploadModel model;
  model.installerName = platform::lastPathComponent(*installer);
  model.metadataName = platform::lastPathComponent(*metadata);
  model.installerPath = std::move(*installer);
  model.metadataPath = std::move(*metadata);
  // A bad icon path is reported by the pipeline only after the installer and
  // the metadata have gone up; here it just leaves the icon out.
  if (iconPath) {
    model.iconPath = normalizePath(*iconPath);
    if (model.iconPath)
      model.iconName = platform::lastPathComponent(*model.iconPath);
  }
  return model;
}

bool isAcceptedInstallerName(std::string_view name) {
  constexpr std::array<std::string_view, 3> suffixes = {".dmg", ".pkg",
                                                        ".mpkg"};
  return std::ranges::any_of(suffixes, [name](std::string_view suffix) {
    return name.ends_with(suffix);
  });
}

bool isAcceptedMetadataName(std::string_view name) {
  return name.ends_with(".plist");
}

} // namespace kestrune
