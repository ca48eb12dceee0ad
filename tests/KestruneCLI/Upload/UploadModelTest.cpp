#include "KestruneCLI/Upload/UploadModel.h"

#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace kestrune {
namespace {

// Records the exit codes asked for and returns, as a test process must.
class RecordingDarwin final : public DarwinProtocol {
public:
  void exitCode(std::int32_t code) const override { codes.push_back(code); }
  mutable std::vector<std::int32_t> codes;
};

using Text = std::optional<std::string>;

struct ModelCase {
  const char *what;
  std::string installer, metadata;
  Text icon;
  UploadModel expected;
};

const ModelCase modelCases[] = {
    {"plain paths keep their text",
     "build/App.pkg",
     "/tmp/App.plist",
     std::nullopt,
     {"build/App.pkg", "/tmp/App.plist", std::nullopt, "App.pkg", "App.plist",
      std::nullopt}},
    {"escapes decode, also to a letter",
     "My%20App%41.dmg",
     "dir%2Fmeta.plist",
     "%F0%9F%92%A1.png",
     {
         "My AppA.dmg",
         "dir/meta.plist",
         "💡.png",
         "My AppA.dmg",
         "meta.plist",
         "💡.png",
     }},
    {"backslashes go, typed or escaped",
     "/Users/a/My\\ App\\\\.pkg",
     "a%5Cb.plist",
     "\\icon",
     {"/Users/a/My App.pkg", "ab.plist", "icon", "My App.pkg", "ab.plist",
      "icon"}},
    {"a trailing slash still gives the name",
     "out/Foo.pkg/",
     "meta.plist//",
     "icons/",
     {"out/Foo.pkg/", "meta.plist//", "icons/", "Foo.pkg", "meta.plist",
      "icons"}},
    {"no tilde expansion, no absolute path",
     "~/App.mpkg",
     "../m.plist",
     std::nullopt,
     {"~/App.mpkg", "../m.plist", std::nullopt, "App.mpkg", "m.plist",
      std::nullopt}},
    {"an icon that can't be decoded is left out silently",
     "App.pkg",
     "App.plist",
     "50%.png",
     {"App.pkg", "App.plist", std::nullopt, "App.pkg", "App.plist",
      std::nullopt}},
    {"an icon of invalid UTF-8 is left out too",
     "App.pkg",
     "App.plist",
     "%C3%28.png",
     {"App.pkg", "App.plist", std::nullopt, "App.pkg", "App.plist",
      std::nullopt}},
};

TEST(UploadModelTest, NormalisesPathsAndTakesTheLastComponentAsName) {
  for (const ModelCase &c : modelCases) {
    SCOPED_TRACE(c.what);
    RecordingDarwin darwin;
    std::optional<UploadModel> model;
    std::string out = testsupport::captureStdout([&] {
      model = createUploadModel(c.installer, c.metadata, c.icon, darwin);
    });
    ASSERT_TRUE(model.has_value());
    EXPECT_EQ(*model, c.expected);
    EXPECT_EQ(out, "");
    EXPECT_TRUE(darwin.codes.empty());
  }
}

struct BadPathCase {
  std::string installer, metadata;
  std::string output;
  std::int32_t code;
};

const BadPathCase badPathCases[] = {
    {"100%.pkg", "a.plist",
     "\n❗️Error: Unable to fetch the location of the installer file.\n",
     36},
    {"%FF.pkg", "a.plist",
     "\n❗️Error: Unable to fetch the location of the installer file.\n",
     36},
    {"a.pkg%2", "a.plist",
     "\n❗️Error: Unable to fetch the location of the installer file.\n",
     36},
    {"a.pkg", "%zz.plist",
     "\n❗️Error: Unable to fetch the location of the metadata file.\n", 37},
    // Only the first failure is reported when the exit returns.
    {"%.pkg", "%.plist",
     "\n❗️Error: Unable to fetch the location of the installer file.\n",
     36},
};

TEST(UploadModelTest, UndecodablePathsReportAndGiveNothing) {
  for (const BadPathCase &c : badPathCases) {
    SCOPED_TRACE(c.installer + " " + c.metadata);
    RecordingDarwin darwin;
    std::optional<UploadModel> model;
    std::string out = testsupport::captureStdout([&] {
      model = createUploadModel(c.installer, c.metadata, "icon.png", darwin);
    });
    EXPECT_FALSE(model.has_value());
    EXPECT_EQ(out, c.output);
    EXPECT_EQ(darwin.codes, std::vector<std::int32_t>{c.code});
  }
}

struct SuffixCase {
  std::string_view name;
  bool installer, metadata;
};

constexpr SuffixCase suffixCases[] = {
    {"App.pkg", true, false},         {"App.dmg", true, false},
    {"App.mpkg", true, false},        {".pkg", true, false},
    {"App.app", false, false},        {"App.PKG", false, false},
    {"App.Dmg", false, false},        {"App.pkg.zip", false, false},
    {"Apppkg", false, false},         {"meta.plist", false, true},
    {".plist", false, true},          {"meta.PLIST", false, false},
    {"meta.plist.bak", false, false}, {"", false, false},
};

TEST(UploadModelTest, SuffixesAreComparedExactly) {
  for (const SuffixCase &c : suffixCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(isAcceptedInstallerName(c.name), c.installer);
    EXPECT_EQ(isAcceptedMetadataName(c.name), c.metadata);
  }
}

} // namespace
} // namespace kestrune
