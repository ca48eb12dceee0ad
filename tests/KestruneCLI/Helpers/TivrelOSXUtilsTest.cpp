#include "KestruneCLI/Helpers/TivrelOSXUtils.h"

#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace kestrune {
namespace {

std::string infoList(const std::string &version) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
         "version=\"1.0\"><dict><key>CFBundleShortVersionString</key>"
         "<string>" +
         version + "</string></dict></plist>\n";
}

TEST(TivrelOSXUtilsTest, ReadsTheShortVersionOfTheBundle) {
  struct Case {
    const char *name;
    const char *contentsList;
    const char *rootList;
    bool makeContents;
    std::optional<std::string> expected;
  };
  const Case cases[] = {
      {"Contents/Info.plist", "1.2", nullptr, true, "1.2"},
      {"Info.plist at the root", nullptr, "3.4", false, "3.4"},
      {"Contents wins over the root", "1.2", "3.4", true, "1.2"},
      {"Contents without a list", nullptr, "3.4", true, std::nullopt},
      {"empty bundle", nullptr, nullptr, false, std::nullopt},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    testsupport::TempDir bundle;
    if (c.makeContents)
      std::filesystem::create_directory(bundle.path() / "Contents");
    if (c.contentsList)
      testsupport::writeFile(bundle.path() / "Contents" / "Info.plist",
                             infoList(c.contentsList));
    if (c.rootList)
      testsupport::writeFile(bundle.path() / "Info.plist",
                             infoList(c.rootList));
    EXPECT_EQ(TivrelOSXUtils(bundle.path()).getAdminToolVersion(), c.expected);
  }
}

TEST(TivrelOSXUtilsTest, GivesNothingWithoutABundleFolder) {
  testsupport::TempDir dir;
  testsupport::writeFile(dir.path() / "file.app", infoList("1.0"));
  EXPECT_EQ(TivrelOSXUtils(dir.path() / "absent.app").getAdminToolVersion(),
            std::nullopt);
  EXPECT_EQ(TivrelOSXUtils(dir.path() / "file.app").getAdminToolVersion(),
            std::nullopt);
}

} // namespace
} // namespace kestrune
