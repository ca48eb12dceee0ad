#include "Platform/PropertyList.h"

#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace platform {
namespace {

// {"CFBundleShortVersionString": "1.2"} as a binary property list.
const unsigned char binaryList[] = {
    0x62, 0x70, 0x6c, 0x69, 0x73, 0x74, 0x30, 0x30, 0xd1, 0x01, 0x02, 0x5f,
    0x10, 0x1a, 0x43, 0x46, 0x42, 0x75, 0x6e, 0x64, 0x6c, 0x65, 0x53, 0x68,
    0x6f, 0x72, 0x74, 0x56, 0x65, 0x72, 0x73, 0x69, 0x6f, 0x6e, 0x53, 0x74,
    0x72, 0x69, 0x6e, 0x67, 0x53, 0x31, 0x2e, 0x32, 0x08, 0x0b, 0x28, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x2c};

std::string xmlList(const std::string &body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<plist version=\"1.0\">\n" +
         body + "\n</plist>\n";
}

TEST(PropertyListTest, ReadsATextValueFromXmlOrBinaryLists) {
  struct Case {
    const char *name;
    std::string bytes;
    std::optional<std::string> expected;
  };
  const Case cases[] = {
      {"binary", std::string(std::begin(binaryList), std::end(binaryList)),
       "1.2"},
      {"xml",
       xmlList("<dict><key>CFBundleShortVersionString</key>"
               "<string>2.0.1</string></dict>"),
       "2.0.1"},
      {"xml, other keys too",
       xmlList("<dict><key>A</key><integer>1</integer>"
               "<key>CFBundleShortVersionString</key><string>é 3</string>"
               "</dict>"),
       "é 3"},
      {"key missing", xmlList("<dict><key>A</key><string>x</string></dict>"),
       std::nullopt},
      {"value not text",
       xmlList("<dict><key>CFBundleShortVersionString</key>"
               "<integer>3</integer></dict>"),
       std::nullopt},
      {"top level not a dictionary",
       xmlList("<array><string>1.2</string></array>"), std::nullopt},
      {"not a property list", "hello", std::nullopt},
      {"truncated binary", std::string("bplist00\xd1\x01", 10), std::nullopt},
      {"empty file", "", std::nullopt},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    testsupport::TempDir dir;
    testsupport::writeFile(dir.path() / "Info.plist", c.bytes);
    EXPECT_EQ(readPropertyListString(dir.path() / "Info.plist",
                                     "CFBundleShortVersionString"),
              c.expected);
  }
}

TEST(PropertyListTest, GivesNothingForAMissingFileOrAFolder) {
  testsupport::TempDir dir;
  EXPECT_EQ(readPropertyListString(dir.path() / "absent.plist", "A"),
            std::nullopt);
  EXPECT_EQ(readPropertyListString(dir.path(), "A"), std::nullopt);
}

} // namespace
} // namespace platform
