#ifndef KESTRUNECLI_UPLOAD_UPLOADMODEL_H
#define KESTRUNECLI_UPLOAD_UPLOADMODEL_H

#include "KestruneCLI/Helpers/DarwinProtocol.h"

#include <optional>
#include <string>
#include <string_view>

namespace kestrune {

/// The files of one upload: each path as it will be read and the name that
/// the console is told.
struct UploadModel {
  std::string installerPath;
  std::string metadataPath;
  /// Absent when no icon was given or its path could not be decoded.
  std::optional<std::string> iconPath;
  std::string installerName;
  std::string metadataName;
  /// Absent whenever iconPath is.
  std::optional<std::string> iconName;

  friend bool operator==(const UploadModel &, const UploadModel &) = default;
};

/// Turns a path as typed into the path to read: percent escapes are decoded,
/// then every backslash is removed (shell escapes pasted into quotes). Absent
/// when an escape is invalid or the decoded bytes are not UTF-8.
[[nodiscard]] std::optional<std::string> normalizePath(std::string_view path);

/// Builds the record of one upload from the paths as typed. When the
/// installer's or the metadata's path can't be decoded, prints that failure,
/// ends the process through \p darwinWrapper and returns std::nullopt (the
/// latter only matters when \p darwinWrapper returns). An icon path that
/// can't be decoded only leaves the icon fields absent.
[[nodiscard]] std::optional<UploadModel>
createUploadModel(const std::string &installerPath,
                  const std::string &metadataPath,
                  const std::optional<std::string> &iconPath,
                  const DarwinProtocol &darwinWrapper);

/// Whether \p name ends in ".dmg", ".pkg" or ".mpkg" (case-sensitive).
[[nodiscard]] bool isAcceptedInstallerName(std::string_view name);

/// Whether \p name ends in ".plist" (case-sensitive).
[[nodiscard]] bool isAcceptedMetadataName(std::string_view name);

} // namespace kestrune

#endif
