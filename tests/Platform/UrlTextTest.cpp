#include "Platform/UrlText.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace {

struct TextCase {
  std::string_view input;
  std::string_view expected;
};

TEST(UrlTextTest, PercentEncodesOutsideTheQueryAllowedSet) {
  constexpr TextCase cases[] = {
      {"https://h.example/a?b=c&d=e", "https://h.example/a?b=c&d=e"},
      {"a b", "a%20b"},
      {"100%", "100%25"},
      {"x#y", "x%23y"},
      {"!$&'()*+,-./:;=?@_~", "!$&'()*+,-./:;=?@_~"},
      {"\"<>[]\\^`{|}", "%22%3C%3E%5B%5D%5C%5E%60%7B%7C%7D"},
      {"é", "%C3%A9"},
      {"", ""}};
  for (const TextCase &c : cases) {
    SCOPED_TRACE(c.input);
    EXPECT_EQ(platform::percentEncodeQueryAllowed(c.input), c.expected);
  }
}

TEST(UrlTextTest, RemovesPercentEncodingOrFails) {
  struct DecodeCase {
    std::string_view input;
    std::optional<std::string_view> expected;
  };
  const DecodeCase cases[] = {
      {"a%20b.pkg", "a b.pkg"},
      {"%41pp.pkg", "App.pkg"},
      {"%5c%5C", "\\\\"},
      {"plain", "plain"},
      {"", ""},
      {"100%.pkg", std::nullopt},
      {"%", std::nullopt},
      {"%4", std::nullopt},
      {"%zz", std::nullopt},
      {"%FF", std::nullopt},
      {"%C3%A9", "é"},
      {"%C3", std::nullopt},
      {"%ED%A0%80", std::nullopt}};
  for (const DecodeCase &c : cases) {
    SCOPED_TRACE(c.input);
    std::optional<std::string> decoded = platform::removingPercentEncoding(c.input);
    ASSERT_EQ(decoded.has_value(), c.expected.has_value());
    if (decoded) {
      EXPECT_EQ(*decoded, *c.expected);
    }
  }
}

TEST(UrlTextTest, EncodesBase64WithPadding) {
  constexpr TextCase cases[] = {{"", ""},
                                {"f", "Zg=="},
                                {"fo", "Zm8="},
                                {"foo", "Zm9v"},
                                {"user:pa:ss", "dXNlcjpwYTpzcw=="},
                                {"\xC3\xA9:\xFF", "w6k6/w=="}};
  for (const TextCase &c : cases) {
    SCOPED_TRACE(c.input);
    EXPECT_EQ(platform::encodeBase64(c.input), c.expected);
  }
}

TEST(UrlTextTest, TakesTheLastPathComponent) {
  constexpr TextCase cases[] = {{"/tmp/a/Foo.pkg", "Foo.pkg"},
                                {"Foo.pkg/", "Foo.pkg"},
                                {"dir//Foo.pkg//", "Foo.pkg"},
                                {"Foo.pkg", "Foo.pkg"},
                                {"/", "/"},
                                {"///", "/"},
                                {".pkg", ".pkg"},
                                {"", ""}};
  for (const TextCase &c : cases) {
    SCOPED_TRACE(c.input);
    EXPECT_EQ(platform::lastPathComponent(c.input), c.expected);
  }
}

} // namespace
