#ifndef KESTRUNECLI_HELPERS_TIVRELOSXUTILS_H
#define KESTRUNECLI_HELPERS_TIVRELOSXUTILS_H

#include <filesystem>
#include <optional>
#include <string>

namespace kestrune {

/// Reads the version of the graphical application installed beside the
/// tool, from its bundle's Info property list.
class TivrelOSXUtils {
public:
  /// Where the application is installed.
  static constexpr const char *defaultBundlePath =
      "/Applications/Varnholt Kestrune.app";

  /// Reads the bundle at \p bundlePath (tests give their own).
  explicit TivrelOSXUtils(std::filesystem::path bundlePath = defaultBundlePath)
      : bundlePath(std::move(bundlePath)) {}

  /// CFBundleShortVersionString of the bundle's Contents/Info.plist (or of
  /// Info.plist at its root when it has no Contents folder), XML or binary.
  /// Absent when no bundle is there, or the list lacks a text value there.
  [[nodiscard]] std::optional<std::string> getAdminToolVersion() const;

private:
  std::filesystem::path bundlePath;
};

} // namespace kestrune

#endif
