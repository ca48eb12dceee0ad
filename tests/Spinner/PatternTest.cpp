#include "Spinner/Pattern.h"

#include "Support/TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

using spinner::Pattern;
using spinner::PatternDecodingError;
using spinner::PatternFileError;
using spinner::Patterns;
using testing::HasSubstr;
using testing::ThrowsMessage;

std::vector<std::uint8_t> bytesOf(std::string_view text) {
  return std::vector<std::uint8_t>(text.begin(), text.end());
}

TEST(PatternTest, CatalogueConstantsAreMadeOnceWithTheirSpeed) {
  EXPECT_EQ(&Pattern::line(), &Pattern::line());
  EXPECT_EQ(Pattern::line().getSpeed(), 0.13);
  EXPECT_EQ(Pattern::dots11().getSpeed(), 0.1);
  EXPECT_EQ(Pattern::star2().getSpeed(), 0.8);
  EXPECT_EQ(Pattern::triangle().getSpeed(), 0.05);
  EXPECT_EQ(Pattern::dots8().getFrames().size(), 29u);
  EXPECT_EQ(Pattern::dots12().getFrames().size(), 56u);
  EXPECT_EQ(Pattern::pong().getFrames().size(), 30u);
}

TEST(PatternTest, CatalogueFramesKeepBackslashesBlanksAndVariationSelectors) {
  struct FramesCase {
    std::string_view name;
    const Pattern &pattern;
    std::vector<std::string> frames;
  };
  const FramesCase cases[] = {
      {"line", Pattern::line(), {"-", "\\", "|", "/"}},
      {"simpleDots", Pattern::simpleDots(), {".  ", ".. ", "...", "   "}},
      {"balloon", Pattern::balloon(), {" ", ".", "o", "O", "@", "*", " "}},
      {"flip",
       Pattern::flip(),
       {"_", "_", "_", "-", "`", "`", "'", "\xc2\xb4", "-", "_", "_", "_"}},
      {"bouncingBar",
       Pattern::bouncingBar(),
       {"[    ]", "[   =]", "[  ==]", "[ ===]", "[====]", "[=== ]", "[==  ]",
        "[=   ]"}},
      // Arrow, variation selector 16, blank.
      {"arrow2",
       Pattern::arrow2(),
       {"\xe2\xac\x86\xef\xb8\x8f ", "\xe2\x86\x97\xef\xb8\x8f ",
        "\xe2\x9e\xa1\xef\xb8\x8f ", "\xe2\x86\x98\xef\xb8\x8f ",
        "\xe2\xac\x87\xef\xb8\x8f ", "\xe2\x86\x99\xef\xb8\x8f ",
        "\xe2\xac\x85\xef\xb8\x8f ", "\xe2\x86\x96\xef\xb8\x8f "}},
      {"monkey",
       Pattern::monkey(),
       {"\xf0\x9f\x99\x88 ", "\xf0\x9f\x99\x88 ", "\xf0\x9f\x99\x89 ",
        "\xf0\x9f\x99\x8a "}},
      {"dqpb", Pattern::dqpb(), {"d", "q", "p", "b"}},
  };
  for (const FramesCase &c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.pattern.getFrames(), c.frames);
  }
  const std::vector<std::string> &shark = Pattern::shark().getFrames();
  EXPECT_EQ(shark.front(), "\xe2\x96\x90|\\____________\xe2\x96\x8c");
  EXPECT_EQ(shark[13], "\xe2\x96\x90____________/|\xe2\x96\x8c");
  EXPECT_EQ(shark.back(), "\xe2\x96\x90/|____________\xe2\x96\x8c");
  const std::vector<std::string> &dots12 = Pattern::dots12().getFrames();
  EXPECT_EQ(dots12.front(), "\xe2\xa2\x80\xe2\xa0\x80");
  EXPECT_EQ(dots12.back(), "\xe2\xa0\x80\xe2\xa1\x80");
}

TEST(PatternTest, ConstructorsMakeTheSamePattern) {
  const Pattern listed({"a", "b"}, 0.25);
  EXPECT_EQ(Pattern::multiple({"a", "b"}, 0.25), listed);
  EXPECT_EQ(Pattern(std::vector<std::string>{"a", "b"}, 0.25), listed);
  EXPECT_EQ(Pattern::single("a", 0.25), Pattern({"a"}, 0.25));
}

TEST(PatternTest, DecodesSpeedOrIntervalFromJson) {
  struct DecodeCase {
    std::string_view json;
    std::vector<std::string> frames;
    double speed;
  };
  const DecodeCase cases[] = {
      {R"({"frames":["a"],"speed":0.5})", {"a"}, 0.5},
      {R"({"frames":["a"],"interval":500})", {"a"}, 0.5},
      {R"({"frames":["a"],"speed":0.2,"interval":"x"})", {"a"}, 0.2},
      {R"({"frames":["a"],"speed":2,"interval":null})", {"a"}, 2},
      {R"({"interval":80,"frames":["-","\\"," "],"name":"mine"})",
       {"-", "\\", " "},
       0.08},
      {R"({"frames":["é","⠋"],"speed":0})", {"é", "⠋"}, 0},
  };
  for (const DecodeCase &c : cases) {
    SCOPED_TRACE(c.json);
    const Pattern pattern = Pattern::load(bytesOf(c.json));
    EXPECT_EQ(pattern.getFrames(), c.frames);
    EXPECT_DOUBLE_EQ(pattern.getSpeed(), c.speed);
  }
}

