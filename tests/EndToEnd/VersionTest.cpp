#include "Support/ProcessRunner.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

// `kestrunecli --version` reads the bundle at the fixed path
// "/Applications/Varnholt Kestrune.app". The tool runs here in a private
// mount namespace whose root is an overlay of the real one, so the bundle
// (or its absence) is seen by the tool alone and nothing reaches the real
// file system.

namespace {

using testsupport::ProcessOptions;
using testsupport::ProcessResult;
using testsupport::runProcess;
using testsupport::TempDir;

// $1: a private work folder, $2: the tool, $3: the bundle to install or
// "none", then the tool's arguments. Exit 125 means the namespace could not
// be set up.
constexpr const char *namespaceScript = R"SH(
fail() { echo "namespace setup failed: $1" >&2; exit 125; }
work=$1; tool=$2; bundle=$3; shift 3
mkdir -p "$work/layers" "$work/root" || fail mkdir
mount -t tmpfs none "$work/layers" || fail tmpfs
mkdir "$work/layers/upper" "$work/layers/work" || fail layers
mount -t overlay overlay \
  -o "lowerdir=/,upperdir=$work/layers/upper,workdir=$work/layers/work" \
  "$work/root" || fail overlay
app="$work/root/Applications/Varnholt Kestrune.app"
rm -rf "$app" || fail clear
if [ "$bundle" != none ]; then
  mkdir -p "$work/root/Applications" || fail applications
  cp -R "$bundle" "$app" || fail copy
fi
mount --rbind /proc "$work/root/proc" || fail proc
mount --rbind /dev "$work/root/dev" || fail dev
exec chroot "$work/root" "$tool" "$@"
)SH";

constexpr unsigned char binaryInfoList[] = {
    0x62, 0x70, 0x6c, 0x69, 0x73, 0x74, 0x30, 0x30, 0xd1, 0x01, 0x02, 0x5f,
    0x10, 0x1a, 0x43, 0x46, 0x42, 0x75, 0x6e, 0x64, 0x6c, 0x65, 0x53, 0x68,
    0x6f, 0x72, 0x74, 0x56, 0x65, 0x72, 0x73, 0x69, 0x6f, 0x6e, 0x53, 0x74,
    0x72, 0x69, 0x6e, 0x67, 0x53, 0x31, 0x2e, 0x32, 0x08, 0x0b, 0x28, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x2c};

constexpr const char *xmlInfoList = R"XML(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>CFBundleShortVersionString</key>
	<string>1.2</string>
</dict>
</plist>
)XML";

const std::string versionOutput = "\nVersion: 1.2\n\n";
const std::string missingVersionOutput =
    "\n❗️Error: Unable to get the version of kestrunecli\n";

// Runs the tool with \p arguments where the bundle folder \p bundle (or
// none, when empty) stands at the fixed path.
ProcessResult runWithBundle(const std::filesystem::path &bundle,
                            const std::vector<std::string> &arguments) {
  TempDir work;
  ProcessOptions options;
  options.arguments = {"--mount",
                       "--propagation",
                       "private",
                       "/bin/sh",
                       "-c",
                       namespaceScript,
                       "sh",
                       work.path().string(),
                       KESTRUNECLI_PATH,
                       bundle.empty() ? "none" : bundle.string()};
  options.arguments.insert(options.arguments.end(), arguments.begin(),
                           arguments.end());
  return runProcess("/usr/bin/unshare", options);
}

bool namespaceRefused(const ProcessResult &result) {
  return result.exitCode == 125 ||
         result.standardError.rfind("unshare:", 0) == 0;
}

TEST(VersionTest, PrintsTheVersionOfAnXmlOrBinaryBundle) {
  struct Case {
    const char *name;
    std::string infoList;
    bool inContents;
    std::vector<std::string> arguments;
  };
  const Case cases[] = {
      {"xml in Contents", xmlInfoList, true, {"--version"}},
      {"binary in Contents",
       std::string(std::begin(binaryInfoList), std::end(binaryInfoList)),
       true,
       {"-v"}},
      {"xml at the bundle's root", xmlInfoList, false, {"--version"}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    TempDir bundle;
    std::filesystem::path folder =
        c.inContents ? bundle.path() / "Contents" : bundle.path();
    std::filesystem::create_directories(folder);
    testsupport::writeFile(folder / "Info.plist", c.infoList);

    ProcessResult result = runWithBundle(bundle.path(), c.arguments);
    if (namespaceRefused(result))
      GTEST_SKIP() << "no private mount namespace here: "
                   << result.standardError;
    EXPECT_EQ(result.standardOutput, versionOutput);
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.exitCode, 0);
  }
}

TEST(VersionTest, ReportsAMissingOrUnreadableBundleWithCode48) {
  TempDir unreadable;
  std::filesystem::create_directories(unreadable.path() / "Contents");
  testsupport::writeFile(unreadable.path() / "Contents" / "Info.plist",
                         "not a property list");
  for (const std::filesystem::path &bundle :
       {std::filesystem::path(), unreadable.path()}) {
    SCOPED_TRACE(bundle.empty() ? "no bundle" : "unreadable list");
    ProcessResult result = runWithBundle(bundle, {"--version"});
    if (namespaceRefused(result))
      GTEST_SKIP() << "no private mount namespace here: "
                   << result.standardError;
    EXPECT_EQ(result.standardOutput, missingVersionOutput);
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.exitCode, 48);
  }
}

TEST(VersionTest, LeavesTheRealApplicationsFolderAlone) {
  const bool existedBefore = std::filesystem::exists("/Applications");
  TempDir bundle;
  std::filesystem::create_directories(bundle.path() / "Contents");
  testsupport::writeFile(bundle.path() / "Contents" / "Info.plist",
                         xmlInfoList);
  ProcessResult result = runWithBundle(bundle.path(), {"--version"});
  if (namespaceRefused(result))
    GTEST_SKIP() << "no private mount namespace here";
  EXPECT_EQ(std::filesystem::exists("/Applications"), existedBefore);
  EXPECT_FALSE(std::filesystem::exists("/Applications/Varnholt Kestrune.app") &&
               !existedBefore);
}

} // namespace
