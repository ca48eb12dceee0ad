#include "KestruneCLI/Helpers/TivrelOSXUtils.h"

#include "Platform/PropertyList.h"

namespace kestrune {

std::optional<std::string> TivrelOSXUtils::getAdminToolVersion() const {
  std::error_code error;
  if (!std::filesystem::is_directory(bundlePath, error))
    return std::nullopt;
  const std::filesystem::path contents = bundlePath / "Contents";
  const std::filesystem::path infoList =
      std::filesystem::is_directory(contents, error)
          ? contents / "Info.plist"
          : bundlePath / "Info.plist";
  return platform::readPropertyListString(infoList,
                                          "CFBundleShortVersionString");
}

} // namespace kestrune