TEST(PatternTest, RefusesJsonThatHoldsNoPattern) {
  struct RefusedCase {
    std::string_view json;
    std::string_view message;
  };
  const RefusedCase cases[] = {
      {R"({"frames":["a"],"speed":"fast","interval":100})", "\"speed\""},
      {R"({"frames":["a"],"speed":null})", "\"speed\""},
      {R"({"frames":["a"]})", "\"interval\""},
      {R"({"frames":["a"],"interval":"80"})", "\"interval\""},
      {R"({"frames":[],"speed":1})", "empty"},
      {R"({"speed":1})", "\"frames\""},
      {R"({"frames":"a","speed":1})", "\"frames\""},
      {R"({"frames":["a",1],"speed":1})", "\"frames\""},
      {R"(["a"])", "object"},
      {R"({"frames":["a"],"speed":1)", "JSON"},
      {"", "JSON"},
      {"\xff", "JSON"},
  };
  for (const RefusedCase &c : cases) {
    SCOPED_TRACE(c.json);
    EXPECT_THAT([&] { (void)Pattern::load(bytesOf(c.json)); },
                ThrowsMessage<PatternDecodingError>(HasSubstr(c.message)));
  }
}

TEST(PatternTest, PatternsMapNamesToPatterns) {
  const Patterns patterns(bytesOf(R"({
    "slow": {"frames": ["a", "b"], "speed": 1},
    "fast": {"frames": ["c"], "interval": 10}
  })"));
  EXPECT_EQ(patterns["slow"], Pattern({"a", "b"}, 1));
  EXPECT_EQ(patterns["fast"], Pattern({"c"}, 0.01));
  EXPECT_EQ(patterns["medium"], std::nullopt);
  EXPECT_EQ(patterns.patterns.size(), 2u);
  EXPECT_EQ(Patterns(bytesOf("{}")).patterns.size(), 0u);

  EXPECT_THAT(
      [] { Patterns(bytesOf(R"({"a":{"frames":["a"],"speed":1},"b":{}})")); },
      ThrowsMessage<PatternDecodingError>(HasSubstr("\"frames\"")));
  EXPECT_THAT([] { Patterns(bytesOf(R"([{"frames":["a"],"speed":1}])")); },
              ThrowsMessage<PatternDecodingError>(HasSubstr("object")));
}

TEST(PatternTest, LoadsFromFilesOrSaysWhichPathFailed) {
  testsupport::TempDir dir;
  const std::filesystem::path one = dir.path() / "one.json";
  const std::filesystem::path many = dir.path() / "many.json";
  const std::filesystem::path empty = dir.path() / "empty.json";
  const std::filesystem::path missing = dir.path() / "missing.json";
  const std::filesystem::path dangling = dir.path() / "dangling.json";
  testsupport::writeFile(one, R"({"frames":["x","y"],"interval":250})");
  testsupport::writeFile(many, R"({"p":{"frames":["z"],"speed":3}})");
  testsupport::writeFile(empty, "");
  std::filesystem::create_symlink(missing, dangling);

  EXPECT_EQ(Pattern::load(one), Pattern({"x", "y"}, 0.25));
  EXPECT_EQ(Patterns(many)["p"], Pattern({"z"}, 3));

  struct FailureCase {
    std::filesystem::path path;
    PatternFileError::Kind kind;
  };
  const FailureCase failures[] = {
      {missing, PatternFileError::Kind::fileDoesNotExist},
      {dangling, PatternFileError::Kind::fileDoesNotExist},
      {empty, PatternFileError::Kind::failedToRead},
      {dir.path(), PatternFileError::Kind::failedToRead},
  };
  for (const FailureCase &c : failures) {
    SCOPED_TRACE(c.path);
    for (bool many : {false, true}) {
      try {
        if (many)
          (void)Patterns(c.path);
        else
          (void)Pattern::load(c.path);
        ADD_FAILURE() << "no error";
      } catch (const PatternFileError &error) {
        EXPECT_EQ(error.getKind(), c.kind);
        EXPECT_EQ(error.getPath(), c.path);
        EXPECT_THAT(error.what(), HasSubstr(c.path.string()));
      }
    }
  }

  const std::filesystem::path notJson = dir.path() / "not.json";
  testsupport::writeFile(notJson, "frames: x");
  EXPECT_THROW((void)Pattern::load(notJson), PatternDecodingError);
}

TEST(PatternTest, UnreadableFileIsToldApartFromAMissingOne) {
  if (geteuid() == 0)
    GTEST_SKIP() << "root reads any file, so none can be made unreadable";
  testsupport::TempDir dir;
  const std::filesystem::path locked = dir.path() / "locked.json";
  testsupport::writeFile(locked, R"({"frames":["x"],"speed":1})");
  std::filesystem::permissions(locked, std::filesystem::perms::none);
  try {
    (void)Pattern::load(locked);
    ADD_FAILURE() << "no error";
  } catch (const PatternFileError &error) {
    EXPECT_EQ(error.getKind(), PatternFileError::Kind::fileNotReadable);
  }
}

} // namespace
