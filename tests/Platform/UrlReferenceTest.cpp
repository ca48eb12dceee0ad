#include "Platform/UrlReference.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using platform::UrlReference;

struct PartsCase {
  const char *text;
  std::optional<std::string> scheme, userInfo, host, port;
  std::string path;
  std::optional<std::string> query, fragment;
};

const PartsCase partsCases[] = {
    {"https://console.example.com",
     "https",
     {},
     "console.example.com",
     {},
     "",
     {},
     {}},
    {"https://console.example.com:8443/api/x?a=1&b=2#top",
     "https",
     {},
     "console.example.com",
     "8443",
     "/api/x",
     "a=1&b=2",
     "top"},
    {"http://user:pw@127.0.0.1:80/",
     "http",
     "user:pw",
     "127.0.0.1",
     "80",
     "/",
     {},
     {}},
    {"http://[::1]:9/p", "http", {}, "::1", "9", "/p", {}, {}},
    {"http://h:/?", "http", {}, "h", "", "/", "", {}},
    {"HTTP://Console.Example.COM/Path",
     "HTTP",
     {},
     "Console.Example.COM",
     {},
     "/Path",
     {},
     {}},
    {"console.example.com", {}, {}, {}, {}, "console.example.com", {}, {}},
    {"/api/mam/apps/4711", {}, {}, {}, {}, "/api/mam/apps/4711", {}, {}},
    {"//cdn.example/x", {}, {}, "cdn.example", {}, "/x", {}, {}},
    {"mailto:a@b.example", "mailto", {}, {}, {}, "a@b.example", {}, {}},
    {"file:///tmp/a%20b", "file", {}, "", {}, "/tmp/a%20b", {}, {}},
};

TEST(UrlReferenceTest, SplitsIntoPartsAsWritten) {
  for (const PartsCase &c : partsCases) {
    SCOPED_TRACE(c.text);
    std::optional<UrlReference> url = UrlReference::parse(c.text);
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->text, c.text);
    EXPECT_EQ(url->scheme, c.scheme);
    EXPECT_EQ(url->userInfo, c.userInfo);
    EXPECT_EQ(url->host, c.host);
    EXPECT_EQ(url->port, c.port);
    EXPECT_EQ(url->path, c.path);
    EXPECT_EQ(url->query, c.query);
    EXPECT_EQ(url->fragment, c.fragment);
  }
}

TEST(UrlReferenceTest, RejectsTextThatIsNoUrl) {
  const char *invalid[] = {
      "",
      "https://h/search?groupID=A B",
      "https://h/a#b#c",
      "https://h/100%",
      "https://h/%zz",
      "https://h/caf\xc3\xa9",
      "https://h/<x>",
      "http://h:8a/",
      "ht tp://h/",
      "https://h/a\nb",
  };
  for (const char *text : invalid) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(UrlReference::parse(text).has_value());
  }
  EXPECT_FALSE(UrlReference::parse(std::string("http://h/\0", 10)));
}

TEST(UrlReferenceTest, LastPathComponentIgnoresTrailingSlashAndDecodes) {
  struct Case {
    const char *text, *expected;
  };
  const Case cases[] = {
      {"https://h/api/mam/apps/4711", "4711"},
      {"https://h/api/mam/apps/4711/", "4711"},
      {"https://h/apps/4711?x=1#y", "4711"},
      {"/relative/9", "9"},
      {"https://h/a%20b", "a b"},
      {"https://h/a%2Fb", "a/b"},
      {"https://h/", "/"},
      {"https://h", ""},
      {"https://h/%FF", "%FF"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.text);
    std::optional<UrlReference> url = UrlReference::parse(c.text);
    ASSERT_TRUE(url.has_value());
    EXPECT_EQ(url->getLastPathComponent(), c.expected);
  }
}

} // namespace
