#include "EndToEnd/Fixture.h"

// `kestrunecli --version` reads the bundle at the fixed path
// "/Applications/Varnholt Kestrune.app". The tool runs here in a private
// mount namespace whose root is an overlay of the real one, so the bundle
// (or its absence) is seen by the tool alone and the real file system stays
// as it was.

namespace {

// $1: the tool, $2: a work folder, $3: the bundle to install or "none",
// $4: "built", or the prefix of an installed tool to run instead, then the
// tool's arguments. Exit 125: the namespace could not be set up.
constexpr const char *inNamespace = R"SH(
fail() { echo "namespace setup failed: $1" >&2; exit 125; }
tool=$1; work=$2; bundle=$3; [ "$4" = built ] || tool=$4/bin/kestrunecli; shift 4
mkdir -p "$work/layers" "$work/root" || fail mkdir
mount -t tmpfs none "$work/layers" || fail tmpfs
mkdir "$work/layers/upper" "$work/layers/work" || fail layers
mount -t overlay overlay -o "lowerdir=/,upperdir=$work/layers/upper,workdir=$work/layers/work" "$work/root" || fail overlay
app="$work/root/Applications/Varnholt Kestrune.app"
rm -rf "$app" || fail clear
if [ "$bundle" != none ]; then mkdir -p "$app" && cp -R "$bundle/." "$app" || fail copy; fi
mount --rbind /proc "$work/root/proc" && mount --rbind /dev "$work/root/dev" || fail mounts
exec chroot "$work/root" "$tool" "$@"
)SH";

// An XML property list, and a binary one, with CFBundleShortVersionString 1.2.
const std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleShortVersionString</key><string>1.2</string></dict></plist>
)";
const std::string binary(
    "bplist00\xd1\x01\x02_\x10\x1a"
    "CFBundleShortVersionStringS1.2\x08\x0b(\0\0\0\0\0\0\x01\x01\0\0\0\0\0"
    "\0\0\x03\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0,",
    79);
// A binary one whose version holds a NUL: "1.2\0beta".
const std::string withNul(
    "bplist00\321\001\002\137\020\032CFBundleShortVersionString\1301.2\0beta"
    "\010\013\050\0\0\0\0\0\0\001\001\0\0\0\0\0\0\0\003"
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\061",
    84);

// An XML one whose version holds a raw NUL, which XML has no way to write:
// "1.2\0beta".
const std::string xmlWithNul =
    std::string(xml).replace(xml.find("1.2"), 3, std::string("1.2\0beta", 8));

struct VersionCase {
  // Where Info.plist stands in the bundle, with what; no bundle when empty.
  std::string path, content;
  const char *option;
  std::string out;
  int code;
  // Run as installed, reading the list through its installed module.
  bool installed = false;
};

const std::string missing = "\n❗️Error: Unable to get the version of "
                            "kestrunecli\n";
const VersionCase versionCases[] = {
    {"Contents/Info.plist", xml, "--version", "\nVersion: 1.2\n\n", 0},
    {"Contents/Info.plist", binary, "-v", "\nVersion: 1.2\n\n", 0},
    {"Info.plist", xml, "--version", "\nVersion: 1.2\n\n", 0},
    {"Contents/Info.plist", withNul, "-v",
     std::string("\nVersion: 1.2\0beta\n\n", 20), 0},
    // An XML version ends at a NUL.
    {"Contents/Info.plist", xmlWithNul, "--version", "\nVersion: 1.2\n\n", 0},
    {"", "", "--version", missing, 48},
    {"Contents/Info.plist", "not a property list", "-v", missing, 48},
    {"Contents/Info.plist", binary, "-v", "\nVersion: 1.2\n\n", 0, true},
};

TEST(VersionTest, PrintsTheVersionOfTheBundleOrSaysItHasNone) {
  for (const VersionCase &c : versionCases) {
    SCOPED_TRACE(c.path + " " + c.content.substr(0, 20));
    e2e::Scene scene;
    const e2e::fs::path bundle = scene.dir() / "bundle", work = scene.dir();
    if (!c.path.empty()) {
      e2e::fs::create_directories((bundle / c.path).parent_path());
      testsupport::writeFile(bundle / c.path, c.content);
    }
    e2e::Run run = scene.run(
        {work.string(), c.path.empty() ? "none" : bundle.string(),
         c.installed ? e2e::installedPrefix().string() : "built", c.option},
        "",
        {"/usr/bin/unshare", "--mount", "--propagation", "private", "/bin/sh",
         "-c", inNamespace, "sh"});
    if (run.code == 125 || run.err.rfind("unshare:", 0) == 0)
      GTEST_SKIP() << "no private mount namespace here: " << run.err;
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.code, c.code);
  }
}

} // namespace
