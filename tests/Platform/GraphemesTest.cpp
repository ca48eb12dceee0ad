#include "Platform/Graphemes.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

TEST(GraphemesTest, CountsUserPerceivedCharacters) {
  struct CountCase {
    std::string_view text;
    std::size_t expected;
  };
  constexpr CountCase cases[] = {
      {"", 0},
      {"abc", 3},
      {"e\xcc\x81", 1},         // e + combining acute
      {"\xc3\xa9t\xc3\xa9", 3}, // précomposed é
      {"\r\n", 1},
      {"\xf0\x9f\x87\xa9\xf0\x9f\x87\xaa", 1}, // one flag
      {"\xf0\x9f\x87\xa9\xf0\x9f\x87\xaa\xf0\x9f\x87\xab", 2},
      {"\xf0\x9f\x91\xa8\xe2\x80\x8d\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91"
       "\xa7",
       1},                                         // family: joined by ZWJ
      {"\xe2\xac\x86\xef\xb8\x8f ", 2},            // arrow, VS16, blank
      {"\xe1\x84\x80\xe1\x85\xa1\xe1\x86\xa8", 1}, // Hangul jamo syllable
      {"\x1b[31m", 5},
      {"\xff\xfe", 2},  // invalid bytes
      {"a\xe2\x9c", 3}, // truncated sequence
      {"\xcc\x81x", 2}, // combining mark first
  };
  for (const CountCase &c : cases) {
    SCOPED_TRACE(testing::PrintToString(std::string(c.text)));
    EXPECT_EQ(platform::countGraphemes(c.text), c.expected);
  }
}

} // namespace
