// What the platform layer reads: characters, URLs, property lists, and the
// terminal's width where the built tool can't be driven into it. (The
// end-to-end tests try every way out of the hidden prompt on a terminal.)
#include "Platform/Graphemes.h"
#include "Platform/PropertyList.h"
#include "Platform/TerminalSize.h"
#include "Platform/UrlReference.h"
#include "Platform/UrlText.h"

#include "Support/PseudoTerminal.h"
#include "Support/TestSupport.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <sys/ioctl.h>
#include <unistd.h>

namespace platform {
namespace {

TEST(TextTest, SplitsUserPerceivedCharacters) {
  const std::pair<std::string, std::string> rows[] = {
      {"e\xcc\x81t\xc3\xa9", "e\xcc\x81|t|\xc3\xa9"}, // e + combining acute
      {"\r\n\n", "\r\n|\n"},
      {"\xf0\x9f\x87\xa9\xf0\x9f\x87\xaa\xf0\x9f\x87\xab",
       "\xf0\x9f\x87\xa9\xf0\x9f\x87\xaa|\xf0\x9f\x87\xab"}, // flag, and a half
      {"\xf0\x9f\x91\xa8\xe2\x80\x8d\xf0\x9f\x91\xa9x",      // joined by ZWJ
       "\xf0\x9f\x91\xa8\xe2\x80\x8d\xf0\x9f\x91\xa9|x"},
      {"\xe2\xac\x86\xef\xb8\x8f ", "\xe2\xac\x86\xef\xb8\x8f| "}, // VS16
      {"\xe1\x84\x80\xe1\x85\xa1\xe1\x86\xa8", // Hangul jamo syllable
       "\xe1\x84\x80\xe1\x85\xa1\xe1\x86\xa8"},
      {"\xff\376a\xe2\x9c", "\xff|\xfe|a|\xe2|\x9c"}, // invalid, truncated
      {"\xcc\x81x", "\xcc\x81|x"},                    // a combining mark first
  };
  for (const auto &[text, expected] : rows) {
    SCOPED_TRACE(testing::PrintToString(text));
    std::string split;
    for (std::string_view character : splitGraphemes(text))
      split += (split.empty() ? "" : "|") + std::string(character);
    EXPECT_EQ(split, expected);
    EXPECT_EQ(countGraphemes(text), splitGraphemes(text).size());
  }
}

// Each part as written ("-" when absent) and the last path component.
std::string partsOf(std::string_view text) {
  const std::optional<UrlReference> url = UrlReference::parse(text);
  if (!url)
    return "invalid";
  std::string parts;
  for (const std::optional<std::string> &part :
       {url->scheme, url->userInfo, url->host, url->port,
        std::optional(url->path), url->query, url->fragment,
        std::optional(url->getLastPathComponent())})
    parts += part.value_or("-") + "|";
  return parts;
}

TEST(TextTest, SplitsUrlsIntoTheirPartsAsWritten) {
  const std::pair<std::string, std::string> rows[] = {
      {"https://console.example.com:8443/api/x?a=1&b=2#top",
       "https|-|console.example.com|8443|/api/x|a=1&b=2|top|x|"},
      {"http://user:pw@127.0.0.1:80/", "http|user:pw|127.0.0.1|80|/|-|-|/|"},
      {"http://[::1]:9/p/", "http|-|::1|9|/p/|-|-|p|"},
      {"http://h:/?", "http|-|h||/||-|/|"},
      {"HTTP://Ex.COM/a%20b", "HTTP|-|Ex.COM|-|/a%20b|-|-|a b|"},
      {"https://h/a%2Fb?x#y", "https|-|h|-|/a%2Fb|x|y|a/b|"},
      {"console.example.com", "-|-|-|-|console.example.com|-|-|"
                              "console.example.com|"},
      {"/api/mam/apps/4711", "-|-|-|-|/api/mam/apps/4711|-|-|4711|"},
  };
  for (const auto &[text, expected] : rows) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_EQ(partsOf(text), expected);
  }
  const std::string invalid[] = {"",
                                 "https://h/?q=A B",
                                 "https://h/a#b#c",
                                 "https://h/100%",
                                 "https://h/%zz",
                                 "https://h/caf\xc3\xa9",
                                 "https://h/<x>",
                                 "http://h:8a/",
                                 "https://h/a\nb",
                                 std::string("http://h/\0", 10)};
  for (const std::string &text : invalid)
    EXPECT_EQ(partsOf(text), "invalid") << testing::PrintToString(text);
}

// Bytes that no valid answer can carry, and so no end-to-end test.
TEST(TextTest, ShowsControlCharactersAsEscapes) {
  const std::pair<std::string, std::string> rows[] = {
      {"tab\tline\n \xc3\xa9 \xf0\x9f\x98\x80 \xc2\xa0 a\\x1b",
       "tab\tline\n \xc3\xa9 \xf0\x9f\x98\x80 \xc2\xa0 a\\x1b"},
      {std::string("\0\x01\x1b\r\x7f", 5), "\\x00\\x01\\x1b\\x0d\\x7f"},
      {"\xc2\x80\xc2\x9b\xc2\x9f", "\\x80\\x9b\\x9f"},       // C1, as UTF-8
      {"\x9b\x80 \xff\xe2\x9b", "\\x9b\\x80 \xff\xe2\\x9b"}, // lone bytes
  };
  for (const auto &[text, expected] : rows) {
    SCOPED_TRACE(testing::PrintToString(text));
    EXPECT_EQ(escapeControlCharacters(text), expected);
  }
}

TEST(TextTest, ReadsATextFromXmlOrBinaryPropertyLists) {
  // {"CFBundleShortVersionString": "1.2"} as a binary property list.
  const unsigned char binary[] = {
      0x62, 0x70, 0x6c, 0x69, 0x73, 0x74, 0x30, 0x30, 0xd1, 0x01, 0x02, 0x5f,
      0x10, 0x1a, 0x43, 0x46, 0x42, 0x75, 0x6e, 0x64, 0x6c, 0x65, 0x53, 0x68,
      0x6f, 0x72, 0x74, 0x56, 0x65, 0x72, 0x73, 0x69, 0x6f, 0x6e, 0x53, 0x74,
      0x72, 0x69, 0x6e, 0x67, 0x53, 0x31, 0x2e, 0x32, 0x08, 0x0b, 0x28, 0x00,
      0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x2c};
  const auto xml = [](const std::string &body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
           "version=\"1.0\">\n" +
           body + "\n</plist>\n";
  };
  const std::string key = "<dict><key>A</key><integer>1</"
                          "integer><key>CFBundleShortVersionString</key>";
  const std::pair<std::string, std::string> rows[] = {
      {std::string(std::begin(binary), std::end(binary)), "1.2"},
      {xml(key + "<string>\xc3\xa9 2.0</string></dict>"), "\xc3\xa9 2.0"},
      {xml("<dict><key>B</key><string>x</string></dict>"), "(none)"},
      {xml(key + "<integer>3</integer></dict>"), "(none)"},
      {xml("<array><string>1.2</string></array>"), "(none)"},
      {"hello", "(none)"},
      {std::string("bplist00\xd1\x01", 10), "(none)"},
  };
  testsupport::TempDir dir;
  const std::filesystem::path file = dir.path() / "Info.plist";
  for (const auto &[bytes, expected] : rows) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    testsupport::writeFile(file, bytes);
    EXPECT_EQ(readPropertyListString(file, "CFBundleShortVersionString")
                  .value_or("(none)"),
              expected);
  }
  EXPECT_EQ(readPropertyListString(dir.path() / "absent", "A"), std::nullopt);
  EXPECT_EQ(readPropertyListString(dir.path(), "A"), std::nullopt);
}

// A terminal may report a width of 0 (a serial line, a container's first
// moments): the fallback width applies. Other widths are the end-to-end
// tests' (help at 60 columns on a terminal, at 80 on a pipe).
TEST(TerminalTest, TakesTheFallbackForAWidthOfZero) {
  testsupport::ResultPipe result;
  testsupport::PseudoTerminal terminal([&] {
    const winsize size{30, 0, 0, 0};
    if (ioctl(STDOUT_FILENO, TIOCSWINSZ, &size) != 0)
      return 1;
    result.send(std::to_string(getTerminalSize().columns));
    return 0;
  });
  ASSERT_EQ(terminal.waitForEnd(), testsupport::ProcessEnd::exitedWith(0));
  EXPECT_EQ(result.receive(), "some:80");
}

} // namespace
} // namespace platform
