#include "ArgumentParser/Usage/StringExtensions.h"

#include <gtest/gtest.h>

#include <string>

namespace argparse {
namespace {

struct WrapCase {
  std::string text;
  std::size_t columns;
  std::size_t indent;
  std::string expected;
};

TEST(StringExtensionsTest, WrapsAtTheLastBlankThatFits) {
  const WrapCase cases[] = {
      {"", 10, 0, ""},
      {"one two three", 20, 0, "one two three"},
      {"one two three", 8, 0, "one two\nthree"},
      {"one two three", 10, 2, "  one two\n  three"},
      {"abcdefghijkl mn", 5, 0, "abcdefghijkl\nmn"},
      {"abcdefghijkl", 5, 0, "abcdefghijkl"},
      {"a\n\nb", 10, 3, "   a\n\n   b"},
      {"\nHello world\n", 80, 26, "\n                          Hello world\n"},
      {"first line\nsecond", 40, 0, "first line\nsecond"},
      // Characters, not bytes: "é" and "💡" count one each.
      {"éé éé", 3, 0, "éé\néé"},
      {"💡💡 x", 3, 0, "💡💡\nx"},
      // A width that leaves no room after the indent keeps the text's own
      // line breaks only.
      {"one two\nthree", 10, 26,
       "                          one two\n                          three"},
  };
  for (const WrapCase &c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(wrapped(c.text, c.columns, c.indent), c.expected);
  }
}

TEST(StringExtensionsTest, ConvertsCamelCaseToSnakeCase) {
  struct Case {
    std::string text, separator, expected;
  };
  const Case cases[] = {
      {"", "-", ""},
      {"groupId", "-", "group-id"},
      {"apiKey", "-", "api-key"},
      {"installerPath", "-", "installer-path"},
      {"URLPath", "-", "url-path"},
      {"FileSync", "-", "file-sync"},
      {"Upload", "-", "upload"},
      {"ServerOptions", "_", "server_options"},
      {"already-snake", "-", "already-snake"},
      {"HTTP", "-", "http"},
      {"ÄpfelÖl", "-", "äpfel-öl"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(convertedToSnakeCase(c.text, c.separator), c.expected);
  }
}

TEST(StringExtensionsTest, MeasuresEditDistanceInCharacters) {
  struct Case {
    std::string a, b;
    std::size_t distance;
  };
  const Case cases[] = {
      {"", "abc", 3},
      {"abc", "", 3},
      {"kitten", "sitting", 3},
      {"--versoin", "--version", 2},
      {"--nope", "--version", 7},
      {"é", "e", 1},
      {"same", "same", 0},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.a + " / " + c.b);
    EXPECT_EQ(editDistance(c.a, c.b), c.distance);
  }
}

TEST(StringExtensionsTest, PrefixesInTheNamesOwnStyle) {
  EXPECT_EQ(addingPrefixWithAutodetectedStyle("dry-run", "no"), "no-dry-run");
  EXPECT_EQ(addingPrefixWithAutodetectedStyle("dry_run", "no"), "no_dry_run");
  EXPECT_EQ(addingPrefixWithAutodetectedStyle("cache", "enable"),
            "enable-cache");
}

} // namespace
} // namespace argparse
